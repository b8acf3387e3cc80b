#include "standalone/mix/StripOpener.hpp"

#include <algorithm>
#include <exception>
#include <optional>
#include <pthread.h>
#include <utility>

namespace audlmd {

StripOpener::StripOpener(Open open)
    : open_(std::move(open)), thread_([this](const std::stop_token& stop) {
          // For debuggers and system monitors; at most 15 characters.
          pthread_setname_np(pthread_self(), "audlmd-opener");
          serve(stop);
      }) {}

StripOpener::~StripOpener() = default;

void StripOpener::open(std::size_t strip) {
    {
        const std::lock_guard lock(mutex_);
        strips_.emplace(strip, nullptr);
        if (!isCalledOff_)
            requests_.push_back(strip);
    }
    requested_.notify_one();
}

StripOpener::Opened* StripOpener::find(std::size_t strip) {
    const std::lock_guard lock(mutex_);
    return strips_.at(strip).get();
}

StripOpener::Opened* StripOpener::wait(std::size_t strip) {
    std::unique_lock lock(mutex_);
    // Stays valid while the table changes: only close() removes it, which the waiting thread itself calls.
    const std::unique_ptr<Opened>& opened = strips_.at(strip);
    opened_.wait(lock, [&] { return opened != nullptr || isCalledOff_; });
    return opened.get();
}

void StripOpener::callOff() {
    {
        const std::lock_guard lock(mutex_);
        isCalledOff_ = true;
        requests_.clear();
    }
    opened_.notify_all();
}

void StripOpener::close(std::size_t strip) {
    {
        const std::lock_guard lock(mutex_);
        // A strip that is being opened has no entry then, and is closed when it is open.
        auto node = strips_.extract(strip);
        if (node.mapped() != nullptr)
            closed_.push_back(std::move(node.mapped()));
        else
            std::erase(requests_, strip);
    }
    requested_.notify_one();
}

void StripOpener::serve(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    while (requested_.wait(lock, stop, [this] { return !requests_.empty() || !closed_.empty(); })) {
        std::vector<std::unique_ptr<Opened>> closed = std::exchange(closed_, {});
        std::optional<std::size_t> strip;
        if (!requests_.empty()) {
            strip = requests_.front();
            requests_.pop_front();
        }
        lock.unlock();
        closed.clear();
        std::unique_ptr<Opened> opened = strip ? std::make_unique<Opened>(openNow(*strip)) : nullptr;
        lock.lock();
        if (strip)
            finish(*strip, std::move(opened));
    }
}

StripOpener::Opened StripOpener::openNow(std::size_t strip) const {
    try {
        return {.strip = open_(strip), .failure = {}};
    } catch (const std::exception& failure) {
        const std::string text = failure.what();
        return {.strip = nullptr, .failure = text.empty() ? "opening failed" : text};
    } catch (...) {
        return {.strip = nullptr, .failure = "opening failed without saying why"};
    }
}

/// A strip that was closed meanwhile is no longer wanted. One that was closed and requested once more is, and
/// the second request then finds the strip open.
void StripOpener::finish(std::size_t strip, std::unique_ptr<Opened> opened) {
    const auto wanted = strips_.find(strip);
    if (wanted == strips_.end() || wanted->second != nullptr) {
        closed_.push_back(std::move(opened));
        return;
    }
    wanted->second = std::move(opened);
    opened_.notify_one();
}

} // namespace audlmd

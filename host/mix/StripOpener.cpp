#include "host/mix/StripOpener.hpp"

#include "host/services/FailureText.hpp"

#include <utility>

namespace audlmd {

StripOpener::StripOpener(Open open)
    : open_(std::move(open)),
      thread_(namedThread("audlmd-opener", [this](const std::stop_token& stop) { serve(stop); })) {}

StripOpener::~StripOpener() = default;

void StripOpener::open(std::size_t strip) {
    {
        const Lock lock(mutex_);
        strips_.emplace(strip, nullptr);
        if (!isCalledOff_)
            requests_.push_back({.strip = strip, .opened = std::make_unique<Opened>()});
    }
    requested_.notify_one();
}

StripOpener::Opened* StripOpener::find(std::size_t strip) {
    const Lock lock(mutex_);
    return strips_.at(strip).get();
}

StripOpener::Opened* StripOpener::wait(std::size_t strip) {
    Lock lock(mutex_);
    // Stays valid while the table changes: only close() removes it, which the waiting thread itself calls.
    const std::unique_ptr<Opened>& opened = strips_.at(strip);
    opened_.wait(lock.native(), [&]() AUDLMD_REQUIRES(mutex_) { return opened != nullptr || isCalledOff_; });
    return opened.get();
}

void StripOpener::callOff() {
    {
        const Lock lock(mutex_);
        isCalledOff_ = true;
        requests_.clear();
    }
    opened_.notify_all();
}

void StripOpener::close(std::size_t strip) {
    {
        const Lock lock(mutex_);
        // If the strip is being opened right now, finish() will find no entry and close it.
        auto node = strips_.extract(strip);
        if (node.mapped() != nullptr)
            closed_.push_back(std::move(node.mapped()));
        else
            std::erase_if(requests_, [strip](const Request& request) { return request.strip == strip; });
    }
    requested_.notify_one();
}

void StripOpener::serve(const std::stop_token& stop) {
    Lock lock(mutex_);
    while (requested_.wait(
        lock, stop, [this]() AUDLMD_REQUIRES(mutex_) { return !requests_.empty() || !closed_.empty(); })) {
        std::vector<std::unique_ptr<Opened>> closed = std::exchange(closed_, {});
        Request request;
        if (!requests_.empty()) {
            request = std::move(requests_.front());
            requests_.pop_front();
        }
        lock.unlock();
        closed.clear();
        if (request.opened != nullptr) {
            openNow(request);
            lock.lock();
            finish(request);
            lock.unlock();
            request.opened.reset();
        }
        lock.lock();
    }
}

void StripOpener::openNow(Request& request) const noexcept {
    try {
        request.opened->strip = open_(request.strip);
    } catch (...) {
        request.opened->failure = failureText("");
        if (request.opened->failure.empty())
            request.opened->failure = "opening failed";
    }
}

/// While it was being opened, the strip may have been closed: drop it. If it was then requested again, keep
/// it; the second opening will be dropped.
void StripOpener::finish(Request& request) {
    const auto wanted = strips_.find(request.strip);
    if (wanted == strips_.end() || wanted->second != nullptr)
        return;
    wanted->second = std::move(request.opened);
    opened_.notify_one();
}

} // namespace audlmd

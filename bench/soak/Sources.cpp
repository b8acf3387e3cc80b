#include "bench/soak/Sources.hpp"

#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace audlmd::soak {
namespace {

/// Does something to a read before it reads.
template <class Before>
class DisturbedSource final : public SampleSource {
public:
    DisturbedSource(std::shared_ptr<SampleSource> source, Before before)
        : source_(std::move(source)), before_(before) {}

    std::int64_t length() const override { return source_->length(); }
    void read(std::int64_t position, std::span<float> samples) override {
        before_(position);
        source_->read(position, samples);
    }
    /// One thread reads at a time, as from a file.
    const void* exclusiveResource() const override { return this; }

private:
    std::shared_ptr<SampleSource> source_;
    Before before_;
};

void beSlow(std::int64_t position) {
    std::this_thread::sleep_for(std::chrono::microseconds(position % 20011));
}

void failAtTimes(std::int64_t) {
    static std::atomic<unsigned int> reads{0};
    const unsigned int now = ++reads;
    if (now % 16 == 0)
        throw std::runtime_error("a read that fails");
    if (now % 16 == 8)
        throw now;
}

std::shared_ptr<SampleSource> tone(double samplesPerRadian) {
    std::vector<float> samples(mediumLength);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<float>(0.7 * std::sin(static_cast<double>(i) / samplesPerRadian));
    return std::make_shared<MemorySource>(std::move(samples));
}

template <class Before>
Media disturbed(Media media, Before before) {
    for (auto& channel : media.channels)
        channel = std::make_shared<DisturbedSource<Before>>(channel, before);
    return media;
}

} // namespace

Media openMedium(const std::string& name) {
    static const Media fast{.channels = {tone(17.0), tone(23.0)}};
    if (name == "fast")
        return fast;
    if (name == "slow")
        return disturbed(fast, &beSlow);
    if (name == "failing")
        return disturbed(fast, &failAtTimes);
    throw std::runtime_error("there is no medium '" + name + "'");
}

void runTogether(std::size_t tasks, const std::function<void(std::size_t)>& task) {
    std::mutex mutex;
    std::condition_variable ended;
    std::size_t running = tasks;
    std::exception_ptr failure;
    std::vector<std::jthread> threads;
    for (std::size_t number = 0; number < tasks; ++number)
        threads.emplace_back([&, number] {
            std::exception_ptr thrown;
            try {
                task(number);
            } catch (...) {
                thrown = std::current_exception();
            }
            const std::lock_guard lock(mutex);
            failure = failure ? failure : thrown;
            --running;
            ended.notify_all();
        });
    std::unique_lock lock(mutex);
    if (!ended.wait_for(lock, std::chrono::minutes(2), [&] { return running == 0; })) {
        // The threads cannot be ended, so the process is, with a picture of where they stand.
        std::fputs("soak: a thread waits for what nobody brings\n", stderr);
        std::abort();
    }
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace audlmd::soak

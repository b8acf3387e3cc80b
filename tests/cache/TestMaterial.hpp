#pragma once

#include "ole/Aud/SampleCacheIterators.hpp"
#include "standalone/cache/MaterialCache.hpp"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace audlmd::test {

/// Never 0, and different from its neighbours.
inline std::vector<float> ramp(std::int64_t length) {
    std::vector<float> samples;
    for (std::int64_t i = 0; i < length; ++i)
        samples.push_back(static_cast<float>(i + 1));
    return samples;
}

inline Cookie cookieOf(std::uint16_t channel) {
    Cookie cookie;
    cookie.channel = channel;
    return cookie;
}

/// What a reader finds at a position.
inline float expectedAt(std::int64_t position, std::int64_t length) {
    return position >= 0 && position < length ? static_cast<float>(position + 1) : 0.0F;
}

/// A ramp that notes what is read, can hold its readers up, and fails for one position.
class ScriptedSource : public SampleSource {
public:
    explicit ScriptedSource(std::int64_t length) : samples_(ramp(length)) {}

    std::int64_t length() const override { return samples_.length(); }

    void read(std::int64_t position, std::span<float> samples) override {
        std::unique_lock lock(mutex_);
        reads_.push_back(position);
        changed_.notify_all();
        changed_.wait(lock, [this] { return open_; });
        if (position == failingPosition_)
            throw std::runtime_error("the tape is torn");
        samples_.read(position, samples);
    }

    void hold() { set(open_, false); }
    void letGo() { set(open_, true); }
    void failAt(std::int64_t position) { set(failingPosition_, position); }

    /// Where the first `count` reads began, once there were as many.
    std::vector<std::int64_t> awaitReads(std::size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return reads_.size() >= count; });
        return {reads_.begin(), reads_.begin() + static_cast<std::ptrdiff_t>(count)};
    }

private:
    template <class T>
    void set(T& member, T value) {
        const std::lock_guard lock(mutex_);
        member = value;
        changed_.notify_all();
    }

    MemorySource samples_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = true;
    std::int64_t failingPosition_ = -1;
    std::vector<std::int64_t> reads_;
};

struct ReaderOptions {
    bool wait = true;
    unsigned int extra = 0;
    double gearing = 1.0;
};

inline Aud::SampleCache::ForwardIterator forwardReader(MaterialCache& cache, const Cookie& cookie,
                                                       std::int64_t position, ReaderOptions options = {}) {
    return {cookie, position, options.wait, cache, options.extra, !options.wait, {options.gearing}};
}

inline Aud::SampleCache::ReverseIterator reverseReader(MaterialCache& cache, const Cookie& cookie,
                                                       std::int64_t position, ReaderOptions options = {}) {
    return {cookie, position, options.wait, cache, !options.wait, {options.gearing}};
}

template <class Reader>
std::vector<float> take(Reader& reader, std::size_t count) {
    std::vector<float> samples;
    for (; count != 0; --count, ++reader)
        samples.push_back(*reader);
    return samples;
}

} // namespace audlmd::test

#pragma once

#include "host/cache/MaterialCache.hpp"
#include "ole/Aud/SampleCacheIterators.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <numeric>

namespace audlmd::test {

/// 1, 2, 3, ...: never 0, and different from its neighbours.
inline std::vector<float> ramp(std::int64_t length) {
    std::vector<float> samples(static_cast<std::size_t>(length));
    std::iota(samples.begin(), samples.end(), 1.0F);
    return samples;
}

inline Cookie cookieOf(std::uint16_t channel) {
    return {.material = {}, .channel = channel, .kind = 0};
}

/// A ramp that notes what is read. The public members are set before readers are made.
class ScriptedSource : public SampleSource {
public:
    explicit ScriptedSource(std::int64_t length) : samples_(ramp(length)) {}

    std::int64_t length() const override { return samples_.length(); }
    const void* exclusiveResource() const override { return isExclusive ? this : nullptr; }

    void read(std::int64_t position, std::span<float> samples) override {
        std::unique_lock lock(mutex_);
        reads_.push_back(position);
        changed_.notify_all();
        lock.unlock();
        const std::lock_guard passing(gate);
        if (position == failingPosition)
            throw std::runtime_error(failure);
        samples_.read(position, samples);
    }

    /// Where the first `count` reads began, once there were as many.
    std::vector<std::int64_t> awaitReads(std::size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return reads_.size() >= count; });
        return {reads_.begin(), reads_.begin() + static_cast<std::ptrdiff_t>(count)};
    }

    bool isExclusive = false;
    std::int64_t failingPosition = -1;
    std::string failure;
    /// Reads are held up for as long as a test locks it.
    std::mutex gate;

private:
    MemorySource samples_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::int64_t> reads_;
};

inline auto addRamp(MaterialCache& cache, std::int64_t length, std::uint16_t channel = 0) {
    auto source = std::make_shared<ScriptedSource>(length);
    cache.add(cookieOf(channel), source);
    return source;
}

struct ReaderOptions {
    std::uint16_t channel = 0;
    bool reverse = false;
    bool wait = true;
    unsigned int extra = 0;
    double gearing = 1.0;
};

inline auto forwardReader(MaterialCache& cache, std::int64_t position, const ReaderOptions& options = {}) {
    return Aud::SampleCache::ForwardIterator(cookieOf(options.channel), position, options.wait, cache,
                                             options.extra, !options.wait, {options.gearing});
}

inline auto reverseReader(MaterialCache& cache, std::int64_t position, const ReaderOptions& options = {}) {
    return Aud::SampleCache::ReverseIterator(cookieOf(options.channel), position, options.wait, cache,
                                             !options.wait, {options.gearing});
}

/// The next samples. The reader, which cannot be assigned to, is replaced by its copy now and then.
template <class Reader>
std::vector<float> take(Reader& reader, std::size_t count) {
    std::vector<float> samples;
    for (std::size_t i = 0; i < count; ++i, ++reader) {
        samples.push_back(*reader);
        if (i % 8 == 7) {
            const Reader copy(reader);
            std::destroy_at(&reader);
            std::construct_at(&reader, copy);
        }
    }
    return samples;
}

/// What a new reader finds. With a count of 0, it only requests.
inline std::vector<float> read(MaterialCache& cache, std::int64_t position, std::size_t count,
                               const ReaderOptions& options = {}) {
    const auto takeFrom = [count](auto reader) { return take(reader, count); };
    return options.reverse ? takeFrom(reverseReader(cache, position, options))
                           : takeFrom(forwardReader(cache, position, options));
}

/// What it should find in a ramp.
inline std::vector<float> expectedRead(std::int64_t length, std::int64_t position, std::size_t count,
                                       bool reverse = false) {
    std::vector<float> samples;
    for (std::int64_t at = reverse ? position - 1 : position; samples.size() < count; at += reverse ? -1 : 1)
        samples.push_back(at >= 0 && at < length ? static_cast<float>(at + 1) : 0.0F);
    return samples;
}

} // namespace audlmd::test

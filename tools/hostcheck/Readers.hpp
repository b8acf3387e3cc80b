#pragma once

#include "ole/Aud/SampleCacheIterators.hpp"
#include "tools/hostcheck/Check.hpp"

#include <concepts>
#include <cstdint>
#include <string_view>
#include <vector>

namespace audlmd {

/// What of a reader the renderer reads and the host writes.
struct IteratorInside {
    template <class Iterator>
    static const Aud::SampleCacheSegment& segment(const Iterator& it) {
        return it.currentSegment;
    }
    template <class Iterator>
    static std::int32_t index(const Iterator& it) {
        return it.segmentIndex;
    }
    template <class Iterator>
    static std::int64_t materialLength(const Iterator& it) {
        return it.materialLength;
    }
    template <class Iterator>
    static bool waits(const Iterator& it) {
        return it.waitForSegment;
    }
    template <class Iterator>
    static void setWaiting(Iterator& it, bool waits) {
        it.waitForSegment = waits;
    }
};

using Forward = Aud::SampleCache::ForwardIterator;
using Reverse = Aud::SampleCache::ReverseIterator;

template <class Iterator>
constexpr std::string_view nameOf = std::same_as<Iterator, Forward> ? "forward" : "reverse";

/// A reader as the renderer makes it. The position is the one that the host takes.
template <class Iterator>
Iterator makeReader(const CheckedMaterial& material, std::int64_t position, bool flag,
                    const Orv::OutputGearing& gearing = {}, unsigned int extra = 0) {
    const auto at = static_cast<long>(position);
    if constexpr (std::same_as<Iterator, Forward>)
        return Forward(material.cookie, at, flag, *material.cache, extra, !flag, gearing);
    else
        return Reverse(material.cookie, at, flag, *material.cache, !flag, gearing);
}

/// A reader that reads this sample first. Whether it waits is set, because what the flag means to the host is
/// a rule of its own.
template <class Iterator>
Iterator readerFrom(HostUnderCheck& host, const CheckedMaterial& material, std::int64_t sample,
                    bool waits = true) {
    const std::int64_t position = std::same_as<Iterator, Forward> ? sample : host.reversePosition(sample);
    auto reader = makeReader<Iterator>(material, position, waits);
    IteratorInside::setWaiting(reader, waits);
    return reader;
}

/// The samples of the check's materials, each of which is another one, and none of which is 0.
inline std::vector<float> ramp(const HostUnderCheck& host) {
    std::vector<float> samples;
    for (std::int64_t i = 1; i <= host.length(); ++i)
        samples.push_back(static_cast<float>(i) * 0x1p-24F);
    return samples;
}

/// The sample of the ramp that a reader is at, as a number for people: counted from 0, -1 for silence.
template <class Iterator>
double sampleRead(const Iterator& reader) {
    return static_cast<double>(*reader) * 0x1p24 - 1.0;
}

} // namespace audlmd

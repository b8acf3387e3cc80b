#include "host/signal/BlockLoops.hpp"

#include <cstdint>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/signal/Interleaving.cpp"
#include "host/signal/Wide.ipp"

HWY_BEFORE_NAMESPACE();
namespace audlmd::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Each returns how many of the frames, from the first on, are done.

std::size_t splitPairs(const float* frames, std::size_t count, float* left, float* right) {
    const hn::ScalableTag<float> floats;
    std::size_t i = 0;
    for (; i + hn::Lanes(floats) <= count; i += hn::Lanes(floats)) {
        auto ofLeft = hn::Undefined(floats);
        auto ofRight = hn::Undefined(floats);
        hn::LoadInterleaved2(floats, frames + 2 * i, ofLeft, ofRight);
        hn::StoreU(ofLeft, floats, left + i);
        hn::StoreU(ofRight, floats, right + i);
    }
    return i;
}

template <class Container>
std::size_t joinPairs(const std::byte* left, const std::byte* right, std::size_t count, std::byte* frames) {
    const hn::ScalableTag<Container> containers;
    const auto loaded = [&](const std::byte* from) HWY_ATTR {
        return hn::LoadU(containers, reinterpret_cast<const Container*>(from));
    };
    std::size_t i = 0;
    for (; i + hn::Lanes(containers) <= count; i += hn::Lanes(containers))
        hn::StoreInterleaved2(loaded(left + i * sizeof(Container)), loaded(right + i * sizeof(Container)),
                              containers, reinterpret_cast<Container*>(frames) + 2 * i);
    return i;
}
std::size_t joinBytes(const std::byte* left, const std::byte* right, std::size_t count, std::byte* frames) {
    return joinPairs<std::uint8_t>(left, right, count, frames);
}
std::size_t joinWords(const std::byte* left, const std::byte* right, std::size_t count, std::byte* frames) {
    return joinPairs<std::uint16_t>(left, right, count, frames);
}
std::size_t joinFours(const std::byte* left, const std::byte* right, std::size_t count, std::byte* frames) {
    return joinPairs<std::uint32_t>(left, right, count, frames);
}

} // namespace
} // namespace audlmd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace audlmd {
namespace {

HWY_EXPORT(splitPairs);
HWY_EXPORT(joinBytes);
HWY_EXPORT(joinWords);
HWY_EXPORT(joinFours);

/// Two containers of each channel at a time, in the registers of integers. Reads two bytes more of each,
/// which the next two have.
std::size_t joinThreeBytes(const std::byte* left, const std::byte* right, std::size_t count,
                           std::byte* frames) {
    constexpr std::uint64_t three = 0xFFFFFF;
    std::size_t done = 0;
    for (; done + 3 <= count; done += 2, left += 6, right += 6, frames += 12) {
        std::uint64_t ofLeft = 0;
        std::uint64_t ofRight = 0;
        std::memcpy(&ofLeft, left, sizeof ofLeft);
        std::memcpy(&ofRight, right, sizeof ofRight);
        const std::uint64_t first = (ofLeft & three) | (ofRight & three) << 24 | (ofLeft >> 24 & three) << 48;
        const auto last = static_cast<std::uint32_t>((ofLeft >> 40 & 0xFF) | (ofRight >> 24 & three) << 8);
        std::memcpy(frames, &first, sizeof first);
        std::memcpy(frames + 8, &last, sizeof last);
    }
    return done;
}

/// Of containers of so many bytes.
auto joinOf(std::size_t bytes) {
    switch (bytes) {
    case 1:
        return HWY_DYNAMIC_DISPATCH(joinBytes);
    case 2:
        return HWY_DYNAMIC_DISPATCH(joinWords);
    case 3:
        return &joinThreeBytes;
    default:
        return HWY_DYNAMIC_DISPATCH(joinFours);
    }
}

} // namespace

void splitFrames(std::span<const float> frames, std::span<float* const> channels) {
    const std::size_t width = channels.size();
    const std::size_t count = frames.size() / width;
    const std::size_t done =
        width == 2 ? HWY_DYNAMIC_DISPATCH(splitPairs)(frames.data(), count, channels[0], channels[1]) : 0;
    for (std::size_t channel = 0; channel < width; ++channel)
        for (std::size_t i = done; i < count; ++i)
            channels[channel][i] = frames[i * width + channel];
}

void joinChannels(const std::byte* left, const std::byte* right, std::size_t bytes, std::size_t count,
                  std::byte* frames) {
    for (std::size_t i = joinOf(bytes)(left, right, count, frames); i < count; ++i) {
        std::memcpy(frames + 2 * i * bytes, left + i * bytes, bytes);
        std::memcpy(frames + (2 * i + 1) * bytes, right + i * bytes, bytes);
    }
}

} // namespace audlmd
#endif

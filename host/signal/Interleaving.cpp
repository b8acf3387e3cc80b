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

/// Four containers of each channel at a time. Reads four bytes more of each, which the next two have.
std::size_t joinThrees([[maybe_unused]] const std::byte* left, [[maybe_unused]] const std::byte* right,
                       [[maybe_unused]] std::size_t count, [[maybe_unused]] std::byte* frames) {
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    constexpr std::uint8_t none = 0x80;
    alignas(16) static constexpr std::uint8_t lowOfLeft[16]{0, 1,    2,    none, none, none, 3, 4,
                                                            5, none, none, none, 6,    7,    8, none};
    alignas(16) static constexpr std::uint8_t lowOfRight[16]{none, none, none, 0, 1,    2,    none, none,
                                                             none, 3,    4,    5, none, none, none, 6};
    alignas(16) static constexpr std::uint8_t highOfLeft[16]{none, none, 9,    10,   11,   none, none, none,
                                                             none, none, none, none, none, none, none, none};
    alignas(16) static constexpr std::uint8_t highOfRight[16]{7,    8,    none, none, none, 9,    10,   11,
                                                              none, none, none, none, none, none, none, none};
    const hn::FixedTag<std::uint8_t, 16> bytes;
    const hn::FixedTag<std::uint8_t, 8> half;
    for (; i + 6 <= count; i += 4) {
        const auto ofLeft = hn::LoadU(bytes, reinterpret_cast<const std::uint8_t*>(left + 3 * i));
        const auto ofRight = hn::LoadU(bytes, reinterpret_cast<const std::uint8_t*>(right + 3 * i));
        auto* const out = reinterpret_cast<std::uint8_t*>(frames + 6 * i);
        hn::StoreU(hn::Or(hn::TableLookupBytesOr0(ofLeft, hn::Load(bytes, lowOfLeft)),
                          hn::TableLookupBytesOr0(ofRight, hn::Load(bytes, lowOfRight))),
                   bytes, out);
        hn::StoreU(hn::LowerHalf(hn::Or(hn::TableLookupBytesOr0(ofLeft, hn::Load(bytes, highOfLeft)),
                                        hn::TableLookupBytesOr0(ofRight, hn::Load(bytes, highOfRight)))),
                   half, out + 16);
    }
#endif
    return i;
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
HWY_EXPORT(joinThrees);
HWY_EXPORT(joinFours);

/// Of containers of so many bytes.
auto joinOf(std::size_t bytes) {
    switch (bytes) {
    case 1:
        return HWY_DYNAMIC_DISPATCH(joinBytes);
    case 2:
        return HWY_DYNAMIC_DISPATCH(joinWords);
    case 3:
        return HWY_DYNAMIC_DISPATCH(joinThrees);
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

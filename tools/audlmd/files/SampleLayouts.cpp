#include "tools/audlmd/files/SampleLayouts.hpp"

#include "host/signal/BlockLoops.hpp"
#include "host/signal/Unclipped.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace audlmd::command {
namespace {

/// Frames per tile: few enough that the bytes of many channels stay in the innermost cache.
constexpr std::size_t tileFrames = 512;

/// Copies one channel of a tile; strides are in bytes. Aligned, because the loop takes half as long again
/// where it lies across lines of the instruction cache.
template <std::size_t Bytes>
[[gnu::aligned(64)]] void copyStrided(const std::byte* from, std::size_t fromStride, std::byte* to,
                                      std::size_t toStride, std::size_t frames) {
    for (; frames != 0; --frames, from += fromStride, to += toStride)
        std::memcpy(to, from, Bytes);
}

using Copy = decltype(&copyStrided<1>);

/// The copy for containers of `bytes` bytes. The compiler knows the size in each loop.
Copy copyOf(std::size_t bytes) {
    constexpr Copy copies[] = {copyStrided<1>, copyStrided<2>, copyStrided<3>, copyStrided<4>};
    return copies[bytes - 1];
}

/// Calls `copyChannel` with the channel, the tile's first frame and its number of frames. Channels are the
/// inner loop, so that the lines of the interleaved side are used by all channels while they are in the
/// cache.
template <class CopyChannel>
void forEachTile(std::size_t channels, std::size_t frames, CopyChannel copyChannel) {
    for (std::size_t first = 0; first < frames; first += tileFrames)
        for (std::size_t channel = 0; channel < channels; ++channel)
            copyChannel(channel, first, std::min(tileFrames, frames - first));
}

/// Offset binary and two's complement differ in the highest bit.
constexpr std::uint32_t signBit = 0x80000000;

/// Puts each container into the high bytes of an int; the machine is little-endian.
template <std::size_t Bytes>
void widenBytes(const std::byte* from, std::span<int> samples, std::uint32_t flipped) {
    for (int& sample : samples) {
        std::uint32_t bits = 0;
        std::memcpy(reinterpret_cast<std::byte*>(&bits) + sizeof bits - Bytes, from, Bytes);
        sample = std::bit_cast<int>(bits ^ flipped);
        from += Bytes;
    }
}

/// The inverse of widenBytes(), with the same `flipped`.
template <std::size_t Bytes>
void narrowToBytes(std::span<const int> samples, std::byte* to, std::uint32_t flipped) {
    for (const int sample : samples) {
        const std::uint32_t bits = std::bit_cast<std::uint32_t>(sample) ^ flipped;
        std::memcpy(to, reinterpret_cast<const std::byte*>(&bits) + sizeof bits - Bytes, Bytes);
        to += Bytes;
    }
}

/// Calls `visitor` with a std::type_identity of the format's container.
template <class Visitor>
void withContainer(FormatId format, Visitor&& visitor) {
    withOutputType(format, false, [&]<class Out>(std::type_identity<Out>) {
        if constexpr (std::is_pointer_v<Out>)
            visitor(std::type_identity<std::remove_pointer_t<Out>>());
    });
}

} // namespace

void store(FormatId format, Rounding rounding, OutputPlace place, std::span<const float> samples,
           std::byte* containers) {
    withContainer(format, [&]<class Container>(std::type_identity<Container>) {
        storeBlock(samples, reinterpret_cast<Container*>(containers), rounding, place);
    });
}

void add(FormatId format, Rounding rounding, OutputPlace place, std::span<float> samples,
         std::byte* containers) {
    withContainer(format, [&]<class Container>(std::type_identity<Container>) {
        addBlock(samples, reinterpret_cast<Container*>(containers), rounding, place);
    });
}

void load(FormatId format, const std::byte* containers, std::span<float> samples) {
    std::ranges::fill(samples, 0.0F);
    withContainer(format, [&]<class Container>(std::type_identity<Container>) {
        addStored(reinterpret_cast<const Container*>(containers), samples);
    });
}

void interleave(std::span<const std::byte* const> channels, std::size_t bytes, std::size_t frames,
                std::byte* interleaved) {
    if (channels.size() == 2)
        return joinChannels(channels[0], channels[1], bytes, frames, interleaved);
    const Copy copy = copyOf(bytes);
    const std::size_t stride = channels.size() * bytes;
    forEachTile(channels.size(), frames, [&](std::size_t channel, std::size_t first, std::size_t count) {
        copy(channels[channel] + first * bytes, bytes, interleaved + first * stride + channel * bytes, stride,
             count);
    });
}

void deinterleave(const std::byte* interleaved, std::size_t bytes, std::size_t frames,
                  std::span<std::byte* const> channels) {
    const Copy copy = copyOf(bytes);
    const std::size_t stride = channels.size() * bytes;
    forEachTile(channels.size(), frames, [&](std::size_t channel, std::size_t first, std::size_t count) {
        copy(interleaved + first * stride + channel * bytes, stride, channels[channel] + first * bytes, bytes,
             count);
    });
}

void widen(FormatId format, const std::byte* containers, std::span<int> samples) {
    if (format == FormatId::s24)
        widenBytes<3>(containers, samples, 0);
    else
        widenBytes<1>(containers, samples, format == FormatId::u8 ? signBit : 0);
}

void narrow(FormatId format, std::span<const int> samples, std::byte* containers) {
    if (format == FormatId::s24)
        narrowToBytes<3>(samples, containers, 0);
    else
        narrowToBytes<1>(samples, containers, format == FormatId::u8 ? signBit : 0);
}

} // namespace audlmd::command

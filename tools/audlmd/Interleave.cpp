#include "tools/audlmd/Interleave.hpp"

#include <algorithm>
#include <cstring>

namespace audlmd::command {
namespace {

/// Frames per tile: what the strides of many channels touch stays in the innermost cache.
constexpr std::size_t tileFrames = 512;

/// One channel of a tile; strides in bytes.
template <std::size_t Bytes>
void copyStrided(const std::byte* from, std::size_t fromStride, std::byte* to, std::size_t toStride,
                 std::size_t frames) {
    for (; frames != 0; --frames, from += fromStride, to += toStride)
        std::memcpy(to, from, Bytes);
}

using Copy = decltype(&copyStrided<1>);

/// The container's size is known to the loop that copies it.
Copy copyOf(std::size_t bytes) {
    constexpr Copy copies[] = {copyStrided<1>, copyStrided<2>, copyStrided<3>, copyStrided<4>};
    return copies[bytes - 1];
}

/// Calls `copyChannel` with the channel, the tile's first frame and its number of frames.
template <class CopyChannel>
void forEachTile(std::size_t channels, std::size_t frames, CopyChannel copyChannel) {
    for (std::size_t first = 0; first < frames; first += tileFrames)
        for (std::size_t channel = 0; channel < channels; ++channel)
            copyChannel(channel, first, std::min(tileFrames, frames - first));
}

} // namespace

void interleave(std::span<const std::byte* const> channels, std::size_t bytes, std::size_t frames,
                std::byte* interleaved) {
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

} // namespace audlmd::command

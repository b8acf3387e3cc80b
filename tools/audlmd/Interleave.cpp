#include "tools/audlmd/Interleave.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace audlmd::command {
namespace {

/// Frames per tile: what the strides of many channels touch stays in the innermost cache.
constexpr std::size_t tileFrames = 512;

template <std::size_t Bytes>
void interleaveContainers(std::span<const std::byte* const> channels, std::size_t frames, std::byte* out) {
    const std::size_t stride = channels.size() * Bytes;
    for (std::size_t tile = 0; tile < frames; tile += tileFrames) {
        const std::size_t end = std::min(frames, tile + tileFrames);
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            const std::byte* from = channels[channel] + tile * Bytes;
            std::byte* to = out + tile * stride + channel * Bytes;
            for (std::size_t frame = tile; frame < end; ++frame, from += Bytes, to += stride)
                std::memcpy(to, from, Bytes);
        }
    }
}

/// The commonest case, in a loop that the compiler turns into shuffles.
template <class Word>
void interleaveStereo(const std::byte* left, const std::byte* right, std::size_t frames, std::byte* out) {
    for (std::size_t frame = 0; frame < frames; ++frame) {
        Word pair[2];
        std::memcpy(&pair[0], left + frame * sizeof(Word), sizeof(Word));
        std::memcpy(&pair[1], right + frame * sizeof(Word), sizeof(Word));
        std::memcpy(out + frame * sizeof pair, pair, sizeof pair);
    }
}

template <std::size_t Bytes>
void deinterleaveContainers(const std::byte* in, std::size_t frames, std::span<std::byte* const> channels) {
    const std::size_t stride = channels.size() * Bytes;
    for (std::size_t tile = 0; tile < frames; tile += tileFrames) {
        const std::size_t end = std::min(frames, tile + tileFrames);
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            const std::byte* from = in + tile * stride + channel * Bytes;
            std::byte* to = channels[channel] + tile * Bytes;
            for (std::size_t frame = tile; frame < end; ++frame, from += stride, to += Bytes)
                std::memcpy(to, from, Bytes);
        }
    }
}

} // namespace

void interleave(std::span<const std::byte* const> channels, std::size_t bytes, std::size_t frames,
                std::byte* interleaved) {
    if (channels.size() == 1)
        std::memcpy(interleaved, channels[0], frames * bytes);
    else if (bytes == 4 && channels.size() == 2)
        interleaveStereo<std::uint32_t>(channels[0], channels[1], frames, interleaved);
    else if (bytes == 4)
        interleaveContainers<4>(channels, frames, interleaved);
    else if (bytes == 3)
        interleaveContainers<3>(channels, frames, interleaved);
    else if (bytes == 2 && channels.size() == 2)
        interleaveStereo<std::uint16_t>(channels[0], channels[1], frames, interleaved);
    else if (bytes == 2)
        interleaveContainers<2>(channels, frames, interleaved);
    else
        interleaveContainers<1>(channels, frames, interleaved);
}

void deinterleave(const std::byte* interleaved, std::size_t bytes, std::size_t frames,
                  std::span<std::byte* const> channels) {
    if (channels.size() == 1)
        std::memcpy(channels[0], interleaved, frames * bytes);
    else if (bytes == 4)
        deinterleaveContainers<4>(interleaved, frames, channels);
    else if (bytes == 3)
        deinterleaveContainers<3>(interleaved, frames, channels);
    else if (bytes == 2)
        deinterleaveContainers<2>(interleaved, frames, channels);
    else
        deinterleaveContainers<1>(interleaved, frames, channels);
}

} // namespace audlmd::command

#include "c/Samples.hpp"

#include "c/audlmd.h"
#include "host/deliver/Delivery.hpp"
#include "ole/Aud/SampleEncoding.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace audlmd::c {
namespace {

template <class Format>
void readAs(const Media& media, std::int64_t position, std::int64_t frames, Rounding rounding,
            std::byte* out) {
    // Many frames at a time, so that a mix renders its strips side by side, in little memory.
    constexpr std::int64_t most = 65536;
    const std::size_t frameSize = media.channels.size() * sizeof(Format);
    std::vector<float> samples(static_cast<std::size_t>(std::min(frames, most)));
    std::vector<Format> containers(samples.size());
    for (; frames > 0; frames -= std::min(frames, most)) {
        const std::span<float> block =
            std::span(samples).first(static_cast<std::size_t>(std::min(frames, most)));
        for (std::size_t channel = 0; channel < media.channels.size(); ++channel) {
            media.channels[channel]->read(position, block);
            storeBlock<Format>(block, containers.data(), rounding, {channel, position});
            for (std::size_t n = 0; n < block.size(); ++n)
                std::memcpy(out + n * frameSize + channel * sizeof(Format), &containers[n], sizeof(Format));
        }
        position += std::ssize(block);
        out += block.size() * frameSize;
    }
}

} // namespace

std::int64_t readFrames(const Media& media, std::int64_t position, std::int64_t frames, int format,
                        void* buffer) {
    if (position < 0 || frames < 0)
        throw std::invalid_argument("a position and a number of frames cannot be negative");
    const std::int64_t length = media.channels.front()->length();
    const std::int64_t count = std::min(frames, length - std::min(position, length));
    const bool isDithered = (format & AUDLMD_DITHERED) != 0;
    const Rounding rounding = isDithered ? Rounding::dithered : Rounding::nearest;
    auto* const out = static_cast<std::byte*>(buffer);
    switch (format & ~AUDLMD_DITHERED) {
    case AUDLMD_F32:
        readAs<Aud::SampleF32>(media, position, count, Rounding::nearest, out);
        break;
    case AUDLMD_S16:
        readAs<Aud::SampleS16>(media, position, count, rounding, out);
        break;
    case AUDLMD_S24:
        readAs<Aud::SampleS24>(media, position, count, rounding, out);
        break;
    case AUDLMD_S32:
        readAs<Aud::SampleS32>(media, position, count, rounding, out);
        break;
    default:
        throw std::invalid_argument(std::to_string(format) + " is no format of audlmd_format");
    }
    return count;
}

} // namespace audlmd::c

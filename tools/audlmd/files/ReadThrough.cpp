#include "tools/audlmd/files/ReadThrough.hpp"

#include <sndfile.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace audlmd::command {

void readThrough(SoundFile& file, const std::function<void(std::int64_t from, ChannelBlock block)>& take) {
    // Of all channels. A SoundFile keeps as many for the channels that are read after the first.
    constexpr std::int64_t mostSamples = std::int64_t{1} << 20;
    const std::int64_t most = std::clamp<std::int64_t>(mostSamples / file.channels(), 1, 65536);
    const auto channels = static_cast<std::size_t>(file.channels());
    std::vector<std::vector<float>> samples(channels, std::vector<float>(static_cast<std::size_t>(most)));
    std::vector<std::span<const float>> block(channels);
    for (std::int64_t from = 0; from < file.frames(); from += most) {
        const auto frames = static_cast<std::size_t>(std::min(most, file.frames() - from));
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const std::span<float> part = std::span(samples[channel]).first(frames);
            file.read(static_cast<int>(channel), from, part);
            block[channel] = part;
        }
        take(from, block);
    }
}

ChannelLayout layoutOfFile(const SoundFile& file) {
    return isKnown(file.layout()) ? file.layout() : usualLayout(file.layout().size());
}

float fullScaleOf(int type) {
    switch (type & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
        return 1.0F - 0x1p-7F;
    case SF_FORMAT_PCM_16:
    case SF_FORMAT_ALAC_16:
        return 1.0F - 0x1p-15F;
    case SF_FORMAT_PCM_24:
    case SF_FORMAT_ALAC_24:
        return 1.0F - 0x1p-23F;
    default:
        return 1.0F;
    }
}

} // namespace audlmd::command

#include "tools/audlmd/play/FullScale.hpp"

#include "tools/audlmd/mix/MixReportText.hpp"

#include <algorithm>
#include <cmath>

namespace audlmd::command {

void FullScale::clip(std::span<float> interleaved, RangeSample position) noexcept {
    constexpr auto relaxed = std::memory_order_relaxed;
    for (std::size_t at = 0; at < interleaved.size(); ++at) {
        const float magnitude = std::fabs(interleaved[at]);
        if (!(magnitude > 1.0F))
            continue;
        interleaved[at] = std::clamp(interleaved[at], -1.0F, 1.0F);
        Channel& channel = channels_[at % channels_.size()];
        if (channel.samples.load(relaxed) == 0)
            channel.firstAt.store(position.number(), relaxed);
        channel.peak.store(std::max(channel.peak.load(relaxed), magnitude), relaxed);
        channel.samples.store(channel.samples.load(relaxed) + 1, relaxed);
    }
}

std::uint64_t FullScale::clipped() const {
    std::uint64_t samples = 0;
    for (const Channel& channel : channels_)
        samples += channel.samples;
    return samples;
}

std::vector<std::string> FullScale::lines(int sampleRate) const {
    std::vector<std::string> lines;
    for (std::size_t n = 0; n < channels_.size(); ++n) {
        const Channel& channel = channels_[n];
        std::string line = channelOverloadLine(overloadWords(true), n,
                                               {.samples = channel.samples,
                                                .peak = channel.peak,
                                                .firstAt = channel.firstAt.load(),
                                                .spans = {}},
                                               sampleRate);
        if (!line.empty())
            lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace audlmd::command

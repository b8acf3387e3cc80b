#include "host/mix/TrackSums.hpp"

#include "host/signal/BlockLoops.hpp"

#include <algorithm>
#include <utility>

namespace audlmd {
namespace {

constexpr std::size_t mostSpansOfTheOutput = 1024;

std::size_t termsIn(std::size_t channel, std::span<const SoundingStrip> strips) {
    std::size_t terms = 0;
    for (const SoundingStrip& sounding : strips)
        terms += sounding.strip->termsIn(channel);
    return terms;
}

void add(std::span<const SoundingStrip> strips, std::size_t channel, TimelineSpan block,
         std::span<float> bus) {
    for (const auto& [strip, track, span] : strips)
        strip->addTo(channel, bus.subspan(static_cast<std::size_t>(span.from - block.from),
                                          static_cast<std::size_t>(span.length())));
}

} // namespace

TrackSums::TrackSums(std::size_t channels, std::size_t stems, std::size_t block)
    : channels_(channels), tracks_(stems == 0 ? channels : 0, std::vector<float>(block)),
      meters_(channels * (stems + 1), OverloadMeter(mostSpansOfTheOutput)) {}

/// The first track that sounds, and a track of one term, may go straight into the output: a bus that begins
/// with +0.0 never holds -0.0, so that adding to +0.0 first changes nothing.
void TrackSums::sum(std::size_t channel, TimelineSpan block, std::span<const SoundingStrip> strips,
                    std::span<const std::span<float>> buffers) {
    for (std::size_t buffer = channel; buffer < buffers.size(); buffer += channels_)
        std::ranges::fill(buffers[buffer], 0.0F);
    const std::span<float> output = buffers[channel];
    const bool hasStems = tracks_.empty();
    bool isFirst = true;
    while (!strips.empty()) {
        const std::size_t track = strips.front().track;
        const auto end = std::ranges::find_if(
            strips, [track](const SoundingStrip& sounding) { return sounding.track != track; });
        const auto own = strips.first(static_cast<std::size_t>(end - strips.begin()));
        strips = strips.subspan(own.size());
        if (!hasStems && (std::exchange(isFirst, false) || termsIn(channel, own) < 2)) {
            add(own, channel, block, output);
            continue;
        }
        const std::size_t stem = (track + 1) * channels_ + channel;
        const std::span<float> sum =
            hasStems ? buffers[stem] : std::span(tracks_[channel]).first(output.size());
        if (!hasStems)
            std::ranges::fill(sum, 0.0F);
        add(own, channel, block, sum);
        addTo(output, sum, 1.0F);
        if (hasStems)
            meters_[stem].measure(sum, 1.0F, block.from);
    }
    meters_[channel].measure(output, 1.0F, block.from);
}

void TrackSums::tell(MixReport& report) const {
    for (std::size_t buffer = 0; buffer < meters_.size(); ++buffer) {
        if (buffer >= channels_ && buffer % channels_ == 0)
            report.stems.emplace_back();
        (buffer < channels_ ? report.channels : report.stems.back()).push_back(meters_[buffer].overload());
    }
}

} // namespace audlmd

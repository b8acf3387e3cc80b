#include "host/mix/Timeline.hpp"

#include <algorithm>
#include <stdexcept>

namespace audlmd {

Routing defaultRouting(std::size_t mediaChannels, std::size_t outputChannels) {
    if (mediaChannels > outputChannels)
        throw std::invalid_argument("the material has " + std::to_string(mediaChannels) +
                                    " channels, more than the output's " + std::to_string(outputChannels) +
                                    ": the strip needs a routing of its own");
    Routing routing{std::vector(outputChannels, std::vector<float>(mediaChannels))};
    for (std::size_t channel = 0; channel < mediaChannels; ++channel)
        routing.rows[channel][channel] = 1.0F;
    if (mediaChannels == 1 && outputChannels > 1)
        routing.rows[1][0] = 1.0F;
    return routing;
}

TimelineSample endOfSound(const Timeline& timeline) {
    TimelineSample end;
    for (const TimelineTrack& track : timeline.tracks)
        for (const TimelineStrip& strip : track.strips)
            if (strip.silence.empty())
                end = std::max(end, strip.at + strip.length);
    return end;
}

} // namespace audlmd

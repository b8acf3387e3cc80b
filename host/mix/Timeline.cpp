#include "host/mix/Timeline.hpp"

#include <algorithm>

namespace audlmd {

ChannelLayout layoutOf(const Timeline& timeline) {
    return timeline.layout.empty() ? unknownLayout(timeline.channels) : timeline.layout;
}

ChannelLayout outputLayout(const Timeline& timeline) {
    return timeline.foldDown ? timeline.foldDown->layout : layoutOf(timeline);
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

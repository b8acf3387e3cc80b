#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"
#include "host/play/LiveReport.hpp"

#include <string>

namespace audlmd::timeline {

/// A report as JSON, for programs: an object of lists. Spans and times are output samples, levels are
/// decibels over full scale, null for silence. Bytes of names that are no UTF-8 become U+FFFD.
///
/// `clips`: the strips with something to tell, with track, clip and media, `failure`, `underrunSamples`,
/// `underrunEpisodes`, `silent` and `overload`. `channels`: the overload of each channel of the output.
/// `stems`: the same of each track, where the mixer gives them. `notes`: those of the timeline. `slowest`:
/// the strip that took most time to render.
/// \snippet timeline.cpp report
std::string writeReport(const MixReport& report, const Timeline& timeline);

/// The same of live playback. `sound`: `failure`, `lateSamples`, `lateEpisodes` and `late`, spans of source
/// samples. `starvedFrames` and `starvedEpisodes`: what was not rendered in time. `clips` of a timeline.
std::string writeReport(const LiveReport& report, const LiveUnderruns& underruns, const Timeline& timeline);

} // namespace audlmd::timeline

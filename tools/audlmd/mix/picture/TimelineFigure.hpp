#pragma once

#include "host/mix/Media.hpp"
#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"
#include "tools/audlmd/mix/picture/TimelineSketch.hpp"
#include "tools/plot/Figure.hpp"

#include <functional>

namespace audlmd::command {

/// The picture of a mixed timeline: a lane for each track, each strip with its waveform as it is played, its
/// fades and levels, and a lane for the output; what went wrong is red. Time 0 is the first output sample.
/// `course` is that of the output, null where nothing was mixed.
///
/// Reads the material that sounds once, in blocks, with one medium open at a time. A medium that does not
/// open is drawn as missing. `progress` is told the share that is done, from 0 to 1; its exceptions end the
/// work and are passed on.
///
/// A picture has lanes for 700 tracks, and says how many more there are. Up to 150 tracks a point is two
/// pixels, beyond that one.
plot::Figure drawTimeline(const Timeline& timeline, const MixReport& report, const OutputCourse* course,
                          const OpenMedia& openMedia, const std::function<void(double share)>& progress);

/// Reads the waveforms of all strips of the sketch into StripSketch::peaks.
///
/// Each medium is opened once. Its samples are read in blocks, from the first that sounds to the last, and
/// each block serves all strips that play the block. A medium that does not open makes its strips "missing",
/// one that cannot be read makes the strips that sound there "unreadable".
///
/// `progress` is told the share that is done, from 0 to 1, after each block. An exception of `progress` ends
/// the reading and is passed on.
void readPeaks(TimelineSketch& sketch, const OpenMedia& openMedia,
               const std::function<void(double share)>& progress);

} // namespace audlmd::command

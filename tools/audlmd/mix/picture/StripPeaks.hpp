#pragma once

#include "host/mix/Media.hpp"
#include "tools/audlmd/mix/picture/TimelineSketch.hpp"

#include <functional>

namespace audlmd::command {

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

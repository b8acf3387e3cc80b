#pragma once

#include "tools/audlmd/files/Markers.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace audlmd::command {

/// How the samples of an output become times.
struct MarkerClock {
    int sampleRate = 48000;
    /// The time of the output's first sample on the user's clock, in samples.
    std::int64_t timeReference = 0;
    /// Of that clock, in frames per second. 0: not known.
    double frameRate = 0.0;
};

/// The markers of an output as comma-separated values (RFC 4180), in UTF-8: a line of headings, then a line
/// for each marker, with its sample, its time in seconds, its time on the user's clock (timecode where the
/// frame rate is known), its length in samples, its name and its comment. What names and comments hold is
/// kept, line breaks too; see words::utf8().
std::string markersCsv(const std::vector<Marker>& markers, const MarkerClock& clock);

} // namespace audlmd::command

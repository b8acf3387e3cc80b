#pragma once

#include "host/timeline/Json.hpp"
#include "host/timeline/ReadOptions.hpp"

#include <optional>
#include <vector>

namespace audlmd::timeline {

// What our own JSON and the block "audlmd" in other files have in common. All throw TimelineError.

/// The gain of a strip has this upper limit, in decibels.
inline constexpr double highestGainDb = 60.0;

/// The note where the linear converter takes the place of the filtering one, which does not reach the speed.
inline constexpr const char* linearInstead =
    "the speed is beyond the limits of the filtering converter; the linear one is used";

/// The list "equaliser": at most five bands, each an object {"kind", "frequency", "gain", "q"} or a text for
/// ReadOptions::band. The number of bands and their limits are checked by requireBands(), once the sample
/// rate is known.
std::vector<EqualiserBand> equaliserIn(Fields& fields, const ReadOptions& options);

/// Nothing where there is no "routing". Throws unless there is a row for each of the output's channels, and
/// all rows are equally long. Gains are linear, with a magnitude of at most 1e6.
std::optional<Routing> routingIn(Fields& fields, std::size_t channels);

/// Throws for bands that the equaliser cannot have at a sample rate. Call this before a strip is handed to a
/// player, so that the message names the clip.
void requireBands(const std::vector<EqualiserBand>& bands, double sampleRate, const Where& where);

/// A path as it stands in a file. Relative ones start in `folder`. An empty path stays empty. The file need
/// not exist.
std::string pathFrom(const std::string& media, const ReadOptions& options);

} // namespace audlmd::timeline

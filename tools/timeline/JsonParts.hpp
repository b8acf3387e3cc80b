#pragma once

#include "tools/timeline/Json.hpp"
#include "tools/timeline/ReadOptions.hpp"

#include <optional>
#include <vector>

namespace audlmd::timeline {

// What our own JSON and the block "audlmd" in other files have in common. All throw TimelineError.

/// The gain of a strip has this upper limit.
inline constexpr double highestGainDb = 60.0;

/// The list "equaliser": at most five bands, each an object {"kind", "frequency", "gain", "q"} or a text for
/// ReadOptions::band.
std::vector<EqualiserBand> equaliserIn(Fields& fields, const ReadOptions& options);

/// Nothing where there is no "routing". Throws unless there is a row for each of the output's channels, and
/// all rows are equally long.
std::optional<Routing> routingIn(Fields& fields, std::size_t channels);

/// Throws for bands that the equaliser cannot have at a sample rate.
void requireBands(const std::vector<EqualiserBand>& bands, double sampleRate, const Where& where);

/// A path as it stands in a file. Relative ones start in `folder`.
std::string pathFrom(const std::string& media, const ReadOptions& options);

} // namespace audlmd::timeline

#pragma once

#include "host/signal/Speed.hpp"
#include "host/signal/StripSettings.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace audlmd {

// The converter `best` is none of the renderer's: the material is read at another rate, so that the strip
// plays at normal speed. Here is what becomes of the strip; materialAtNormalSpeed() of host/mix/ reads the
// material.

/// The limits of the converter, in source samples per output sample.
inline constexpr double slowestBestSpeed = 0.01;
inline constexpr double fastestBestSpeed = 100.0;

/// Why the converter cannot play a strip, for the user: the speed is beyond the limits or has no ratio, see
/// ratioOf(); or a band of the equaliser, at the frequency where it is heard, lies at half the sample rate or
/// above. Nothing where it can.
std::optional<std::string> whyNotBest(const StripSettings& strip);

/// The strip on its material as it is at normal speed. Strips with another converter stay as they are.
///
/// The range has as many samples as the strip has output samples. Fades and automations are divided by the
/// speed, each time rounded to a sample; bands are designed at their frequency times the speed, and so mean
/// the frequencies of the material. Throws std::invalid_argument for what whyNotBest() names, and for
/// positions that are out of range.
/// \snippet signal.cpp best
StripSettings atNormalSpeed(const StripSettings& strip);

/// So many samples of silence stand before the material when it is converted. The sample that the strip
/// delivers first, of the range's two ends, then lies on a sample of the output; and strips whose ranges
/// start a multiple of the ratio apart read the same samples. The strip must be one that the converter can
/// play.
std::int64_t leadOf(const StripSettings& strip);

} // namespace audlmd

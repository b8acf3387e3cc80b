#pragma once

#include "host/mix/Timeline.hpp"

#include <cstddef>
#include <string>

namespace audlmd::bench {

/// How long the strips below last, in samples of 48 kHz.
inline constexpr std::int64_t stripLength = std::int64_t{30} * 48000;

/// So many tracks with one stereo strip each, all at the same time, each from another place of the sound
/// file, which must be twice as long.
Timeline plainStrips(const std::string& file, std::size_t count);

/// The same with five bands of the equaliser, a fade that lasts as long as the strip, and an automation.
Timeline fullStrips(const std::string& file, std::size_t count);

} // namespace audlmd::bench

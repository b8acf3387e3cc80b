#pragma once

#include "host/play/LivePlayer.hpp"

#include <memory>
#include <random>

namespace audlmd::soak {

/// 20 seconds of clips on three tracks, with crossfades, reversed strips, and media of all kinds (see
/// Sources.hpp), one of which is missing.
Timeline randomTimeline(std::mt19937& random);

/// A player with two channels of 48 kHz and random options, of a sound in memory, a sound on a disk that is
/// slow at times, or a random timeline.
std::unique_ptr<LivePlayer> randomPlayer(std::mt19937& random);

} // namespace audlmd::soak

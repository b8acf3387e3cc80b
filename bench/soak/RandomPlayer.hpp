#pragma once

#include "host/play/LivePlayer.hpp"

#include <memory>
#include <random>

namespace audlmd::soak {

/// A player with two channels of 48 kHz and random options, of a sound in memory, a sound on a disk that is
/// slow at times, or a timeline with crossfades, reversed strips and both kinds of media.
std::unique_ptr<LivePlayer> randomPlayer(std::mt19937& random);

} // namespace audlmd::soak

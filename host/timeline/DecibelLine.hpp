#pragma once

#include "host/signal/Automation.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace audlmd::timeline {

/// A level at a position, in source samples from the start of a strip's range.
struct DecibelKey {
    std::int64_t position = 0;
    double decibels = 0.0;
};

/// From here down a key is silent. A line to or from silence runs to this level and jumps there.
inline constexpr double silentDecibels = -100.0;

/// Nodes whose level differs by less than 0.1 dB from straight lines in decibels between the keys. An
/// automation runs straight in u-value, and the fader law bends, so that a line takes several nodes: about
/// one for 4 dB. Keys are in order of position, and at most +10 dB. Two nodes at one position are a jump. No
/// keys give no nodes.
std::vector<LevelNode> nodesAlong(std::span<const DecibelKey> keys);

} // namespace audlmd::timeline

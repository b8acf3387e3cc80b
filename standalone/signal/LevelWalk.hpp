#pragma once

#include "host/DynamicLevel.hpp"
#include "standalone/signal/Automation.hpp"

#include <cstdint>
#include <span>

namespace audlmd {

/// U-values of automations are whole multiples of it.
inline constexpr float automationGrid = 0x1p-23F;

/// The level at a position, in steps of the grid. There is at least one node.
std::int64_t levelAt(std::span<const LevelNode> nodes, std::int64_t position);

/// Loads the straight piece that leads on from state.host.nextPosition in that direction, and moves
/// nextPosition to where it ends.
void loadNextPiece(Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState& state,
                   DynamicLevelDirection direction);

} // namespace audlmd

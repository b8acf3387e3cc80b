#pragma once

#include "host/DynamicLevel.hpp"
#include "loop_modes/ModeCode.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace audlmd {

/// Whether an automation is walked from its first node to its last, or the other way.
using Aud::Render::DynamicLevelDirection;

using HostStorage::LevelNode;

/// A level that is linear in u-value between nodes, and constant before the first and after the last one. Of
/// nodes at the same position, the first in the list ends what comes before the position, and the last counts
/// from the position on.
///
/// The level has the same value at a position whichever way and from wherever it is reached. For that it lies
/// on a grid of 2^-23 in u-value, on which the renderer's single-precision steps are exact, and follows the
/// straight line in pieces that differ from it by less than 17 steps of the grid (2e-6 in u-value): a single
/// step of a long ramp would drift, because what it adds to a level near 1.0 is rounded.
class Automation {
public:
    /// Throws std::invalid_argument for an empty list, positions out of order and u-values that are not
    /// finite. U-values are limited to 0 to 1.5, as the curve does it.
    explicit Automation(std::vector<LevelNode> nodes);

    std::span<const LevelNode> nodes() const { return nodes_; }

    /// The level's u-value there.
    float uValueAt(std::int64_t position) const;

    /// Puts a state there, ready to walk on in that direction. The state refers to this object's nodes.
    void place(Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState& state, std::int64_t position,
               DynamicLevelDirection direction) const;

private:
    std::vector<LevelNode> nodes_;
};

} // namespace audlmd

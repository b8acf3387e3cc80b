#pragma once

#include "contract/DynamicLevel.hpp"
#include "loop_modes/ModeCode.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace audlmd {

/// The direction in which an automation is walked: from the first node to the last, or back. Independent of
/// the direction in which the material is read.
using Aud::Render::DynamicLevelDirection;

using HostStorage::LevelNode;

/// A level that is linear in u-value between nodes, and constant before the first and after the last node.
/// Nodes may share a position, which makes a jump: the first of them in the list ends the level before the
/// position, the last of them counts from the position on.
///
/// The level at a position is the same in whichever direction and from wherever a walk reaches the position.
/// For that the level lies on automationGrid, on which the renderer's single-precision steps are exact. The
/// level follows the straight line in pieces that differ from the line by less than 17 steps of the grid
/// (2e-6 in u-value). A single step for a long ramp would drift: the sum near u = 1.0 is rounded.
/// \snippet signal.cpp automation
class Automation {
public:
    /// Positions are counted in samples. Throws std::invalid_argument for an empty list, positions out of
    /// order and u-values that are not finite. U-values are limited to 0 to 1.5, the range of the curve.
    explicit Automation(std::vector<LevelNode> nodes);

    /// The nodes as they were given: the limits of the u-value are applied when a level is asked for. Valid
    /// as long as this object lives.
    std::span<const LevelNode> nodes() const { return nodes_; }

    /// The u-value at a position, on the grid: exactly the level that the renderer has there. Positions
    /// before the first node have the level of the first node, positions after the last one that of the last.
    float uValueAt(std::int64_t position) const;

    /// Puts a state at a position, ready for a walk in that direction. The state refers to the nodes of this
    /// object, which must outlive the walk. Call this once before the first sample, and again after a jump;
    /// the renderer then asks for the next pieces itself. Trap: assigning to this object, or destroying it,
    /// leaves the state with a dangling pointer.
    void place(Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState& state, std::int64_t position,
               DynamicLevelDirection direction) const;

private:
    std::vector<LevelNode> nodes_;
};

/// The grid of automations: each u-value is a whole multiple.
inline constexpr float automationGrid = 0x1p-23F;

/// The level of the nodes at a position, in steps of the grid. There is at least one node. Takes logarithmic
/// time in the number of nodes.
/// \snippet signal.cpp pieces
std::int64_t levelAt(std::span<const LevelNode> nodes, std::int64_t position);

/// Loads the piece that starts at state.nextPosition and leads on in that direction, and moves nextPosition
/// to the end of the piece. Without nodes the state becomes stationary. Use this where the renderer reports
/// that samplesToNextNode has run out.
/// \snippet signal.cpp pieces
void loadNextPiece(Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState& state,
                   DynamicLevelDirection direction);

} // namespace audlmd

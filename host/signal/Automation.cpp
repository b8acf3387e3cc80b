#include "host/signal/Automation.hpp"

#include "contract/DynamicLevel.hpp"
#include "host/signal/GainLaws.hpp"
#include "host/signal/GridRamp.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace audlmd {
namespace {

using Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState;
using Nodes = std::span<const LevelNode>;

/// The u-value of a node in whole steps of the grid, limited to the travel of the fader.
std::int64_t onGrid(const LevelNode& node) {
    // A NaN is silent.
    const float u = node.uValue > 0.0F ? std::min(node.uValue, static_cast<float>(faderTop)) : 0.0F;
    return std::lround(u / automationGrid);
}

/// Counted without a sign, because two nodes may lie further apart than the largest signed number.
std::uint64_t distance(std::int64_t from, std::int64_t to) {
    return static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from);
}

/// The index of the first node beyond the position, or the number of nodes. The hint and the two indexes
/// beside the hint are tried first, because a walk moves on by one node at a time.
std::size_t firstBeyond(Nodes nodes, std::int64_t position, std::size_t hint) {
    for (const std::size_t i : {hint, hint + 1, hint - 1})
        if (i <= nodes.size() && (i == 0 || nodes[i - 1].position <= position) &&
            (i == nodes.size() || nodes[i].position > position))
            return i;
    const auto beyond = std::upper_bound(nodes.begin(), nodes.end(), position,
                                         [](std::int64_t p, const LevelNode& n) { return p < n.position; });
    return static_cast<std::size_t>(beyond - nodes.begin());
}

/// The ramp from the node before to this node, which is not the first.
GridRamp rampTo(Nodes nodes, std::size_t node) {
    const LevelNode& from = nodes[node - 1];
    const LevelNode& to = nodes[node];
    return {onGrid(from), onGrid(to), distance(from.position, to.position)};
}

/// The level at a position. `beyond` is the first node beyond the position. Nodes at the position itself
/// count as passed, so the last of several nodes at one position gives the level there.
std::int64_t levelBefore(Nodes nodes, std::int64_t position, std::size_t beyond) {
    if (beyond == 0)
        return onGrid(nodes.front());
    if (beyond == nodes.size())
        return onGrid(nodes.back());
    const std::uint64_t offset = distance(nodes[beyond - 1].position, position);
    return rampTo(nodes, beyond).pieceAt(offset).valueAt(offset);
}

/// The samples from a position to the next change of the slope, and the slope in steps of the grid per
/// sample. 0 samples: the level stays for good.
struct Run {
    std::uint64_t samples;
    std::int64_t slope;
};

/// The run from a position towards later ones. Nodes that all have this level make one run. A level that no
/// later node leaves stays for good, which spares the renderer every further call.
Run runForwards(Nodes nodes, std::int64_t position, std::int64_t level, std::size_t beyond) {
    std::size_t other = beyond;
    while (other < nodes.size() && onGrid(nodes[other]) == level)
        ++other;
    if (other == nodes.size())
        return {0, 0};
    if (other > beyond)
        return {distance(position, nodes[other - 1].position), 0};
    const std::uint64_t offset = distance(nodes[beyond - 1].position, position);
    const GridRamp::Piece piece = rampTo(nodes, beyond).pieceAt(offset);
    return {piece.end - offset, piece.slope};
}

/// The run from a position towards earlier ones. At a jump the run is one sample long. The level one sample
/// earlier tells whether the walk stands on a plateau, on a ramp or at a jump.
Run runBackwards(Nodes nodes, std::int64_t position, std::int64_t level, std::size_t beyond) {
    const std::size_t above = firstBeyond(nodes, position - 1, beyond);
    const std::int64_t next = levelBefore(nodes, position - 1, above);
    std::size_t other = above;
    while (other > 0 && onGrid(nodes[other - 1]) == level)
        --other;
    if (next == level && other == 0)
        return {0, 0};
    if (next == level && other < above)
        return {distance(nodes[other].position, position), 0};
    if (above > 0) {
        const std::uint64_t offset = distance(nodes[above - 1].position, position);
        // The walk leaves the position downwards, so the piece is the one that holds the sample before.
        const GridRamp::Piece piece = rampTo(nodes, above).pieceAt(offset - 1);
        if (piece.valueAt(offset) == level)
            return {offset - piece.begin, -piece.slope};
    }
    // Nodes share this position: the ramp below ends at another level.
    return {1, next - level};
}

} // namespace

Automation::Automation(std::vector<LevelNode> nodes) : nodes_(std::move(nodes)) {
    if (nodes_.empty())
        throw std::invalid_argument("an automation needs at least one node");
    // The state of a walk counts nodes in 32 bits.
    if (nodes_.size() > std::numeric_limits<std::uint32_t>::max())
        throw std::invalid_argument("an automation has at most 4294967295 nodes");
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        if (!std::isfinite(nodes_[i].uValue))
            throw std::invalid_argument("the level of automation node " + std::to_string(i + 1) +
                                        " is not a number");
        if (i > 0 && nodes_[i].position < nodes_[i - 1].position)
            throw std::invalid_argument("automation node " + std::to_string(i + 1) +
                                        " lies before the node that it follows: put them in order of time");
    }
}

/// The product is exact: a u-value of at most 1.5 on the grid needs no more than the 24 bits of a float.
float Automation::uValueAt(std::int64_t position) const {
    return static_cast<float>(levelAt(nodes_, position)) * automationGrid;
}

void Automation::place(Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState& state,
                       std::int64_t position, DynamicLevelDirection direction) const {
    // A state that has arrived at its next node: loading the next piece does the rest.
    state = {};
    state.host.nodes = nodes_.data();
    state.host.nodeCount = static_cast<std::uint32_t>(nodes_.size());
    state.host.nextPosition = position;
    loadNextPiece(state, direction);
}

std::int64_t levelAt(Nodes nodes, std::int64_t position) {
    return levelBefore(nodes, position, firstBeyond(nodes, position, 0));
}

void loadNextPiece(DynamicLevelApplyingIteratorState& state, DynamicLevelDirection direction) {
    const Nodes nodes(state.host.nodes, state.host.nodeCount);
    if (nodes.empty()) {
        state.stationary = 1;
        return;
    }
    const std::int64_t position = state.host.nextPosition;
    const std::size_t beyond = firstBeyond(nodes, position, state.host.nearNode);
    const std::int64_t level = levelBefore(nodes, position, beyond);
    const bool forwards = direction == DynamicLevelDirection::forwards;
    const Run run =
        forwards ? runForwards(nodes, position, level, beyond) : runBackwards(nodes, position, level, beyond);

    // The state counts in 32 bits. The next call continues a longer run.
    const std::uint64_t samples =
        std::min<std::uint64_t>(run.samples, std::numeric_limits<std::uint32_t>::max());
    // The hint for the next search, which then ends after one or two comparisons.
    state.host.nearNode = static_cast<std::uint32_t>(beyond);
    state.uValue = static_cast<float>(level) * automationGrid;
    state.uValueStep = static_cast<float>(run.slope) * automationGrid;
    state.samplesToNextNode = static_cast<std::uint32_t>(samples);
    state.stationary = samples == 0 ? 1 : 0;
    const auto moved = static_cast<std::int64_t>(samples);
    state.host.nextPosition = forwards ? position + moved : position - moved;
}

} // namespace audlmd

namespace Aud::DynamicLevelControl {

// The renderer calls the two functions below once per piece. All that is searched or divided happens there,
// so that a sample costs one addition.
DynamicLevelApplyingIteratorBase::DynamicLevelApplyingIteratorBase(DynamicLevelApplyingIteratorState& state)
    : state_(state) {}

void DynamicLevelApplyingIteratorBase::moveToNextNodeForwards() {
    audlmd::loadNextPiece(state_, audlmd::DynamicLevelDirection::forwards);
}

void DynamicLevelApplyingIteratorBase::moveToNextNodeReverse() {
    audlmd::loadNextPiece(state_, audlmd::DynamicLevelDirection::reverse);
}

} // namespace Aud::DynamicLevelControl

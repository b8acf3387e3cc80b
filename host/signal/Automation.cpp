#include "host/signal/Automation.hpp"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace audlmd {

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

} // namespace audlmd

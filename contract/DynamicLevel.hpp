#pragma once

#include "contract/HostStorage.hpp"

#include <cstdint>

namespace Aud::DynamicLevelControl {

/// Where a level stands on its way along the nodes. It outlives render calls, which advance it in place.
/// \snippet signal.cpp automation
struct DynamicLevelApplyingIteratorState {
    HostStorage::LevelWalk host{};

    /// Samples to deliver before the next node is reached. A host never leaves 0 here while the level moves:
    /// the renderer would count through all 2^32 values before it asks for a node again.
    std::uint32_t samplesToNextNode = 0;
    float uValue = 0.0F;
    /// Change of uValue per sample.
    float uValueStep = 0.0F;
    /// Not zero: the level stays at uValue, nothing is counted, and no node is fetched.
    std::uint8_t stationary = 1;
};

/// The host's half of the dynamic level stage: it knows the nodes.
/// \snippet minimal_host.cpp levels
class DynamicLevelApplyingIteratorBase {
public:
    explicit DynamicLevelApplyingIteratorBase(DynamicLevelApplyingIteratorState& state);

    /// Loads what follows the reached node into the four numbers of the state, in forward order.
    [[gnu::cold]] void moveToNextNodeForwards();
    /// The same in reverse order.
    [[gnu::cold]] void moveToNextNodeReverse();

protected:
    DynamicLevelApplyingIteratorState& state_;
};

} // namespace Aud::DynamicLevelControl

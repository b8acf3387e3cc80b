#pragma once

#include <cstdint>

namespace Aud::DynamicLevelControl {

/// A point that the level passes through: the position in samples of the automated stream, the u-value there.
struct LevelNode {
    std::int64_t position = 0;
    float uValue = 0.0F;
};

/// Where a level stands on its way along the nodes. It outlives render calls, which advance it in place.
struct DynamicLevelApplyingIteratorState {
    /// The host's list, in order of position, and how the host walks it. Not owned.
    const LevelNode* nodes = nullptr;
    std::uint32_t nodeCount = 0;
    /// The host's index of a node near nextPosition, where it starts to search.
    std::uint32_t nearNode = 0;
    /// Where the samples to the next node end, in the positions of the nodes.
    std::int64_t nextPosition = 0;

    /// Samples to deliver before the next node is reached. Never 0 while the level moves.
    std::uint32_t samplesToNextNode = 0;
    float uValue = 0.0F;
    /// Change of uValue per sample.
    float uValueStep = 0.0F;
    /// Not zero: the level stays at uValue, nothing is counted, and no node is fetched.
    std::uint8_t stationary = 1;
};

/// The host's half of the dynamic level stage: it knows the nodes.
class DynamicLevelApplyingIteratorBase {
public:
    explicit DynamicLevelApplyingIteratorBase(DynamicLevelApplyingIteratorState& state);

    /// Loads the next segment in forward order into the state.
    [[gnu::cold]] void moveToNextNodeForwards();
    /// Loads the next segment into the state, walking the nodes backwards.
    [[gnu::cold]] void moveToNextNodeReverse();

protected:
    DynamicLevelApplyingIteratorState& state_;
};

} // namespace Aud::DynamicLevelControl

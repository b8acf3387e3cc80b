#pragma once

#include "host/DynamicLevel.hpp"
#include "ole/Aud/ChainLayer.hpp"
#include "ole/Aud/GainCurves.hpp"

namespace Aud::DynamicLevelControl {

/// Multiplies every sample by a level that moves along the host's nodes; the two forms below differ in the
/// direction of the walk, which is independent of the direction in which the source is read.
///
/// The level is linear in u-value between two nodes, and always goes through the mixer-style curve. All
/// copies work on the host's one state, so that the next render call continues where this one stops.
template <Render::WrappableLayer Inner>
class DynamicLevelApplyingIterator : public DynamicLevelApplyingIteratorBase {
public:
    [[gnu::always_inline]] float operator*() const {
        const float sample = *inner_;
        return GainCurve::Curve<GainCurve::eMixerStyleLog>::mapUValueToMagnitude(state_.uValue) * sample;
    }

    const Inner& inner() const { return inner_; }

protected:
    DynamicLevelApplyingIterator(const Inner& inner, DynamicLevelApplyingIteratorState& state)
        : DynamicLevelApplyingIteratorBase(state), inner_(inner) {}

    /// Moves the level by one sample and returns whether it has reached a node, where the host must load the
    /// next segment. The sample that reaches the node is stepped too, and the inner layer only after all of
    /// this.
    [[gnu::always_inline]] bool reachesNode() {
        if (state_.stationary != 0)
            return false;
        --state_.samplesToNextNode;
        state_.uValue += state_.uValueStep;
        return state_.samplesToNextNode == 0;
    }

    Inner inner_;
};

/// Walks the nodes forwards.
template <Render::WrappableLayer Inner>
class ForwardsDynamicLevelApplyingIterator : public DynamicLevelApplyingIterator<Inner> {
public:
    ForwardsDynamicLevelApplyingIterator(const Inner& inner, DynamicLevelApplyingIteratorState& state)
        : DynamicLevelApplyingIterator<Inner>(inner, state) {}

    [[gnu::always_inline]] ForwardsDynamicLevelApplyingIterator& operator++() {
        if (this->reachesNode()) [[unlikely]]
            this->moveToNextNodeForwards();
        ++this->inner_;
        return *this;
    }
};

/// Walks the nodes backwards.
template <Render::WrappableLayer Inner>
class ReverseDynamicLevelApplyingIterator : public DynamicLevelApplyingIterator<Inner> {
public:
    ReverseDynamicLevelApplyingIterator(const Inner& inner, DynamicLevelApplyingIteratorState& state)
        : DynamicLevelApplyingIterator<Inner>(inner, state) {}

    [[gnu::always_inline]] ReverseDynamicLevelApplyingIterator& operator++() {
        if (this->reachesNode()) [[unlikely]]
            this->moveToNextNodeReverse();
        ++this->inner_;
        return *this;
    }
};

} // namespace Aud::DynamicLevelControl

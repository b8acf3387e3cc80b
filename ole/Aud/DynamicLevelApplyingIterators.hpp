#pragma once

#include "contract/DynamicLevel.hpp"
#include "ole/Aud/ChainLayer.hpp"
#include "ole/Aud/GainCurves.hpp"

namespace Aud::DynamicLevelControl {

/// Multiplies every sample by a level that moves along the host's nodes: an automation.
///
/// Between two nodes the level is linear in u-value; the mixer-style curve maps it to a gain, always. All
/// copies work on the host's one state, so the next render call continues where this one stops. The two forms
/// below differ in the direction in which the nodes are walked, which is independent of the direction in
/// which the source is read.
/// \snippet chain.cpp dynamic
template <Render::WrappableLayer Inner>
class DynamicLevelApplyingIterator : public DynamicLevelApplyingIteratorBase {
public:
    [[gnu::always_inline]] float operator*() const {
        const float sample = *inner_;
        return GainCurve::Curve<GainCurve::eMixerStyleLog>::mapUValueToMagnitude(state_.uValue) * sample;
    }

    const Inner& inner() const { return inner_; }
    DynamicLevelApplyingIteratorState& state() { return state_; }

protected:
    DynamicLevelApplyingIterator(const Inner& inner, DynamicLevelApplyingIteratorState& state)
        : DynamicLevelApplyingIteratorBase(state), inner_(inner) {}

    /// Moves the level by one sample and returns whether the level has reached a node, where the host must
    /// load what follows. The level adds its step on the sample that reaches the node, too. Call this before
    /// the layer below is stepped: the order shows when a host operation throws.
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
            moveToNextNode();
        ++this->inner_;
        return *this;
    }

    [[gnu::always_inline]] void moveToNextNode() { this->moveToNextNodeForwards(); }
};

/// Walks the nodes backwards.
template <Render::WrappableLayer Inner>
class ReverseDynamicLevelApplyingIterator : public DynamicLevelApplyingIterator<Inner> {
public:
    ReverseDynamicLevelApplyingIterator(const Inner& inner, DynamicLevelApplyingIteratorState& state)
        : DynamicLevelApplyingIterator<Inner>(inner, state) {}

    [[gnu::always_inline]] ReverseDynamicLevelApplyingIterator& operator++() {
        if (this->reachesNode()) [[unlikely]]
            moveToNextNode();
        ++this->inner_;
        return *this;
    }

    [[gnu::always_inline]] void moveToNextNode() { this->moveToNextNodeReverse(); }
};

} // namespace Aud::DynamicLevelControl

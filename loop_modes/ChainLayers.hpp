#pragma once

#include "loop_modes/ModeCode.hpp"
#include "ole/Aud/Aud__RenderIterators"

#include <cstddef>
#include <tuple>

namespace Aud::Render {

/// The type that a field of the mode selects: the one at the place of the field's value.
template <auto Choice, class... Types>
using Pick = std::tuple_element_t<static_cast<std::size_t>(Choice), std::tuple<Types...>>;

/// The layers of a mode's chain, inner to outer. Each wraps the one before, or is the same type where the
/// mode adds nothing. 864 codes name 576 chains.
template <int N>
requires(isValidModeCode(N)) struct ChainLayers {
private:
    static constexpr ModeFields fields = decodeModeCode(N);
    static constexpr EnvelopeStage stage = envelopeStages[fields.envelopeStage];

    template <class Inner>
    using DynamicLevel =
        Pick<fields.dynamicLevelDirection, DynamicLevelControl::ReverseDynamicLevelApplyingIterator<Inner>,
             DynamicLevelControl::ForwardsDynamicLevelApplyingIterator<Inner>>;

public:
    using Source = Pick<fields.direction, SampleCache::ReverseIterator, SampleCache::ForwardIterator>;

    using Filter = Pick<fields.filterStage, NullIterator<Source>, MultiBandBiquadApplyingIterator<Source>>;

    using Envelope =
        Pick<stage.envelope, Filter,
             EnvelopeApplyingIterator<Filter, EnvelopeTraits::SimpleRamp<GainCurve::eMixerStyleLog>>,
             EnvelopeApplyingIterator<Filter, EnvelopeTraits::SimpleRamp<GainCurve::eConstantPower>>,
             EnvelopeApplyingIterator<Filter, EnvelopeTraits::RampHold>,
             EnvelopeApplyingIterator<Filter, EnvelopeTraits::HoldRamp>,
             EnvelopeApplyingIterator<Filter, EnvelopeTraits::RampHoldRamp>>;

    using MiddleLevel =
        Pick<stage.middleLevel, NullIterator<Envelope>, FixedLevelApplyingIterator<Envelope>, Envelope>;

    using OuterLevel = Pick<fields.levelStage, NullIterator<MiddleLevel>, DynamicLevel<MiddleLevel>,
                            FixedLevelApplyingIterator<MiddleLevel>>;

    using Conversion =
        Pick<fields.srcStage, OuterLevel, LinearSRCIterator<OuterLevel>, FilteringSRCIterator<OuterLevel>>;
};

/// The whole chain of a mode.
template <int N>
using Chain = typename ChainLayers<N>::Conversion;

} // namespace Aud::Render

#pragma once

#include "loop_modes/ChainLayers.hpp"
#include "loop_modes/IteratorCreationParams.hpp"

#include <cstdint>

namespace Aud::Render {

/// Builds the chain of one mode. The one place that reads the host's record: everything that the mode needs
/// is read before the first layer is built, because a host operation may change the record while the chain
/// grows.
///
/// Layers are built inner to outer. Each copies the layer below, which is destroyed once copied.
template <int N>
class SourceIteratorMaker {
public:
    /// Throws what the host's operations throw, and Orv::Exception::RuntimeError where the envelope's
    /// parameters do not suit the mode. Out of line, because fourteen render functions share one maker.
    [[gnu::used, gnu::noinline]] static Chain<N> makeIterator(IteratorCreationParams& params) {
        if constexpr (isTwinOfEvenCode(N))
            return SourceIteratorMaker<N - 1>::makeIterator(params);
        else
            return SourceIteratorMaker(params).makeConversion();
    }

private:
    using Layers = ChainLayers<N>;
    static constexpr ModeFields fields = decodeModeCode(N);
    static constexpr EnvelopeStage stage = envelopeStages[fields.envelopeStage];
    static constexpr bool forward = fields.direction == Direction::forward;
    static constexpr bool linear = fields.srcStage == ConversionStage::linear;
    static constexpr bool filtering = fields.srcStage == ConversionStage::filtering;

    explicit SourceIteratorMaker(const IteratorCreationParams& params)
        : record_(*params.source), cache_(*params.cache), gearing_(*params.gearing),
          flag_(*params.requestFlag), startPosition_(readStartPosition(params)) {
        if constexpr (forward)
            forwardArgument_ = *params.forwardArgument;
        if constexpr (stage.envelope != EnvelopeKind::none)
            envelope_ = record_.envelope;
        if constexpr (stage.middleLevel == MiddleLevelKind::fixed)
            middleLevelUValue_ = record_.envelope.levelUValue;
        if constexpr (fields.levelStage == LevelStage::fixed)
            outerLevelUValue_ = record_.outerLevelUValue;
        if constexpr (linear || filtering)
            subSampleStart_ = *params.subSampleStart;
        if constexpr (linear)
            subSampleStep_ = *params.subSampleStep;
        if constexpr (filtering)
            speed_ = *params.speed;
    }

    static std::int64_t readStartPosition(const IteratorCreationParams& params) {
        if constexpr (filtering)
            // No plus one here, in neither direction.
            return forward ? *params.forwardFilteringStartPosition : *params.reverseFilteringStartPosition;
        else if constexpr (forward)
            return *params.startPosition;
        else
            // The plus one is part of the contract with the host.
            return wrappingSum(*params.startPosition, std::int64_t{1});
    }

    [[gnu::always_inline]] typename Layers::Source makeSource() const {
        const Cookie cookie = record_.strip.get_strip_cookie();
        if constexpr (forward)
            return {cookie, startPosition_, flag_, cache_, forwardArgument_, !flag_, gearing_};
        else
            return {cookie, startPosition_, flag_, cache_, !flag_, gearing_};
    }

    [[gnu::always_inline]] typename Layers::Filter makeFilter() const {
        const typename Layers::Source source = makeSource();
        if constexpr (fields.filterStage == FilterStage::equaliser)
            return {source, &record_.equaliser};
        else
            return typename Layers::Filter(source);
    }

    [[gnu::always_inline]] typename Layers::Envelope makeEnvelope() const {
        using Filter = typename Layers::Filter;
        using Envelope = typename Layers::Envelope;
        if constexpr (stage.envelope == EnvelopeKind::none) {
            return makeFilter();
        } else {
            using Shape = typename Envelope::Shape;
            const Filter filter = makeFilter();
            // Passes a copy: taking the member's address would keep the maker in memory.
            const EnvelopeParameters envelope = envelope_;
            if constexpr (stage.envelope >= EnvelopeKind::rampHold)
                return EnvelopeApplyingIteratorMaker<Filter, Shape>::make(filter, envelope);
            else
                return Envelope(filter, Shape(envelope));
        }
    }

    [[gnu::always_inline]] typename Layers::MiddleLevel makeMiddleLevel() const {
        using MiddleLevel = typename Layers::MiddleLevel;
        if constexpr (stage.middleLevel == MiddleLevelKind::absent) {
            return makeEnvelope();
        } else {
            const typename Layers::Envelope envelope = makeEnvelope();
            if constexpr (stage.middleLevel == MiddleLevelKind::fixed)
                return MiddleLevel(envelope, middleLevelUValue_);
            else
                return MiddleLevel(envelope);
        }
    }

    [[gnu::always_inline]] typename Layers::OuterLevel makeOuterLevel() const {
        using OuterLevel = typename Layers::OuterLevel;
        const typename Layers::MiddleLevel middleLevel = makeMiddleLevel();
        if constexpr (fields.levelStage == LevelStage::fixed)
            return OuterLevel(middleLevel, outerLevelUValue_);
        else if constexpr (fields.levelStage == LevelStage::dynamic)
            return OuterLevel(middleLevel, record_.dynamicLevel);
        else
            return OuterLevel(middleLevel);
    }

    [[gnu::always_inline]] typename Layers::Conversion makeConversion() const {
        using Conversion = typename Layers::Conversion;
        if constexpr (linear || filtering) {
            const typename Layers::OuterLevel outerLevel = makeOuterLevel();
            if constexpr (linear)
                return Conversion(outerLevel, subSampleStart_, subSampleStep_);
            else
                return Conversion(outerLevel, &record_.srcState, subSampleStart_, speed_);
        } else {
            return makeOuterLevel();
        }
    }

    PerSourceRecord& record_;
    SampleCache& cache_;
    const Orv::OutputGearing& gearing_;
    bool flag_;
    std::int64_t startPosition_;
    // From here on each member is set only in modes that read it.
    std::uint32_t forwardArgument_ = 0;
    EnvelopeParameters envelope_{};
    float middleLevelUValue_ = 0.0F;
    float outerLevelUValue_ = 0.0F;
    SubSamplePos subSampleStart_ = zeroSubSamplePos;
    SubSamplePos subSampleStep_ = zeroSubSamplePos;
    float speed_ = 0.0F;
};

} // namespace Aud::Render

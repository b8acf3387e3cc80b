#pragma once

#include "host/Biquad.hpp"
#include "host/DynamicLevel.hpp"
#include "host/Identity.hpp"
#include "host/OutputGearing.hpp"
#include "host/SampleCache.hpp"
#include "ole/Aud/EnvelopeParameters.hpp"
#include "ole/Aud/FilteringSRCState.hpp"
#include "ole/Aud/SubSamplePos.hpp"

#include <cstdint>

namespace Aud::Render {

/// What the host keeps for one source that it plays: settings, and the state that carries on from one render
/// call to the next. The order of the members is part of the contract.
struct PerSourceRecord {
    EnvelopeParameters envelope{};
    ce_handle strip;
    FilteringSRCState srcState;
    Filter::MultiBandBiquad<5U> equaliser;
    float outerLevelUValue = 1.0F;
    DynamicLevelControl::DynamicLevelApplyingIteratorState dynamicLevel;
};

/// One render request. All that it points to is the host's and outlives the call. The record itself is never
/// written, and a field that the mode does not read may be left unset.
struct IteratorCreationParams {
    PerSourceRecord* source = nullptr;
    /// Where the source starts; read by modes without the filtering converter.
    const std::int64_t* startPosition = nullptr;
    /// Handed to the cache iterator, which also gets its negation.
    const bool* requestFlag = nullptr;
    /// Handed to the forward cache iterator.
    const std::uint32_t* forwardArgument = nullptr;
    /// Where the source starts in forward modes with the filtering converter.
    const std::int64_t* forwardFilteringStartPosition = nullptr;
    /// Where the source starts in reverse modes with the filtering converter.
    const std::int64_t* reverseFilteringStartPosition = nullptr;
    /// Offset into the source. The filtering converter reads it only when it opens its resampler.
    const SubSamplePos* subSampleStart = nullptr;
    /// The linear converter's speed, in source samples per output sample.
    const SubSamplePos* subSampleStep = nullptr;
    /// The filtering converter's speed, in source samples per output sample.
    const float* speed = nullptr;
    const Orv::OutputGearing* gearing = nullptr;
    SampleCache* cache = nullptr;
};

static_assert(sizeof(IteratorCreationParams) == 11 * sizeof(void*));

} // namespace Aud::Render

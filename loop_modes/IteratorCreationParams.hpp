#pragma once

#include "contract/Biquad.hpp"
#include "contract/DynamicLevel.hpp"
#include "contract/Identity.hpp"
#include "contract/SampleCache.hpp"
#include "ole/Aud/EnvelopeParameters.hpp"
#include "ole/Aud/FilteringSRCState.hpp"
#include "ole/Aud/SubSamplePos.hpp"

#include <cstdint>

namespace Aud::Render {

/// What the host keeps for one source that it plays: settings of a call, and the state that carries on from
/// one render call to the next. The order of the members is part of the contract.
struct PerSourceRecord {
    EnvelopeParameters envelope{};
    ce_handle strip;
    FilteringSRCState srcState;
    Filter::MultiBandBiquad<5U> equaliser;
    float outerLevelUValue = 1.0F;
    DynamicLevelControl::DynamicLevelApplyingIteratorState dynamicLevel;
};

/// One render request. Everything that it points to belongs to the host and outlives the call. The renderer
/// writes neither this record nor what the pointers below `source` point to. A field that the mode does not
/// read may be left unset; the others are not tested for null.
/// \snippet modes.cpp call
struct IteratorCreationParams {
    PerSourceRecord* source = nullptr;
    /// The first sample of the call, in modes without the filtering converter. The maker hands a reverse
    /// iterator this plus one.
    const std::int64_t* startPosition = nullptr;
    /// Handed to the cache iterator, with its negation.
    const bool* requestFlag = nullptr;
    /// Handed to the forward cache iterator.
    const std::uint32_t* forwardArgument = nullptr;
    /// Handed unchanged to the iterator of a forward mode with the filtering converter: nextSourcePos of the
    /// call before.
    const std::int64_t* forwardFilteringStartPosition = nullptr;
    /// The same in reverse. Unchanged here, too: a host whose reverse iterator takes the exclusive end of
    /// what it reads adds the one to nextSourcePos itself.
    const std::int64_t* reverseFilteringStartPosition = nullptr;
    /// Offset into the source, read in modes with a converter. The filtering converter uses it only when it
    /// opens its resampler.
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

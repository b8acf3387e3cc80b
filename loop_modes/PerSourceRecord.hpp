#pragma once

#include "host/Biquad.hpp"
#include "host/DynamicLevel.hpp"
#include "host/Identity.hpp"
#include "ole/Aud/EnvelopeParameters.hpp"
#include "ole/Aud/FilteringSRCState.hpp"

namespace Aud::Render {

/// What the host keeps for one source that it plays: settings, and the state that carries on from one render
/// call to the next. The order of the members is part of the contract.
struct PerSourceRecord {
    EnvelopeParameters envelope{};
    ce_handle strip;
    FilteringSRCState srcState;
    Filter::MultiBandBiquad<5u> equaliser;
    float outerLevelUValue = 1.0F;
    DynamicLevelControl::DynamicLevelApplyingIteratorState dynamicLevel;
};

} // namespace Aud::Render

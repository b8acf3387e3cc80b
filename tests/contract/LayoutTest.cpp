// The layouts that are compiled into the library, as numbers. The library and its tests share the headers, so
// only numbers notice when two members change places, which would break every host that exists. To compile is
// to pass.

#include "contract/DynamicLevel.hpp"
#include "contract/GainCurveNodes.hpp"
#include "loop_modes/IteratorCreationParams.hpp"

#include <cstddef>

namespace {

using namespace Aud::Render;
using LevelState = Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState;
using Aud::GainCurve::CurveNode;
using Forward = Aud::SampleCache::ForwardIterator;
using Reverse = Aud::SampleCache::ReverseIterator;

#define EXPECT_AT(offset, type, member) static_assert(offsetof(type, member) == (offset))

// The contract with every host. These numbers never change.

EXPECT_AT(0, IteratorCreationParams, source);
EXPECT_AT(8, IteratorCreationParams, startPosition);
EXPECT_AT(16, IteratorCreationParams, requestFlag);
EXPECT_AT(24, IteratorCreationParams, forwardArgument);
EXPECT_AT(32, IteratorCreationParams, forwardFilteringStartPosition);
EXPECT_AT(40, IteratorCreationParams, reverseFilteringStartPosition);
EXPECT_AT(48, IteratorCreationParams, subSampleStart);
EXPECT_AT(56, IteratorCreationParams, subSampleStep);
EXPECT_AT(64, IteratorCreationParams, speed);
EXPECT_AT(72, IteratorCreationParams, gearing);
EXPECT_AT(80, IteratorCreationParams, cache);
static_assert(sizeof(IteratorCreationParams) == 88);

EXPECT_AT(0, EnvelopeParameters, elapsed);
EXPECT_AT(4, EnvelopeParameters, startUValue);
EXPECT_AT(8, EnvelopeParameters, levelUValue);
EXPECT_AT(12, EnvelopeParameters, type);
EXPECT_AT(16, EnvelopeParameters, oneRamp.step);
EXPECT_AT(20, EnvelopeParameters, oneRamp.length);
EXPECT_AT(24, EnvelopeParameters, oneRamp.curveType);
EXPECT_AT(16, EnvelopeParameters, twoRamps.firstRampStep);
EXPECT_AT(20, EnvelopeParameters, twoRamps.lastRampStep);
EXPECT_AT(24, EnvelopeParameters, twoRamps.firstRampLength);
EXPECT_AT(28, EnvelopeParameters, twoRamps.holdLength);
EXPECT_AT(32, EnvelopeParameters, twoRamps.firstRampCurve);
EXPECT_AT(36, EnvelopeParameters, twoRamps.lastRampCurve);
static_assert(sizeof(EnvelopeParameters) == 40);

EXPECT_AT(0, FilteringSRCState, handle);
EXPECT_AT(8, FilteringSRCState, factor);
EXPECT_AT(16, FilteringSRCState, outSample);
EXPECT_AT(20, FilteringSRCState, sourceBlock);
EXPECT_AT(276, FilteringSRCState, readIndex);
EXPECT_AT(280, FilteringSRCState, nextSourcePos);
EXPECT_AT(288, FilteringSRCState, positionRecorded);
EXPECT_AT(289, FilteringSRCState, opened);
static_assert(sizeof(FilteringSRCState) == 296);

EXPECT_AT(0, Aud::SubSamplePos, sample);
EXPECT_AT(8, Aud::SubSamplePos, fraction);
static_assert(sizeof(Aud::SubSamplePos) == 16);

EXPECT_AT(0, CurveNode, uValue);
EXPECT_AT(4, CurveNode, magnitude);
EXPECT_AT(8, CurveNode, slope);
static_assert(sizeof(CurveNode) == 16);

static_assert(sizeof(Orv::UUID) == 16 && offsetof(Cookie, channel) == 16 && offsetof(Cookie, kind) == 18);

// Where host storage lies before or between. Another host's numbers may differ: change them with
// contract/HostStorage.hpp, and rebuild the library.

EXPECT_AT(24, LevelState, samplesToNextNode);
EXPECT_AT(28, LevelState, uValue);
EXPECT_AT(32, LevelState, uValueStep);
EXPECT_AT(36, LevelState, stationary);
static_assert(sizeof(LevelState) == 40);

EXPECT_AT(0, PerSourceRecord, envelope);
EXPECT_AT(40, PerSourceRecord, strip);
EXPECT_AT(64, PerSourceRecord, srcState);
EXPECT_AT(368, PerSourceRecord, equaliser);
EXPECT_AT(768, PerSourceRecord, outerLevelUValue);
EXPECT_AT(776, PerSourceRecord, dynamicLevel);

static_assert(sizeof(Aud::Filter::Biquad) == 80);
static_assert(sizeof(Aud::SampleCacheSegment) == 8);
static_assert(sizeof(ce_handle) == 20);
static_assert(sizeof(Cookie) == 20);

} // namespace

namespace Aud::Render {

/// Stands in for the renderer's reader, to which the source iterators open their members.
struct SampleReader {
    EXPECT_AT(0, Forward, identity);
    EXPECT_AT(20, Forward, segmentIndex);
    EXPECT_AT(24, Forward, cachePosition);
    EXPECT_AT(32, Forward, materialLength);
    EXPECT_AT(40, Forward, currentSegment);
    EXPECT_AT(48, Forward, hostMaterial);
    EXPECT_AT(56, Forward, waitForSegment);
    EXPECT_AT(60, Forward, hostSegmentsAhead);
    EXPECT_AT(64, Forward, hostHeldSegments);
    EXPECT_AT(88, Forward, hostFlags);
    EXPECT_AT(92, Forward, hostSegmentNumber);
    EXPECT_AT(96, Forward, hostReach);
    static_assert(sizeof(Forward) == 104);

    EXPECT_AT(0, Reverse, identity);
    EXPECT_AT(20, Reverse, segmentIndex);
    EXPECT_AT(24, Reverse, cachePosition);
    EXPECT_AT(32, Reverse, materialLength);
    EXPECT_AT(40, Reverse, currentSegment);
    EXPECT_AT(48, Reverse, hostMaterial);
    EXPECT_AT(56, Reverse, waitForSegment);
    EXPECT_AT(57, Reverse, hostFlags);
    EXPECT_AT(60, Reverse, hostSegmentNumber);
    EXPECT_AT(64, Reverse, hostReach);
    static_assert(sizeof(Reverse) == 72);
};

} // namespace Aud::Render

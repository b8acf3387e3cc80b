// Small units, where a sweep over whole chains would not say what is wrong.

#include "loop_modes/ChainLayers.hpp"
#include "loop_modes/IteratorCreationParams.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "model/ModelModes.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <typeindex>
#include <utility>

namespace Test {
namespace {

using Aud::SubSamplePos;
using namespace Aud::Render;
using Forward = Aud::SampleCache::ForwardIterator;
using Reverse = Aud::SampleCache::ReverseIterator;
template <class Inner>
using Fixed = FixedLevelApplyingIterator<Inner>;
template <class Inner, class Traits>
using Envelope = EnvelopeApplyingIterator<Inner, Traits>;
using LogRamp = EnvelopeTraits::SimpleRamp<Aud::GainCurve::eMixerStyleLog>;
namespace Dynamic = Aud::DynamicLevelControl;

template <int N, class Expected>
constexpr bool chainIs = std::is_same_v<Chain<N>, Expected>;

static_assert(chainIs<0, NullIterator<NullIterator<NullIterator<Reverse>>>>);
static_assert(chainIs<1024, NullIterator<NullIterator<NullIterator<Forward>>>>);
static_assert(chainIs<66, FilteringSRCIterator<NullIterator<Fixed<NullIterator<Reverse>>>>>);
static_assert(
    chainIs<72, FilteringSRCIterator<NullIterator<Fixed<Envelope<NullIterator<Reverse>, LogRamp>>>>>);
static_assert(chainIs<292, LinearSRCIterator<Dynamic::ReverseDynamicLevelApplyingIterator<
                               Envelope<NullIterator<Reverse>, LogRamp>>>>);
static_assert(chainIs<293, LinearSRCIterator<Dynamic::ForwardsDynamicLevelApplyingIterator<
                               Envelope<NullIterator<Reverse>, LogRamp>>>>);
static_assert(chainIs<1603, FilteringSRCIterator<Fixed<Fixed<NullIterator<Forward>>>>>);
static_assert(
    chainIs<1751, FilteringSRCIterator<Fixed<Fixed<
                      Envelope<MultiBandBiquadApplyingIterator<Forward>, EnvelopeTraits::RampHoldRamp>>>>>);
static_assert(std::is_same_v<Chain<64>, Chain<65>> && !std::is_same_v<Chain<320>, Chain<321>>);

template <std::size_t... Place>
std::set<std::type_index> distinctChains(std::index_sequence<Place...>) {
    return {std::type_index(typeid(Chain<static_cast<int>(registrationOrder[Place])>*))...};
}

TEST(ModeCode, NamesFiveHundredAndSeventySixDistinctChains) {
    EXPECT_EQ(distinctChains(std::make_index_sequence<validModeCount>()).size(), 576U);
}

TEST(ModeCode, IsValidWhereNoTernaryDigitIsThree) {
    unsigned int valid = 0;
    for (unsigned int code = 0; code < 4096; ++code) {
        EXPECT_EQ(isValidModeCode(code), code < 1752 && modelIsValid(code)) << code;
        valid += isValidModeCode(code);
    }
    EXPECT_EQ(valid, 864U);
    EXPECT_FALSE(isValidModeCode(static_cast<unsigned long>(-1)));
}

TEST(ModeCode, DecodesToFieldsThatEncodeToIt) {
    const ModeFields fields{.direction = Direction::forward,
                            .levelStage = LevelStage::fixed,
                            .filterStage = FilterStage::none,
                            .srcStage = ConversionStage::filtering,
                            .envelopeStage = 1,
                            .dynamicLevelDirection = DynamicLevelDirection::forwards};
    EXPECT_EQ(decodeModeCode(1603), fields);
    for (unsigned int code = 0; code < 2048; ++code)
        EXPECT_EQ(encodeModeCode(decodeModeCode(code)), code);
}

TEST(ModeCode, IsRegisteredInTheOrderOfTheModel) {
    EXPECT_TRUE(std::equal(registrationOrder.begin(), registrationOrder.end(),
                           modelRegistrationOrder().begin(), modelRegistrationOrder().end()));
}

// The host reaches these through its own layout.
static_assert(offsetof(FilteringSRCState, factor) == 8 && offsetof(FilteringSRCState, outSample) == 16 &&
              offsetof(FilteringSRCState, sourceBlock) == 20 &&
              offsetof(FilteringSRCState, readIndex) == 276 &&
              offsetof(FilteringSRCState, nextSourcePos) == 280 &&
              offsetof(FilteringSRCState, positionRecorded) == 288 &&
              offsetof(FilteringSRCState, opened) == 289);
static_assert(offsetof(SubSamplePos, sample) == 0 && offsetof(SubSamplePos, fraction) == 8);
static_assert(offsetof(PerSourceRecord, envelope) == 0 && offsetof(PerSourceRecord, strip) == 40);

constexpr int one = 1073741823;

TEST(SubSamplePos, NormalisesWithTheBorrowRule) {
    const auto is = [](const SubSamplePos& position, std::int64_t sample, std::int32_t fraction) {
        return position.sample == sample && position.fraction == fraction;
    };
    EXPECT_TRUE(is({0, one}, 1, 0));
    EXPECT_TRUE(is({0, one - 1}, 0, one - 1));
    EXPECT_TRUE(is({0, 2147483647}, 2, 1));
    EXPECT_TRUE(is({3, -one}, 2, 0));
    EXPECT_TRUE(is({5, -1}, 4, 1));
    EXPECT_TRUE(is({0, -one - 5}, -2, 5));
    EXPECT_TRUE(is({0, -2147483647 - 1}, -3, 2));
}

TEST(SubSamplePos, AddsAsTheConstructorNormalises) {
    SubSamplePos sum(0, one - 1);
    sum += SubSamplePos(0, one - 1);
    EXPECT_EQ(sum, SubSamplePos(1, one - 2));
    SubSamplePos twice(0, 536870912);
    twice += SubSamplePos(0, 536870912);
    EXPECT_EQ(twice, SubSamplePos(1, 1));
    // What a host put together by hand is normalised too.
    for (int first : {0, 1, one - 1, one, -1, -one, 2147483647, -2147483647})
        for (int second : {0, 1, one - 1, -1, -one, 536870912}) {
            SubSamplePos position(7, 0);
            position.fraction = first;
            SubSamplePos distance(2, 0);
            distance.fraction = second;
            position += distance;
            const auto wrapped = static_cast<std::int32_t>(static_cast<std::uint32_t>(first) +
                                                           static_cast<std::uint32_t>(second));
            EXPECT_EQ(position, SubSamplePos(9, wrapped)) << first << " + " << second;
        }
}

TEST(SubSamplePos, ComparesWholeSamplesFirst) {
    EXPECT_LT(SubSamplePos(-1, 5), SubSamplePos(0, 0));
    EXPECT_GT(SubSamplePos(1, 0), SubSamplePos(0, one - 1));
    EXPECT_GT(SubSamplePos(1, 2), SubSamplePos(1, 1));
    EXPECT_FALSE(SubSamplePos(0, 0) > Aud::zeroSubSamplePos);
}

} // namespace
} // namespace Test

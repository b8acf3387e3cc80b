#include "loop_modes/ChainLayers.hpp"

#include "loop_modes/RegistrationOrder.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <typeindex>
#include <utility>

namespace audlmd::test {
namespace {

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

TEST(ChainLayers, AreFiveHundredAndSeventySixDistinctChains) {
    EXPECT_EQ(distinctChains(std::make_index_sequence<validModeCount>()).size(), 576U);
}

} // namespace
} // namespace audlmd::test

// The state of the envelope layers, byte by byte: a host may hold one, and so may code that was compiled
// against an earlier version of the headers.

#include "ole/Aud/Aud__RenderIterators"
#include "tests/scripted_host/ScriptedHost.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <dlfcn.h>
#include <string>
#include <tuple>
#include <utility>

// Made by the library, not by this program.
#define MADE_BY_THE_LIBRARY(Filter, Source)                                                                  \
    extern template struct Aud::Render::EnvelopeApplyingIteratorMaker<                                       \
        Aud::Render::Filter<Aud::SampleCache::Source>, Aud::Render::EnvelopeTraits::RampHold>;               \
    extern template struct Aud::Render::EnvelopeApplyingIteratorMaker<                                       \
        Aud::Render::Filter<Aud::SampleCache::Source>, Aud::Render::EnvelopeTraits::HoldRamp>;               \
    extern template struct Aud::Render::EnvelopeApplyingIteratorMaker<                                       \
        Aud::Render::Filter<Aud::SampleCache::Source>, Aud::Render::EnvelopeTraits::RampHoldRamp>
MADE_BY_THE_LIBRARY(NullIterator, ReverseIterator);
MADE_BY_THE_LIBRARY(NullIterator, ForwardIterator);
MADE_BY_THE_LIBRARY(MultiBandBiquadApplyingIterator, ReverseIterator);
MADE_BY_THE_LIBRARY(MultiBandBiquadApplyingIterator, ForwardIterator);

namespace audlmd::test {
namespace {

using namespace Aud::Render;
using namespace Aud::Render::EnvelopeTraits;

const void* exportedCurve(std::uint32_t type) {
    void* const library = dlopen("libaudlmd.so", RTLD_NOW | RTLD_NOLOAD);
    const std::string name =
        "_ZN3Aud9GainCurve5CurveILNS0_10eCurveTypeE" + std::to_string(type) + "EE20mapUValueToMagnitudeEf";
    const void* const curve = library == nullptr ? nullptr : dlsym(library, name.c_str());
    EXPECT_NE(curve, nullptr) << name;
    return curve;
}

/// The number at a place in the state of a layer, behind the layer below.
template <class Number, class Inner, class Shape>
Number at(std::size_t offset, const EnvelopeApplyingIterator<Inner, Shape>& layer) {
    static_assert(sizeof layer == sizeof(Inner) + sizeof(Shape) && sizeof(Inner) % alignof(Shape) == 0);
    Number number{};
    std::memcpy(&number, reinterpret_cast<const std::byte*>(&layer) + sizeof(Inner) + offset, sizeof number);
    return number;
}

static_assert(sizeof(RampHold) == 24 && sizeof(HoldRamp) == 24 && sizeof(RampHoldRamp) == 40);
static_assert(sizeof(SimpleRamp<Aud::GainCurve::eMixerStyleLog>) == 8);

template <class Shape, class Inner>
void expectOneRamp(const Inner& inner, const EnvelopeParameters& fade, float uValue) {
    const auto layer = EnvelopeApplyingIteratorMaker<Inner, Shape>::make(inner, fade);
    EXPECT_EQ(std::tuple(at<float>(0, layer), at<float>(4, layer), at<std::uint32_t>(8, layer)),
              std::tuple(uValue, 0.5F, 3U));
    EXPECT_EQ(at<const void*>(16, layer), exportedCurve(fade.oneRamp.curveType));
}

template <class Inner>
void expectState(const Inner& inner) {
    using Ramp = SimpleRamp<Aud::GainCurve::eConstantPower>;
    for (std::uint32_t curve = 1; curve <= 3; ++curve) {
        SCOPED_TRACE(curve);
        const std::uint32_t other = curve % 3 + 1;
        EnvelopeParameters fade{1, 0.25F, 0.0F, eRampHold, {.oneRamp{0.5F, 4, curve, {}}}};
        expectOneRamp<RampHold>(inner, fade, 0.75F);
        const EnvelopeApplyingIterator<Inner, Ramp> ramp(inner, Ramp(fade));
        EXPECT_EQ(std::pair(at<float>(0, ramp), at<float>(4, ramp)), std::pair(0.75F, 0.5F));
        fade.type = eHoldRamp;
        expectOneRamp<HoldRamp>(inner, fade, 0.25F);
        fade = {1, 0.25F, 0.0F, eRampHoldRamp, {.twoRamps{0.5F, -0.125F, 4, 9, curve, other}}};
        const auto two = EnvelopeApplyingIteratorMaker<Inner, RampHoldRamp>::make(inner, fade);
        EXPECT_EQ(std::tuple(at<float>(0, two), at<float>(4, two), at<float>(8, two),
                             at<std::uint32_t>(12, two), at<std::uint32_t>(16, two)),
                  std::tuple(0.75F, 0.5F, -0.125F, 3U, 9U));
        EXPECT_EQ(std::pair(at<const void*>(24, two), at<const void*>(32, two)),
                  std::pair(exportedCurve(curve), exportedCurve(other)));
    }
}

TEST(StoredShapes, HoldTheExportedCurvesAtTheirPlaces) {
    class Cache final : public Aud::SampleCache {
    } cache;
    const Orv::OutputGearing gearing{};
    ScriptedHost host;
    PerSourceRecord record;
    host.cache = &cache;
    host.gearing = &gearing;
    host.record = &record;
    ScriptedHost::current = &host;
    {
        const Aud::SampleCache::ReverseIterator reverse(ScriptedHost::cookie, 0, false, cache, true, gearing);
        const Aud::SampleCache::ForwardIterator forward(ScriptedHost::cookie, 0, false, cache, 0, true,
                                                        gearing);
        expectState(NullIterator(reverse));
        expectState(NullIterator(forward));
        expectState(MultiBandBiquadApplyingIterator(reverse, &record.equaliser));
        expectState(MultiBandBiquadApplyingIterator(forward, &record.equaliser));
    }
    EXPECT_EQ(host.holders, 0) << "the library's copies give their segments back";
    ScriptedHost::current = nullptr;
}

} // namespace
} // namespace audlmd::test

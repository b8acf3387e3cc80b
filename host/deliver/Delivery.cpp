#include "host/deliver/Delivery.hpp"

#include "host/deliver/TriangularNoise.hpp"
#include "host/signal/Unclipped.hpp"
#include "ole/Aud/SampleEncoding.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/deliver/Delivery.cpp"
#include "host/signal/Wide.ipp"
// After the file above.
#include "host/signal/WideEncoding.ipp"

#ifndef AUDLMD_DELIVERY
#define AUDLMD_DELIVERY
namespace audlmd {
namespace {

/// Of full scale, one more than the largest integer. Not for s32, whose integers no float holds.
template <class Format>
constexpr float stepsOf = 0x1p23F;
template <>
constexpr float stepsOf<Aud::SampleS8> = 0x1p7F;
template <>
constexpr float stepsOf<Aud::SampleU8> = 0x1p7F;
template <>
constexpr float stepsOf<Aud::SampleS16> = 0x1p15F;

/// The integer that silence is stored as.
template <class Format>
constexpr int middleOf = std::is_same_v<Format, Aud::SampleU8> ? 128 : 0;

/// Rounds to a format by vectors of one width. `noise` is null where there is none.
template <class Format>
struct RoundingTo {
    void (*store)(const float* samples, std::size_t count, TriangularNoise* noise, Format* out);
};
struct Roundings {
    std::tuple<RoundingTo<Aud::SampleS8>, RoundingTo<Aud::SampleU8>, RoundingTo<Aud::SampleS16>,
               RoundingTo<Aud::SampleS24>, RoundingTo<Aud::SampleS24In32>, RoundingTo<Aud::SampleS32>>
        to;
    /// The samples become the sums.
    void (*addTo32)(float* samples, std::size_t count, TriangularNoise* noise, Aud::SampleS32* out);
};

} // namespace
} // namespace audlmd
#endif

HWY_BEFORE_NAMESPACE();
namespace audlmd::HWY_NAMESPACE {
namespace {

/// For one vector.
struct Noise {
    HWY_ALIGN float steps[lanes];
};

HWY_INLINE Integers nearest(Floats x, float steps) {
    const Floats clipped = clip(withoutNaN(x), -1.0F, (steps - 1.0F) / steps);
    return toNearest(hn::Mul(clipped, hn::Set(floats, steps)));
}

/// The noise is added to what the integer leaves over, because in a large product it would lose its bits.
HWY_INLINE Integers dithered(Floats x, Floats noise, float steps) {
    const Floats product = hn::Mul(clip(withoutNaN(x), -2.0F, 2.0F), hn::Set(floats, steps));
    const Integers whole = hn::ConvertTo(integers, product);
    const Floats rest = hn::Sub(product, hn::ConvertTo(floats, whole));
    const Integers rounded = hn::Add(whole, toNearest(hn::Add(rest, noise)));
    return toNearest(clip(hn::ConvertTo(floats, rounded), -steps, steps - 1.0F));
}

template <class Format>
struct VectorRounding {
    HWY_INLINE static void deliver(const float* samples, const Noise* noise, Format* out) {
        const Floats x = hn::LoadU(floats, samples);
        const Integers rounded = noise == nullptr
                                     ? nearest(x, stepsOf<Format>)
                                     : dithered(x, hn::Load(floats, noise->steps), stepsOf<Format>);
        WideEncoding<Format>::put(hn::Add(rounded, hn::Set(integers, middleOf<Format>)), out);
    }
};

/// In double precision. Samples that are not const become the sums with what is there.
template <>
struct VectorRounding<Aud::SampleS32> {
    template <class Sample>
    HWY_INLINE static void deliver(Sample* samples, const Noise* noise, Aud::SampleS32* out) {
        for (std::size_t n = 0; n < lanes; n += halfLanes)
            deliverHalf(samples + n, noise == nullptr ? nullptr : noise->steps + n,
                        reinterpret_cast<std::int32_t*>(out + n));
    }

private:
    template <class Sample>
    HWY_INLINE static void deliverHalf(Sample* samples, const float* noise, std::int32_t* out) {
        Doubles x = hn::Mul(widened(samples), hn::Set(doubles, 0x1p31));
        if constexpr (!std::is_const_v<Sample>) {
            x = hn::Add(x, hn::PromoteTo(doubles, hn::LoadU(halfOfIntegers, out)));
            hn::StoreU(narrowed(hn::Mul(x, hn::Set(doubles, 0x1p-31))), halfOfFloats, samples);
        }
        x = hn::IfThenElseZero(hn::Eq(x, x), x);
        if (noise != nullptr)
            x = hn::Add(x, widened(noise));
        const Doubles clipped =
            hn::Max(hn::Set(doubles, -0x1p31), hn::Min(hn::Set(doubles, 0x1p31 - 1.0), x));
        hn::StoreU(hn::DemoteTo(halfOfIntegers, toNearest(clipped)), halfOfIntegers, out);
    }

    HWY_INLINE static Doubles toNearest(Doubles x) {
#if HWY_TARGET == HWY_SCALAR
        return hn::Set(doubles, std::nearbyint(hn::GetLane(x)));
#else
        return hn::Round(x);
#endif
    }

    HWY_INLINE static Doubles widened(const float* x) {
        return hn::PromoteTo(doubles, hn::LoadU(halfOfFloats, x));
    }
};

/// Delivers vector by vector. The samples that do not fill a vector go through a vector of their own.
template <class Sample, class Format>
void roundAll(Sample* samples, std::size_t count, TriangularNoise* noise, Format* out) {
    const auto deliver = [noise](Sample* from, Format* to) HWY_ATTR {
        Noise steps;
        if (noise != nullptr)
            for (float& step : steps.steps)
                step = noise->next();
        VectorRounding<Format>::deliver(from, noise == nullptr ? nullptr : &steps, to);
    };
    for (; count >= lanes; count -= lanes, samples += lanes, out += lanes)
        deliver(samples, out);
    float rest[lanes]{};
    Format containers[lanes]{};
    std::copy_n(samples, count, rest);
    std::copy_n(out, count, containers);
    deliver(rest, containers);
    std::copy_n(containers, count, out);
    if constexpr (!std::is_const_v<Sample>)
        std::copy_n(rest, count, samples);
}

const Roundings& roundings() {
    static constexpr Roundings all{.to = {{&roundAll<const float, Aud::SampleS8>},
                                          {&roundAll<const float, Aud::SampleU8>},
                                          {&roundAll<const float, Aud::SampleS16>},
                                          {&roundAll<const float, Aud::SampleS24>},
                                          {&roundAll<const float, Aud::SampleS24In32>},
                                          {&roundAll<const float, Aud::SampleS32>}},
                                   .addTo32 = &roundAll<float, Aud::SampleS32>};
    return all;
}

} // namespace
} // namespace audlmd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace audlmd {
namespace {

HWY_EXPORT(roundings);

template <class Round, class Sample, class Format>
void round(Round&& with, std::span<Sample> samples, Format* out, Rounding rounding, OutputPlace place) {
    TriangularNoise noise(place.channel, place.position);
    with(samples.data(), samples.size(), rounding == Rounding::dithered ? &noise : nullptr, out);
}

} // namespace

template <class Format>
void storeBlock(std::span<const float> samples, Format* containers, Rounding rounding, OutputPlace place) {
    if (rounding == Rounding::truncated)
        convertBlock(samples.data(), samples.size(), containers);
    else if constexpr (std::is_same_v<Format, Aud::SampleF32>)
        std::memcpy(containers, samples.data(), samples.size_bytes());
    else
        round(std::get<RoundingTo<Format>>(HWY_DYNAMIC_DISPATCH(roundings)().to).store, samples, containers,
              rounding, place);
}

template <class Format>
void addBlock(std::span<float> samples, Format* containers, Rounding rounding, OutputPlace place) {
    if constexpr (std::is_same_v<Format, Aud::SampleS32>)
        if (rounding != Rounding::truncated)
            return round(HWY_DYNAMIC_DISPATCH(roundings)().addTo32, samples, containers, rounding, place);
    addStored(containers, samples);
    storeBlock<Format>(samples, containers, rounding, place);
}

namespace {

/// The addresses keep the functions of all formats in this object.
template <class... Format>
constexpr std::tuple deliveriesOf{std::pair{&storeBlock<Format>, &addBlock<Format>}...};
[[gnu::used]] constexpr auto deliveries =
    deliveriesOf<Aud::SampleF32, Aud::SampleS8, Aud::SampleU8, Aud::SampleS16, Aud::SampleS24,
                 Aud::SampleS24In32, Aud::SampleS32>;

} // namespace
} // namespace audlmd
#endif

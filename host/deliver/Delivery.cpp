#include "host/deliver/Delivery.hpp"

#include "host/deliver/TriangularNoise.hpp"
#include "host/signal/PackedEncoding.hpp"
#include "host/signal/Unclipped.hpp"

#include <algorithm>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <utility>

namespace audlmd {
namespace {

/// For one pack.
struct Noise {
    alignas(16) float steps[packLength];
};

/// Of full scale, one more than the largest integer. Not for s32, whose integers no float holds.
template <class Format>
constexpr float stepsOf = 0x1p23F;
template <>
constexpr float stepsOf<Aud::SampleS8> = 0x1p7F;
template <>
constexpr float stepsOf<Aud::SampleU8> = 0x1p7F;
template <>
constexpr float stepsOf<Aud::SampleS16> = 0x1p15F;

PackedIntegers nearest(const PackedFloats& samples, float steps) {
    return Packed::eachInteger(samples, [=](__m128 x) {
        const __m128 clipped = Packed::clip(Packed::withoutNaN(x), -1.0F, (steps - 1.0F) / steps);
        return _mm_cvtps_epi32(_mm_mul_ps(clipped, _mm_set1_ps(steps)));
    });
}

/// The noise is added to what the integer leaves over, because in a large product it would lose its bits.
__m128i dithered(__m128 x, __m128 noise, float steps) {
    const __m128 product = _mm_mul_ps(Packed::clip(Packed::withoutNaN(x), -2.0F, 2.0F), _mm_set1_ps(steps));
    const __m128i whole = _mm_cvttps_epi32(product);
    const __m128 rest = _mm_sub_ps(product, _mm_cvtepi32_ps(whole));
    const __m128i rounded = _mm_add_epi32(whole, _mm_cvtps_epi32(_mm_add_ps(rest, noise)));
    return _mm_cvtps_epi32(Packed::clip(_mm_cvtepi32_ps(rounded), -steps, steps - 1.0F));
}

/// `noise` is null where there is none.
template <class Format>
[[gnu::always_inline]] inline void storePack(const float* samples, const Noise* noise, Format* out) {
    constexpr float steps = stepsOf<Format>;
    const PackedFloats x = Packed::load(samples);
    PackedIntegers integers;
    if (noise == nullptr) {
        integers = nearest(x, steps);
    } else {
        const PackedFloats n = Packed::load(noise->steps);
        integers = {dithered(x.a, n.a, steps), dithered(x.b, n.b, steps), dithered(x.c, n.c, steps),
                    dithered(x.d, n.d, steps)};
    }
    if constexpr (std::is_same_v<Format, Aud::SampleU8>)
        for (__m128i* const four : {&integers.a, &integers.b, &integers.c, &integers.d})
            *four = _mm_add_epi32(*four, _mm_set1_epi32(128));
    PackedEncoding<Format>::put(integers, out);
}

/// In double precision, two at a time. Samples that are not const become the sums with what is there.
template <class Sample>
[[gnu::always_inline]] inline void deliverPack32(Sample* samples, const Noise* noise, Aud::SampleS32* out) {
    const auto two = [](const float* from) {
        return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from))));
    };
    for (std::size_t n = 0; n < packLength; n += 2) {
        auto* const container = reinterpret_cast<__m128i*>(out + n);
        __m128d x = _mm_mul_pd(two(samples + n), _mm_set1_pd(0x1p31));
        if constexpr (!std::is_const_v<Sample>) {
            x = _mm_add_pd(x, _mm_cvtepi32_pd(_mm_loadl_epi64(container)));
            const __m128 sums = _mm_cvtpd_ps(_mm_mul_pd(x, _mm_set1_pd(0x1p-31)));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(samples + n), _mm_castps_si128(sums));
        }
        x = _mm_and_pd(x, _mm_cmpord_pd(x, x));
        if (noise != nullptr)
            x = _mm_add_pd(x, two(noise->steps + n));
        const __m128d clipped = _mm_max_pd(_mm_set1_pd(-0x1p31), _mm_min_pd(_mm_set1_pd(0x1p31 - 1.0), x));
        _mm_storel_epi64(container, _mm_cvtpd_epi32(clipped));
    }
}

/// Delivers pack by pack. The samples that do not fill a pack go through a pack of their own.
template <auto Deliver, class Sample, class Format>
void eachPack(std::span<Sample> samples, Format* out, Rounding rounding, OutputPlace place) {
    TriangularNoise source(place.channel, place.position);
    const auto deliver = [&](Sample* in, Format* containers) {
        if (rounding == Rounding::nearest)
            return Deliver(in, nullptr, containers);
        Noise noise;
        for (float& step : noise.steps)
            step = source.next();
        Deliver(in, &noise, containers);
    };
    for (; samples.size() >= packLength; samples = samples.subspan(packLength), out += packLength)
        deliver(samples.data(), out);
    float rest[packLength]{};
    Format containers[packLength]{};
    std::ranges::copy(samples, rest);
    std::copy_n(out, samples.size(), containers);
    deliver(rest, containers);
    std::copy_n(containers, samples.size(), out);
    if constexpr (!std::is_const_v<Sample>)
        std::copy_n(rest, samples.size(), samples.begin());
}

} // namespace

template <class Format>
void storeBlock(std::span<const float> samples, Format* containers, Rounding rounding, OutputPlace place) {
    if (rounding == Rounding::truncated)
        convertBlock(samples.data(), samples.size(), containers);
    else if constexpr (std::is_same_v<Format, Aud::SampleF32>)
        std::memcpy(containers, samples.data(), samples.size_bytes());
    else if constexpr (std::is_same_v<Format, Aud::SampleS32>)
        eachPack<&deliverPack32<const float>>(samples, containers, rounding, place);
    else
        eachPack<&storePack<Format>>(samples, containers, rounding, place);
}

template <class Format>
void addBlock(std::span<float> samples, Format* containers, Rounding rounding, OutputPlace place) {
    if constexpr (std::is_same_v<Format, Aud::SampleS32>)
        if (rounding != Rounding::truncated)
            return eachPack<&deliverPack32<float>>(samples, containers, rounding, place);
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

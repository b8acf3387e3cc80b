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

/// The integer that silence is stored as.
template <class Format>
constexpr int middleOf = std::is_same_v<Format, Aud::SampleU8> ? 128 : 0;

[[gnu::always_inline]] inline __m128i nearest(__m128 x, float steps) {
    const __m128 clipped = Packed::clip(Packed::withoutNaN(x), -1.0F, (steps - 1.0F) / steps);
    return _mm_cvtps_epi32(_mm_mul_ps(clipped, _mm_set1_ps(steps)));
}

/// The noise is added to what the integer leaves over, because in a large product it would lose its bits.
[[gnu::always_inline]] inline __m128i dithered(__m128 x, __m128 noise, float steps) {
    const __m128 product = _mm_mul_ps(Packed::clip(Packed::withoutNaN(x), -2.0F, 2.0F), _mm_set1_ps(steps));
    const __m128i whole = _mm_cvttps_epi32(product);
    const __m128 rest = _mm_sub_ps(product, _mm_cvtepi32_ps(whole));
    const __m128i rounded = _mm_add_epi32(whole, _mm_cvtps_epi32(_mm_add_ps(rest, noise)));
    return _mm_cvtps_epi32(Packed::clip(_mm_cvtepi32_ps(rounded), -steps, steps - 1.0F));
}

/// `noise` is null where there is none.
template <class Format>
[[gnu::always_inline]] inline void storePack(const float* samples, const Noise* noise, Format* out) {
    const auto four = [&](std::size_t first) {
        const __m128 x = _mm_loadu_ps(samples + first);
        const __m128i rounded = noise == nullptr
                                    ? nearest(x, stepsOf<Format>)
                                    : dithered(x, _mm_load_ps(noise->steps + first), stepsOf<Format>);
        return _mm_add_epi32(rounded, _mm_set1_epi32(middleOf<Format>));
    };
    PackedEncoding<Format>::put({four(0), four(4), four(8), four(12)}, out);
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
template <class Sample, class Format, class Deliver>
void eachPack(std::span<Sample> samples, Format* out, Deliver deliver) {
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

template <auto Deliver, class Sample, class Format>
void round(std::span<Sample> samples, Format* out, Rounding rounding, OutputPlace place) {
    if (rounding == Rounding::nearest)
        return eachPack(samples, out, [](Sample* in, Format* to) { Deliver(in, nullptr, to); });
    TriangularNoise source(place.channel, place.position);
    eachPack(samples, out, [&source](Sample* in, Format* to) {
        Noise noise;
        for (float& step : noise.steps)
            step = source.next();
        Deliver(in, &noise, to);
    });
}

} // namespace

template <class Format>
void storeBlock(std::span<const float> samples, Format* containers, Rounding rounding, OutputPlace place) {
    if (rounding == Rounding::truncated)
        convertBlock(samples.data(), samples.size(), containers);
    else if constexpr (std::is_same_v<Format, Aud::SampleF32>)
        std::memcpy(containers, samples.data(), samples.size_bytes());
    else if constexpr (std::is_same_v<Format, Aud::SampleS32>)
        round<&deliverPack32<const float>>(samples, containers, rounding, place);
    else
        round<&storePack<Format>>(samples, containers, rounding, place);
}

template <class Format>
void addBlock(std::span<float> samples, Format* containers, Rounding rounding, OutputPlace place) {
    if constexpr (std::is_same_v<Format, Aud::SampleS32>)
        if (rounding != Rounding::truncated)
            return round<&deliverPack32<float>>(samples, containers, rounding, place);
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

#include "host/signal/Unclipped.hpp"

#include "host/signal/PackedEncoding.hpp"
#include "loop_modes/RegistrationOrder.hpp"

#include <algorithm>
#include <cstddef>
#include <tuple>

namespace audlmd {
namespace {

using Aud::Render::Summing;

template <class Format>
[[gnu::always_inline]] inline void deliverPack(const float* in, Format* out) {
    PackedEncoding<Format>::store(Packed::load(in), out);
}

/// Adds in single precision. Where a sample is a NaN, the sum is that NaN and not the one in the buffer: the
/// render functions do so, and an addition of two NaNs would leave the choice to the compiler.
template <class Format>
[[gnu::always_inline]] inline PackedFloats sumPack(const float* in, const Format* out) {
    const auto sum = [](__m128 x, __m128 there) {
        return _mm_add_ps(x, _mm_and_ps(there, _mm_cmpord_ps(x, x)));
    };
    const PackedFloats x = Packed::load(in);
    const PackedFloats there = PackedEncoding<Format>::load(out);
    return {sum(x.a, there.a), sum(x.b, there.b), sum(x.c, there.c), sum(x.d, there.d)};
}

template <class Format>
[[gnu::always_inline]] inline void addPack(const float* in, Format* out) {
    PackedEncoding<Format>::store(sumPack(in, out), out);
}

/// The samples that do not fill a pack go through a pack of their own.
template <auto Deliver, class Format>
Format* convert(const float* in, std::size_t count, Format* out) {
    for (; count >= packLength; count -= packLength, in += packLength, out += packLength)
        Deliver(in, out);
    float samples[packLength]{};
    Format containers[packLength]{};
    std::copy_n(in, count, samples);
    std::copy_n(out, count, containers);
    Deliver(samples, containers);
    return std::copy_n(containers, count, out);
}

template <class Format>
void convertInto(const float* in, std::size_t count, Format*& out) {
    out = convert<&deliverPack<Format>>(in, count, out);
}
template <class Format>
void convertInto(const float* in, std::size_t count, Summing<Format*>& out) {
    out = Summing<Format*>(convert<&addPack<Format>>(in, count, out.position()));
}

} // namespace

template <class Out>
void convertBlock(const float* in, std::size_t count, Out& out) {
    convertInto(in, count, out);
}

template <class Format>
void addStored(const Format* containers, std::span<float> samples) {
    const auto add = [](const Format* in, float* sums) {
        Packed::storeAll(
            sums, Packed::eachInteger(sumPack(sums, in), [](__m128 x) { return _mm_castps_si128(x); }));
    };
    for (; samples.size() >= packLength; samples = samples.subspan(packLength), containers += packLength)
        add(containers, samples.data());
    float sums[packLength]{};
    Format there[packLength]{};
    std::ranges::copy(samples, sums);
    std::copy_n(containers, samples.size(), there);
    add(there, sums);
    std::copy_n(sums, samples.size(), samples.begin());
}

template void addStored(const Aud::SampleF32*, std::span<float>);
template void addStored(const Aud::SampleS8*, std::span<float>);
template void addStored(const Aud::SampleU8*, std::span<float>);
template void addStored(const Aud::SampleS16*, std::span<float>);
template void addStored(const Aud::SampleS24*, std::span<float>);
template void addStored(const Aud::SampleS24In32*, std::span<float>);
template void addStored(const Aud::SampleS32*, std::span<float>);

namespace {

/// The addresses keep the functions of all output types in this object.
template <class OutputTypes>
struct Conversions;
template <class... Out>
struct Conversions<std::tuple<Out...>> {
    static constexpr std::tuple all{&convertBlock<Out>...};
};
[[gnu::used]] constexpr auto conversions = Conversions<Aud::Render::OutputTypes>::all;

} // namespace
} // namespace audlmd

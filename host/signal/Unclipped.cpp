#include "host/signal/Unclipped.hpp"

#include "loop_modes/RegistrationOrder.hpp"
#include "ole/Aud/SummingOutputSampleIterator.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <tuple>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/signal/Unclipped.cpp"
#include "host/signal/Wide.ipp"
// After the file above.
#include "host/signal/WideEncoding.ipp"

#ifndef AUDLMD_UNCLIPPED
#define AUDLMD_UNCLIPPED
namespace audlmd {
namespace {

/// What a width does to as many samples as fill whole vectors. Each returns how many.
template <class Format>
struct Conversion {
    std::size_t (*store)(const float* in, std::size_t count, Format* out);
    std::size_t (*addAndStore)(const float* in, std::size_t count, Format* out);
    std::size_t (*addTo)(float* sums, std::size_t count, const Format* in);
};

using Conversions =
    std::tuple<Conversion<Aud::SampleF32>, Conversion<Aud::SampleS8>, Conversion<Aud::SampleU8>,
               Conversion<Aud::SampleS16>, Conversion<Aud::SampleS24>, Conversion<Aud::SampleS24In32>,
               Conversion<Aud::SampleS32>>;

} // namespace
} // namespace audlmd
#endif

HWY_BEFORE_NAMESPACE();
namespace audlmd::HWY_NAMESPACE {
namespace {

/// Without vectors nothing is done here.
constexpr bool hasVectors = HWY_TARGET != HWY_SCALAR;

template <class Format>
std::size_t storeVectors(const float* in, std::size_t count, Format* out) {
    std::size_t i = 0;
    if constexpr (hasVectors)
        for (; i + lanes <= count; i += lanes)
            WideEncoding<Format>::store(hn::LoadU(floats, in + i), out + i);
    return i;
}

/// Adds in single precision. Where a sample is a NaN, the sum is that NaN and not the one in the buffer: the
/// render functions do so, and an addition of two NaNs would leave the choice to the compiler.
template <class Format>
HWY_INLINE Floats sumOf(const float* in, const Format* there) {
    const Floats x = hn::LoadU(floats, in);
    return hn::Add(x, hn::IfThenElseZero(hn::Eq(x, x), WideEncoding<Format>::load(there)));
}

template <class Format>
std::size_t addAndStoreVectors(const float* in, std::size_t count, Format* out) {
    std::size_t i = 0;
    if constexpr (hasVectors)
        for (; i + lanes <= count; i += lanes)
            WideEncoding<Format>::store(sumOf(in + i, out + i), out + i);
    return i;
}

template <class Format>
std::size_t addVectors(float* sums, std::size_t count, const Format* in) {
    std::size_t i = 0;
    if constexpr (hasVectors)
        for (; i + lanes <= count; i += lanes)
            hn::StoreU(sumOf(sums + i, in + i), floats, sums + i);
    return i;
}

template <class... Format>
constexpr std::tuple<Conversion<Format>...> conversionsOf(const std::tuple<Conversion<Format>...>*) {
    return {{&storeVectors<Format>, &addAndStoreVectors<Format>, &addVectors<Format>}...};
}

const Conversions& conversions() {
    static constexpr Conversions all = conversionsOf(static_cast<const Conversions*>(nullptr));
    return all;
}

} // namespace
} // namespace audlmd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace audlmd {
namespace {

HWY_EXPORT(conversions);

template <class Format>
const Conversion<Format>& conversionTo() {
    return std::get<Conversion<Format>>(HWY_DYNAMIC_DISPATCH(conversions)());
}

template <class Format>
std::size_t convertVectors(const float* in, std::size_t count, Format*& out) {
    const std::size_t done = conversionTo<Format>().store(in, count, out);
    out += done;
    return done;
}
template <class Format>
std::size_t convertVectors(const float* in, std::size_t count, Aud::Render::Summing<Format*>& out) {
    const std::size_t done = conversionTo<Format>().addAndStore(in, count, out.position());
    out = Aud::Render::Summing<Format*>(out.position() + done);
    return done;
}

} // namespace

template <class Out>
void convertBlock(const float* in, std::size_t count, Out& out) {
    for (std::size_t i = convertVectors(in, count, out); i < count; ++i)
        Aud::Render::deliver(in[i], out);
}

template <class Format>
void addStored(const Format* containers, std::span<float> samples) {
    std::size_t i = conversionTo<Format>().addTo(samples.data(), samples.size(), containers);
    for (; i < samples.size(); ++i)
        samples[i] += samples[i] == samples[i] ? Aud::SampleEncoding<Format>::load(containers[i]) : 0.0F;
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
struct BlockConversions;
template <class... Out>
struct BlockConversions<std::tuple<Out...>> {
    static constexpr std::tuple all{&convertBlock<Out>...};
};
[[gnu::used]] constexpr auto blockConversions = BlockConversions<Aud::Render::OutputTypes>::all;

} // namespace
} // namespace audlmd
#endif

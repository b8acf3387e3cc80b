// The operations of an equaliser section that render functions call per sample. See
// host/inlined/HostOperations.hpp for who includes this file, and how.

#include "contract/Biquad.hpp"

#include <bit>
#include <cstdint>
#include <emmintrin.h>

namespace audlmd {

/// Whether a result is so small, so large or so undefined that the delays must be settled. A section that
/// rings on in silence would end among the denormal numbers, where the processor takes ten times as long. And
/// one infinite or undefined sample of the material would stay in the delays for good.
///
/// One comparison of the bits, because every sample is tested. The limits, 2^-100 and 2^100, are far beyond
/// what is heard.
inline bool isExtreme(float result) {
    const auto magnitude = [](float x) { return std::bit_cast<std::uint32_t>(x) << 1; };
    return magnitude(result) - magnitude(0x1p-100F) > magnitude(0x1p100F) - magnitude(0x1p-100F);
}

/// The delays, with 0 in place of each that is extreme. Has no branch, because in silence every sample comes
/// here.
inline __m128d settled(__m128d delays) {
    const __m128d magnitudes = _mm_andnot_pd(_mm_set1_pd(-0.0), delays);
    const __m128d audible = _mm_cmpgt_pd(magnitudes, _mm_set1_pd(0x1p-200));
    const __m128d bounded = _mm_cmplt_pd(magnitudes, _mm_set1_pd(0x1p200));
    return _mm_and_pd(delays, _mm_and_pd(audible, bounded));
}

} // namespace audlmd

namespace Aud::Filter {

/// Transposed direct form II, in double precision: in single precision the noise of low, narrow bands would
/// show.
///
///     out    = b0 in + first
///     first  = b1 in + second - a1 out
///     second = b2 in          - a2 out
///
/// The two delays are computed side by side. The function starts on a line of the instruction cache; across
/// three lines instead of two, a render with the equaliser takes 3 % longer.
[[gnu::aligned(64)]] AUDLMD_HOST_OPERATION float Biquad::processSample(float x) {
    delaysBefore_ = delays_;
    lastResultBefore_ = lastResult_;

    const __m128d delays = _mm_load_pd(&delays_.first);
    const double in = x;
    const double out = b0_ * in + _mm_cvtsd_f64(delays);
    const __m128d secondDelay = _mm_castsi128_pd(_mm_srli_si128(_mm_castpd_si128(delays), sizeof(double)));
    // The terms without the output are summed first: the next sample waits for the first delay, and so for
    // everything that waits for the output.
    const __m128d forward = _mm_add_pd(_mm_mul_pd(_mm_load_pd(&b1b2_.first), _mm_set1_pd(in)), secondDelay);
    __m128d next = _mm_sub_pd(forward, _mm_mul_pd(_mm_load_pd(&a1a2_.first), _mm_set1_pd(out)));

    lastResult_ = static_cast<float>(out);
    if (audlmd::isExtreme(lastResult_)) [[unlikely]]
        next = audlmd::settled(next);
    _mm_store_pd(&delays_.first, next);
    return lastResult_;
}

AUDLMD_HOST_OPERATION float Biquad::getLastProcessSampleResult() {
    return lastResult_;
}

} // namespace Aud::Filter

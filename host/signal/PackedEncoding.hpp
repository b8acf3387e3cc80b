#pragma once

#include "ole/Aud/SampleEncoding.hpp"

#include <emmintrin.h>

/// The sample formats, sixteen samples at a time: what Aud::SampleEncoding does to one sample, in the
/// instructions that every x86-64 processor has (SSE2). Limits and scales are those of SampleEncoding, and
/// the tests compare the two for every format.
namespace audlmd {

inline constexpr unsigned int packLength = 16;

/// Sixteen neighbouring samples, in order.
struct PackedFloats {
    __m128 a, b, c, d;
};
struct PackedIntegers {
    __m128i a, b, c, d;
};

namespace Packed {

template <class Function>
PackedIntegers eachInteger(const PackedFloats& x, Function f) {
    return {f(x.a), f(x.b), f(x.c), f(x.d)};
}
template <class Function>
PackedFloats eachFloat(const PackedIntegers& x, Function f) {
    return {f(x.a), f(x.b), f(x.c), f(x.d)};
}

inline __m128i loadBytes(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
inline void storeBytes(void* to, __m128i bytes) {
    _mm_storeu_si128(static_cast<__m128i*>(to), bytes);
}

inline PackedFloats load(const float* from) {
    return {_mm_loadu_ps(from), _mm_loadu_ps(from + 4), _mm_loadu_ps(from + 8), _mm_loadu_ps(from + 12)};
}

/// As Instructions::clip: either instruction gives its second operand where the comparison has no answer.
inline __m128 clip(__m128 x, float lower, float upper) {
    return _mm_max_ps(_mm_set1_ps(lower), _mm_min_ps(_mm_set1_ps(upper), x));
}

/// 0 in place of each NaN. The instructions that narrow integers would otherwise make full scale of the most
/// negative integer, which a truncated NaN is.
inline __m128 withoutNaN(__m128 x) {
    return _mm_and_ps(x, _mm_cmpord_ps(x, x));
}

/// Clips to -1.0 .. `upper`, scales and truncates.
inline PackedIntegers truncate(const PackedFloats& samples, float upper, float scale) {
    return eachInteger(samples, [=](__m128 x) {
        return _mm_cvttps_epi32(_mm_mul_ps(clip(withoutNaN(x), -1.0F, upper), _mm_set1_ps(scale)));
    });
}

inline PackedFloats scaled(const PackedIntegers& integers, float scale) {
    return eachFloat(integers, [=](__m128i x) { return _mm_mul_ps(_mm_cvtepi32_ps(x), _mm_set1_ps(scale)); });
}

/// Two times eight integers of 16 bits as floats.
inline PackedFloats scaledWords(__m128i low, __m128i high, float scale) {
    const auto first = [](__m128i x) { return _mm_srai_epi32(_mm_unpacklo_epi16(x, x), 16); };
    const auto last = [](__m128i x) { return _mm_srai_epi32(_mm_unpackhi_epi16(x, x), 16); };
    return scaled({first(low), last(low), first(high), last(high)}, scale);
}

/// Writes sixteen containers of 32 bits.
inline void storeAll(void* to, const PackedIntegers& x) {
    auto* const out = static_cast<__m128i*>(to);
    _mm_storeu_si128(out, x.a);
    _mm_storeu_si128(out + 1, x.b);
    _mm_storeu_si128(out + 2, x.c);
    _mm_storeu_si128(out + 3, x.d);
}

inline PackedIntegers truncateTo24(const PackedFloats& samples) {
    return truncate(samples, Aud::Encoding::oneBelowFullScale, 8388608.0F);
}

/// Four integers of 24 bits as 12 bytes, followed by 4 bytes of 0.
inline __m128i joinThreeBytes(__m128i x) {
    const __m128i even = _mm_and_si128(x, _mm_set1_epi64x(0xFFFFFF));
    const __m128i odd = _mm_and_si128(_mm_srli_epi64(x, 8), _mm_set1_epi64x(0xFFFFFF000000));
    const __m128i sixes = _mm_or_si128(even, odd);
    return _mm_or_si128(_mm_move_epi64(sixes), _mm_slli_si128(_mm_srli_si128(sixes, 8), 6));
}

/// The inverse, with the signs extended. Ignores the last 4 bytes.
inline __m128i splitThreeBytes(__m128i bytes) {
    const __m128i sixes = _mm_unpacklo_epi64(bytes, _mm_srli_si128(bytes, 6));
    const __m128i even = _mm_and_si128(_mm_slli_epi64(sixes, 8), _mm_set1_epi64x(0xFFFFFF00));
    const __m128i odd =
        _mm_andnot_si128(_mm_set1_epi64x(0xFFFFFFFF), _mm_slli_epi64(_mm_srli_epi64(sixes, 24), 40));
    return _mm_srai_epi32(_mm_or_si128(even, odd), 8);
}

} // namespace Packed

/// `store` encodes and writes sixteen samples, `load` reads sixteen containers back as floats. In the integer
/// formats up to 24 bits, `put` writes sixteen integers that the format holds.
template <class Format>
struct PackedEncoding;

template <>
struct PackedEncoding<Aud::SampleF32> {
    static void store(const PackedFloats& samples, Aud::SampleF32* out) {
        Packed::storeAll(out, Packed::eachInteger(samples, [](__m128 x) {
                             return _mm_castps_si128(
                                 Packed::clip(x, -1.0F, Aud::Encoding::oneBelowFullScale));
                         }));
    }
    static PackedFloats load(const Aud::SampleF32* in) {
        return Packed::load(reinterpret_cast<const float*>(in));
    }
};

template <>
struct PackedEncoding<Aud::SampleS8> {
    static void put(const PackedIntegers& x, Aud::SampleS8* out) {
        Packed::storeBytes(out, _mm_packs_epi16(_mm_packs_epi32(x.a, x.b), _mm_packs_epi32(x.c, x.d)));
    }
    static void store(const PackedFloats& samples, Aud::SampleS8* out) {
        put(Packed::truncate(samples, 127.0F / 128.0F, 128.0F), out);
    }
    static PackedFloats load(const Aud::SampleS8* in) {
        const __m128i bytes = Packed::loadBytes(in);
        const __m128i low = _mm_srai_epi16(_mm_unpacklo_epi8(bytes, bytes), 8);
        const __m128i high = _mm_srai_epi16(_mm_unpackhi_epi8(bytes, bytes), 8);
        return Packed::scaledWords(low, high, 0x1p-7F);
    }
};

template <>
struct PackedEncoding<Aud::SampleU8> {
    static void put(const PackedIntegers& x, Aud::SampleU8* out) {
        Packed::storeBytes(out, _mm_packus_epi16(_mm_packs_epi32(x.a, x.b), _mm_packs_epi32(x.c, x.d)));
    }
    static void store(const PackedFloats& samples, Aud::SampleU8* out) {
        put(Packed::eachInteger(samples,
                                [](__m128 sample) {
                                    const __m128 offset =
                                        _mm_add_ps(Packed::withoutNaN(sample), _mm_set1_ps(1.0F));
                                    return _mm_cvttps_epi32(
                                        _mm_mul_ps(Packed::clip(offset, 0.0F, 2.0F), _mm_set1_ps(127.5F)));
                                }),
            out);
    }
    static PackedFloats load(const Aud::SampleU8* in) {
        const __m128i bytes = Packed::loadBytes(in);
        const __m128i middle = _mm_set1_epi16(128);
        const __m128i low = _mm_sub_epi16(_mm_unpacklo_epi8(bytes, _mm_setzero_si128()), middle);
        const __m128i high = _mm_sub_epi16(_mm_unpackhi_epi8(bytes, _mm_setzero_si128()), middle);
        return Packed::scaledWords(low, high, 0x1p-7F);
    }
};

template <>
struct PackedEncoding<Aud::SampleS16> {
    static void put(const PackedIntegers& x, Aud::SampleS16* out) {
        Packed::storeBytes(out, _mm_packs_epi32(x.a, x.b));
        Packed::storeBytes(out + 8, _mm_packs_epi32(x.c, x.d));
    }
    static void store(const PackedFloats& samples, Aud::SampleS16* out) {
        put(Packed::truncate(samples, 32767.0F / 32768.0F, 32768.0F), out);
    }
    static PackedFloats load(const Aud::SampleS16* in) {
        return Packed::scaledWords(Packed::loadBytes(in), Packed::loadBytes(in + 8), 0x1p-15F);
    }
};

template <>
struct PackedEncoding<Aud::SampleS24> {
    /// Four times 12 bytes are three times 16.
    static void put(const PackedIntegers& x, Aud::SampleS24* out) {
        const __m128i b = Packed::joinThreeBytes(x.b);
        const __m128i c = Packed::joinThreeBytes(x.c);
        unsigned char* const bytes = out->bytes;
        Packed::storeBytes(bytes, _mm_or_si128(Packed::joinThreeBytes(x.a), _mm_slli_si128(b, 12)));
        Packed::storeBytes(bytes + 16, _mm_or_si128(_mm_srli_si128(b, 4), _mm_slli_si128(c, 8)));
        Packed::storeBytes(
            bytes + 32, _mm_or_si128(_mm_srli_si128(c, 8), _mm_slli_si128(Packed::joinThreeBytes(x.d), 4)));
    }
    static void store(const PackedFloats& samples, Aud::SampleS24* out) {
        put(Packed::truncateTo24(samples), out);
    }
    static PackedFloats load(const Aud::SampleS24* in) {
        const __m128i first = Packed::loadBytes(in);
        // The other three quarters end where the bytes that are read end.
        const auto quarter = [in](unsigned int number) {
            const auto* const bytes = reinterpret_cast<const unsigned char*>(in);
            return _mm_srli_si128(Packed::loadBytes(bytes + 12 * number - 4), 4);
        };
        return Packed::scaled({Packed::splitThreeBytes(first), Packed::splitThreeBytes(quarter(1)),
                               Packed::splitThreeBytes(quarter(2)), Packed::splitThreeBytes(quarter(3))},
                              0x1p-23F);
    }
};

template <>
struct PackedEncoding<Aud::SampleS24In32> {
    static void put(const PackedIntegers& x, Aud::SampleS24In32* out) { Packed::storeAll(out, x); }
    static void store(const PackedFloats& samples, Aud::SampleS24In32* out) {
        put(Packed::truncateTo24(samples), out);
    }
    static PackedFloats load(const Aud::SampleS24In32* in) {
        const auto quarter = [in](unsigned int number) {
            return _mm_srai_epi32(_mm_slli_epi32(Packed::loadBytes(in + 4 * number), 8), 8);
        };
        return Packed::scaled({quarter(0), quarter(1), quarter(2), quarter(3)}, 0x1p-23F);
    }
};

template <>
struct PackedEncoding<Aud::SampleS32> {
    /// In double precision, two samples at a time. Every clipped product fits 32 bits.
    static void store(const PackedFloats& samples, Aud::SampleS32* out) {
        const auto twoOf = [](__m128 x) {
            const __m128d product = _mm_mul_pd(_mm_cvtps_pd(x), _mm_set1_pd(scale));
            return _mm_cvttpd_epi32(_mm_sub_pd(product, _mm_set1_pd(0.5)));
        };
        const PackedIntegers x = Packed::eachInteger(samples, [&](__m128 sample) {
            const __m128 clipped = Packed::clip(Packed::withoutNaN(sample), -1.0F, 1.0F);
            return _mm_unpacklo_epi64(twoOf(clipped), twoOf(_mm_movehl_ps(clipped, clipped)));
        });
        Packed::storeAll(out, x);
    }
    static PackedFloats load(const Aud::SampleS32* in) {
        const auto twoOf = [](__m128i x) {
            const __m128d middle = _mm_add_pd(_mm_cvtepi32_pd(x), _mm_set1_pd(0.5));
            return _mm_cvtpd_ps(_mm_div_pd(middle, _mm_set1_pd(scale)));
        };
        const auto quarter = [&](unsigned int number) {
            const __m128i x = Packed::loadBytes(in + 4 * number);
            return _mm_movelh_ps(twoOf(x), twoOf(_mm_srli_si128(x, 8)));
        };
        return {quarter(0), quarter(1), quarter(2), quarter(3)};
    }

private:
    static constexpr double scale = 2147483647.5;
};

} // namespace audlmd

// The sample formats, a vector of samples at a time: what Aud::SampleEncoding does to one sample. Limits and
// scales are those of SampleEncoding, and the tests compare the two for every format.
//
// For sources that are compiled once for each width, see Wide.ipp, which is included first, with
// ole/Aud/SampleEncoding.hpp and the standard headers <cmath>, <cstdint> and <cstring>.
#if defined(AUDLMD_WIDE_ENCODING) == defined(HWY_TARGET_TOGGLE)
#ifdef AUDLMD_WIDE_ENCODING
#undef AUDLMD_WIDE_ENCODING
#else
#define AUDLMD_WIDE_ENCODING
#endif

HWY_BEFORE_NAMESPACE();
namespace audlmd::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
constexpr hn::ScalableTag<float> floats;
constexpr hn::RebindToSigned<decltype(floats)> integers;
using Floats = hn::Vec<decltype(floats)>;
using Integers = hn::Vec<decltype(integers)>;
constexpr std::size_t lanes = hn::MaxLanes(floats);

/// As Instructions::clip: where the comparison has no answer, the result is the second operand.
HWY_INLINE Floats clip(Floats x, float lower, float upper) {
    return hn::Max(hn::Set(floats, lower), hn::Min(hn::Set(floats, upper), x));
}

/// 0 in place of each NaN. What narrows integers would otherwise make full scale of the most negative
/// integer, which a truncated NaN is.
HWY_INLINE Floats withoutNaN(Floats x) {
    return hn::IfThenElseZero(hn::Eq(x, x), x);
}

/// Clips to -1.0 .. `upper`, scales and truncates.
HWY_INLINE Integers truncated(Floats x, float upper, float scale) {
    return hn::ConvertTo(integers, hn::Mul(clip(withoutNaN(x), -1.0F, upper), hn::Set(floats, scale)));
}

HWY_INLINE Integers truncatedTo24(Floats x) {
    return truncated(x, Aud::Encoding::oneBelowFullScale, 8388608.0F);
}

HWY_INLINE Floats scaled(Integers x, float scale) {
    return hn::Mul(hn::ConvertTo(floats, x), hn::Set(floats, scale));
}

/// To the nearest integer, halfway to the even one.
HWY_INLINE Integers toNearest(Floats x) {
#if HWY_TARGET == HWY_SCALAR
    // Highway adds a half to a single number, which takes what lies just below a half to 1.
    return hn::Set(integers, static_cast<std::int32_t>(std::nearbyint(hn::GetLane(x))));
#else
    return hn::NearestInt(x);
#endif
}

/// Integers that a container of fewer bits holds.
template <class Narrow, class Format>
HWY_INLINE void putNarrowed(Integers x, Format* out) {
    const hn::Rebind<Narrow, decltype(integers)> narrow;
    hn::StoreU(hn::DemoteTo(narrow, x), narrow, reinterpret_cast<Narrow*>(out));
}
template <class Narrow, class Format>
HWY_INLINE Integers widened(const Format* in) {
    const hn::Rebind<Narrow, decltype(integers)> narrow;
    return hn::PromoteTo(integers, hn::LoadU(narrow, reinterpret_cast<const Narrow*>(in)));
}

/// `store` encodes and writes a vector of samples, `load` reads as many containers back as floats. In the
/// integer formats up to 24 bits, `put` writes integers that the format holds.
template <class Format>
struct WideEncoding;

template <>
struct WideEncoding<Aud::SampleF32> {
    HWY_INLINE static void store(Floats x, Aud::SampleF32* out) {
        hn::StoreU(clip(x, -1.0F, Aud::Encoding::oneBelowFullScale), floats, reinterpret_cast<float*>(out));
    }
    HWY_INLINE static Floats load(const Aud::SampleF32* in) {
        return hn::LoadU(floats, reinterpret_cast<const float*>(in));
    }
};

template <>
struct WideEncoding<Aud::SampleS8> {
    HWY_INLINE static void put(Integers x, Aud::SampleS8* out) { putNarrowed<std::int8_t>(x, out); }
    HWY_INLINE static void store(Floats x, Aud::SampleS8* out) {
        put(truncated(x, 127.0F / 128.0F, 128.0F), out);
    }
    HWY_INLINE static Floats load(const Aud::SampleS8* in) {
        return scaled(widened<std::int8_t>(in), 0x1p-7F);
    }
};

template <>
struct WideEncoding<Aud::SampleU8> {
    HWY_INLINE static void put(Integers x, Aud::SampleU8* out) { putNarrowed<std::uint8_t>(x, out); }
    HWY_INLINE static void store(Floats x, Aud::SampleU8* out) {
        const Floats offset = hn::Add(withoutNaN(x), hn::Set(floats, 1.0F));
        put(hn::ConvertTo(integers, hn::Mul(clip(offset, 0.0F, 2.0F), hn::Set(floats, 127.5F))), out);
    }
    HWY_INLINE static Floats load(const Aud::SampleU8* in) {
        return scaled(hn::Sub(widened<std::uint8_t>(in), hn::Set(integers, 128)), 0x1p-7F);
    }
};

template <>
struct WideEncoding<Aud::SampleS16> {
    HWY_INLINE static void put(Integers x, Aud::SampleS16* out) { putNarrowed<std::int16_t>(x, out); }
    HWY_INLINE static void store(Floats x, Aud::SampleS16* out) {
        put(truncated(x, 32767.0F / 32768.0F, 32768.0F), out);
    }
    HWY_INLINE static Floats load(const Aud::SampleS16* in) {
        return scaled(widened<std::int16_t>(in), 0x1p-15F);
    }
};

#if HWY_TARGET != HWY_SCALAR
/// Four integers. The three bytes become the high ones of each, which are shifted with their sign.
HWY_INLINE auto fourOf24(const std::uint8_t* bytes) {
    alignas(16) static constexpr std::uint8_t places[16]{0x80, 0, 1, 2, 0x80, 3, 4,  5,
                                                         0x80, 6, 7, 8, 0x80, 9, 10, 11};
    constexpr hn::FixedTag<std::uint8_t, 16> all;
    constexpr hn::FixedTag<std::uint8_t, 8> half;
    // Not a byte beyond the twelve.
    const auto last = hn::LoadU(hn::FixedTag<std::uint8_t, 4>(), bytes + 8);
    const auto twelve = hn::Combine(all, hn::ZeroExtendVector(half, last), hn::LoadU(half, bytes));
    const auto high = hn::TableLookupBytesOr0(twelve, hn::Load(all, places));
    return hn::ShiftRight<8>(hn::BitCast(hn::FixedTag<std::int32_t, 4>(), high));
}
#endif

template <>
struct WideEncoding<Aud::SampleS24> {
    static constexpr std::size_t ofBlock = 4;
    static constexpr std::size_t blockBytes = 3 * ofBlock;

    /// Within each 16 bytes of a vector the four integers move together to 12 bytes.
    HWY_INLINE static void put(Integers x, Aud::SampleS24* out) {
        HWY_ALIGN unsigned char bytes[sizeof(std::int32_t) * lanes];
#if HWY_TARGET == HWY_SCALAR
        hn::Store(x, integers, reinterpret_cast<std::int32_t*>(bytes));
        std::memcpy(out, bytes, sizeof *out);
#else
        alignas(16) static constexpr std::uint8_t places[16]{0,  1,  2,  4,  5,    6,    8,    9,
                                                             10, 12, 13, 14, 0x80, 0x80, 0x80, 0x80};
        const hn::Repartition<std::uint8_t, decltype(integers)> ofBytes;
        hn::Store(hn::TableLookupBytesOr0(hn::BitCast(ofBytes, x), hn::LoadDup128(ofBytes, places)), ofBytes,
                  bytes);
        for (std::size_t block = 0; block < lanes / ofBlock; ++block)
            std::memcpy(out + block * ofBlock, bytes + block * 16, blockBytes);
#endif
    }
    HWY_INLINE static void store(Floats x, Aud::SampleS24* out) {
        put(truncatedTo24(x), out);
    }

#if HWY_TARGET != HWY_SCALAR
    HWY_INLINE static Floats load(const Aud::SampleS24* in) {
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(in);
#if HWY_CAP_GE256
        return scaled(hn::Combine(integers, fourOf24(bytes + blockBytes), fourOf24(bytes)), 0x1p-23F);
#else
        return scaled(fourOf24(bytes), 0x1p-23F);
#endif
    }
#endif
};

template <>
struct WideEncoding<Aud::SampleS24In32> {
    HWY_INLINE static void put(Integers x, Aud::SampleS24In32* out) {
        hn::StoreU(x, integers, reinterpret_cast<std::int32_t*>(out));
    }
    HWY_INLINE static void store(Floats x, Aud::SampleS24In32* out) { put(truncatedTo24(x), out); }
    HWY_INLINE static Floats load(const Aud::SampleS24In32* in) {
        const Integers x = hn::LoadU(integers, reinterpret_cast<const std::int32_t*>(in));
        return scaled(hn::ShiftRight<8>(hn::ShiftLeft<8>(x)), 0x1p-23F);
    }
};

// 32 bits are reckoned in double precision, half a vector at a time.
#if HWY_TARGET == HWY_SCALAR
constexpr hn::Rebind<double, decltype(floats)> doubles;
#else
constexpr hn::Repartition<double, decltype(floats)> doubles;
#endif
constexpr hn::Rebind<float, decltype(doubles)> halfOfFloats;
constexpr hn::Rebind<std::int32_t, decltype(doubles)> halfOfIntegers;
using Doubles = hn::Vec<decltype(doubles)>;
using HalfOfFloats = hn::Vec<decltype(halfOfFloats)>;
using HalfOfIntegers = hn::Vec<decltype(halfOfIntegers)>;
constexpr std::size_t halfLanes = hn::MaxLanes(doubles);

/// As the language rounds, and without a limit: infinity beyond the largest number.
HWY_INLINE HalfOfFloats narrowed(Doubles x) {
#if HWY_TARGET == HWY_SCALAR
    return hn::Set(halfOfFloats, static_cast<float>(hn::GetLane(x)));
#else
    return hn::DemoteTo(halfOfFloats, x);
#endif
}

template <>
struct WideEncoding<Aud::SampleS32> {
    HWY_INLINE static HalfOfIntegers truncated(HalfOfFloats x) {
        const Doubles product = hn::Mul(hn::PromoteTo(doubles, x), hn::Set(doubles, scale));
        return hn::DemoteTo(halfOfIntegers, hn::Sub(product, hn::Set(doubles, 0.5)));
    }
    HWY_INLINE static HalfOfFloats half(HalfOfIntegers x) {
        const Doubles middle = hn::Add(hn::PromoteTo(doubles, x), hn::Set(doubles, 0.5));
        return narrowed(hn::Div(middle, hn::Set(doubles, scale)));
    }

#if HWY_TARGET != HWY_SCALAR
    /// Every clipped product fits 32 bits.
    HWY_INLINE static void store(Floats x, Aud::SampleS32* out) {
        const Floats clipped = clip(withoutNaN(x), -1.0F, 1.0F);
        auto* const to = reinterpret_cast<std::int32_t*>(out);
        hn::StoreU(truncated(hn::LowerHalf(clipped)), halfOfIntegers, to);
        hn::StoreU(truncated(hn::UpperHalf(halfOfFloats, clipped)), halfOfIntegers, to + halfLanes);
    }
    HWY_INLINE static Floats load(const Aud::SampleS32* in) {
        const auto* const from = reinterpret_cast<const std::int32_t*>(in);
        return hn::Combine(floats, half(hn::LoadU(halfOfIntegers, from + halfLanes)),
                           half(hn::LoadU(halfOfIntegers, from)));
    }
#endif

private:
    static constexpr double scale = 2147483647.5;
};

} // namespace
} // namespace audlmd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif

#pragma once

#include "ole/Aud/Instructions.hpp"
#include "ole/Aud/SampleFormats.hpp"

#include <bit>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace Aud {

/// How one format holds a sample. `store` clips a float, scales it and truncates it toward zero, without
/// dither. `load` reads a container back as a float, for summing. Both are called once per output sample.
///
/// The limits and the scale are each format's own. They differ on purpose: do not harmonise them.
///
/// A NaN is stored as 0.0 would be in an integer format, and as it is in the float format. The truncating
/// instructions give the most negative integer for a NaN, whose low bits are those of 0; a C++ conversion of
/// a NaN would be undefined.
/// \snippet chain.cpp encoding
template <class Format>
struct SampleEncoding;

namespace Encoding {

using Instructions::clip;

/// 1.0 less one step of 24 bits.
inline constexpr float oneBelowFullScale = 8388607.0F / 8388608.0F;

[[gnu::always_inline]] inline std::int32_t truncate(float x) {
    return _mm_cvttss_si32(_mm_set_ss(x));
}

template <class Container>
[[gnu::always_inline]] inline void put(const void* value, Container& out) {
    std::memcpy(out.bytes, value, sizeof out.bytes);
}

/// Extends the sign of the 24 low bits. For a truncated NaN these bits are 0.
[[gnu::always_inline]] inline std::int32_t signExtend24(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits << 8) >> 8;
}

/// The clip limit is exactly 8388607 steps, so the product needs no limit of its own.
[[gnu::always_inline]] inline std::int32_t toSigned24(float x) {
    return truncate(clip(x, -1.0F, oneBelowFullScale) * 8388608.0F);
}

/// Reads the three low bytes and ignores a fourth.
[[gnu::always_inline]] inline float fromSigned24(const unsigned char* bytes) {
    const std::uint32_t bits =
        bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 | static_cast<std::uint32_t>(bytes[2]) << 16;
    return static_cast<float>(signExtend24(bits)) * 0x1p-23F;
}

} // namespace Encoding

/// -1.0 is stored, +1.0 never: the largest value is one step of 24 bits below.
template <>
struct SampleEncoding<SampleF32> {
    [[gnu::always_inline]] static void store(float x, SampleF32& out) {
        const float value = Encoding::clip(x, -1.0F, Encoding::oneBelowFullScale);
        Encoding::put(&value, out);
    }
    [[gnu::always_inline]] static float load(const SampleF32& in) { return std::bit_cast<float>(in.bytes); }
};

/// Steps of 1/128 from -128 to 127.
template <>
struct SampleEncoding<SampleS8> {
    [[gnu::always_inline]] static void store(float x, SampleS8& out) {
        out.bytes[0] = static_cast<unsigned char>(
            Encoding::truncate(Encoding::clip(x, -1.0F, 127.0F / 128.0F) * 128.0F));
    }
    [[gnu::always_inline]] static float load(const SampleS8& in) {
        return static_cast<float>(static_cast<std::int8_t>(in.bytes[0])) * 0x1p-7F;
    }
};

/// Stores the offset value x + 1.0 in steps of 1/127.5. Silence becomes 127, because 127.5 is truncated; but
/// `load` reads 128 as silence, so each sum with silence lowers a sample by one step.
template <>
struct SampleEncoding<SampleU8> {
    [[gnu::always_inline]] static void store(float x, SampleU8& out) {
        // The low bits of a truncated NaN are not those of silence here, so it becomes silence first.
        if (x != x) [[unlikely]]
            x = 0.0F;
        const float clipped = Encoding::clip(x + 1.0F, 0.0F, 2.0F);
        out.bytes[0] = static_cast<unsigned char>(Encoding::truncate(clipped * 127.5F));
    }
    [[gnu::always_inline]] static float load(const SampleU8& in) {
        return static_cast<float>(in.bytes[0] - 128) * 0x1p-7F;
    }
};

/// Steps of 1/32768 from -32768 to 32767.
template <>
struct SampleEncoding<SampleS16> {
    [[gnu::always_inline]] static void store(float x, SampleS16& out) {
        const auto value = static_cast<std::int16_t>(
            Encoding::truncate(Encoding::clip(x, -1.0F, 32767.0F / 32768.0F) * 32768.0F));
        Encoding::put(&value, out);
    }
    [[gnu::always_inline]] static float load(const SampleS16& in) {
        return static_cast<float>(std::bit_cast<std::int16_t>(in.bytes)) * 0x1p-15F;
    }
};

/// Steps of 2^-23 from -2^23 to 2^23 - 1, in three bytes.
template <>
struct SampleEncoding<SampleS24> {
    [[gnu::always_inline]] static void store(float x, SampleS24& out) {
        const auto bits = static_cast<std::uint32_t>(Encoding::toSigned24(x));
        const auto low = static_cast<std::uint16_t>(bits);
        std::memcpy(out.bytes, &low, sizeof low);
        out.bytes[2] = static_cast<unsigned char>(bits >> 16);
    }
    [[gnu::always_inline]] static float load(const SampleS24& in) { return Encoding::fromSigned24(in.bytes); }
};

/// The same in four bytes. `store` writes the sign into the fourth, `load` ignores it.
template <>
struct SampleEncoding<SampleS24In32> {
    [[gnu::always_inline]] static void store(float x, SampleS24In32& out) {
        const std::int32_t value =
            Encoding::signExtend24(static_cast<std::uint32_t>(Encoding::toSigned24(x)));
        Encoding::put(&value, out);
    }
    [[gnu::always_inline]] static float load(const SampleS24In32& in) {
        return Encoding::fromSigned24(in.bytes);
    }
};

/// Maps the closed range -1.0 .. +1.0 onto all 2^32 integers. The offset of half a step makes 0.0 store 0.
template <>
struct SampleEncoding<SampleS32> {
    [[gnu::always_inline]] static void store(float x, SampleS32& out) {
        const double clipped = static_cast<double>(Encoding::clip(x, -1.0F, 1.0F));
        // Truncated to 64 bits, so that the low half of a truncated NaN is 0.
        const auto value = static_cast<std::int32_t>(_mm_cvttsd_si64(_mm_set_sd(clipped * scale - 0.5)));
        Encoding::put(&value, out);
    }
    [[gnu::always_inline]] static float load(const SampleS32& in) {
        return static_cast<float>((static_cast<double>(std::bit_cast<std::int32_t>(in.bytes)) + 0.5) / scale);
    }

private:
    static constexpr double scale = 2147483647.5;
};

} // namespace Aud

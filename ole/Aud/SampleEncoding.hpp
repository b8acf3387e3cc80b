#pragma once

#include "ole/Aud/SampleFormats.hpp"

#include <bit>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace Aud {

/// Converts between floating point and one format: `store` clips, scales and truncates toward zero, without
/// dither; `load` reads a container back. Each format's limits and scale are its own, and are not to be
/// harmonised.
///
/// A NaN stores in an integer format what 0.0 stores; the float format passes it. The truncating instructions
/// are defined for it, which a C++ conversion is not: they give the most negative integer, whose low bits are
/// those of 0.
template <class Format>
struct SampleEncoding;

namespace Encoding {

/// The largest float below 1.0 by one step of 24 bits.
inline constexpr float oneBelowFullScale = 8388607.0F / 8388608.0F;

/// Tests the upper limit first, both strictly; a NaN passes, because either instruction then gives its second
/// operand.
///
/// Compilers make branches of the same in C++, and fill the unused lanes of the intrinsics' operands.
[[gnu::always_inline]] inline float clip(float x, float lower, float upper) {
    asm("minss %1, %0" : "+x"(upper) : "x"(x));
    asm("maxss %1, %0" : "+x"(lower) : "x"(upper));
    return lower;
}

[[gnu::always_inline]] inline std::int32_t truncate(float x) {
    return _mm_cvttss_si32(_mm_set_ss(x));
}

template <class Container>
[[gnu::always_inline]] inline void put(const void* value, Container& out) {
    std::memcpy(out.bytes, value, sizeof out.bytes);
}

/// The 24 low bits, sign-extended: 0 for what a NaN truncates to.
[[gnu::always_inline]] inline std::int32_t signExtend24(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits << 8) >> 8;
}

[[gnu::always_inline]] inline std::int32_t toSigned24(float x) {
    // The upper limit is exactly 8388607 steps, so that the product needs no limiting of its own.
    return truncate(clip(x, -1.0F, oneBelowFullScale) * 8388608.0F);
}

/// Reads the three low bytes; a fourth one is ignored.
[[gnu::always_inline]] inline float fromSigned24(const unsigned char* bytes) {
    const std::uint32_t bits =
        bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 | static_cast<std::uint32_t>(bytes[2]) << 16;
    return static_cast<float>(signExtend24(bits)) * 0x1p-23F;
}

} // namespace Encoding

template <>
struct SampleEncoding<SampleF32> {
    /// Never stores +1.0, but stores -1.0.
    [[gnu::always_inline]] static void store(float x, SampleF32& out) {
        const float value = Encoding::clip(x, -1.0F, Encoding::oneBelowFullScale);
        Encoding::put(&value, out);
    }
    [[gnu::always_inline]] static float load(const SampleF32& in) { return std::bit_cast<float>(in.bytes); }
};

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

template <>
struct SampleEncoding<SampleU8> {
    /// Works on the value offset to 0.0 .. 2.0. Silence becomes 127, not 128: 127.5 is truncated.
    [[gnu::always_inline]] static void store(float x, SampleU8& out) {
        // Here the low bits of a truncated NaN are not those of silence, so it is made silence first.
        if (x != x) [[unlikely]]
            x = 0.0F;
        const float clipped = Encoding::clip(x + 1.0F, 0.0F, 2.0F);
        out.bytes[0] = static_cast<unsigned char>(Encoding::truncate(clipped * 127.5F));
    }
    /// Centred on 128, and so deliberately not the inverse of the store.
    [[gnu::always_inline]] static float load(const SampleU8& in) {
        return static_cast<float>(in.bytes[0] - 128) * 0x1p-7F;
    }
};

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

template <>
struct SampleEncoding<SampleS32> {
    /// Maps the closed range -1.0 .. +1.0 onto all integers; the offset of half a step makes 0.0 store 0.
    [[gnu::always_inline]] static void store(float x, SampleS32& out) {
        const double clipped = static_cast<double>(Encoding::clip(x, -1.0F, 1.0F));
        // Truncated to 64 bits, so that the low half is 0 for a NaN.
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

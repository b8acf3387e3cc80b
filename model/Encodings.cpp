#include "model/Model.hpp"

#include <bit>
#include <cmath>
#include <cstring>

namespace audlmd::model {
namespace {

struct Clip {
    float upper;
    std::int64_t upperValue;
    float lower;
    std::int64_t lowerValue;
};

/// Clips `x`, upper limit first, and truncates `scaled` towards 0 where nothing was clipped.
std::int64_t integerOf(float x, const Clip& clip, double scaled) {
    if (x > clip.upper)
        return clip.upperValue;
    if (x < clip.lower)
        return clip.lowerValue;
    return static_cast<std::int64_t>(std::trunc(scaled));
}

std::int64_t storedInteger(Format format, float x) {
    switch (format) {
    case Format::s8:
        return integerOf(x, {0.9921875F, 127, -1.0F, -128}, x * 128.0F);
    case Format::u8:
        return integerOf(x, {2.0F, 255, 0.0F, 0}, x * 127.5F);
    case Format::s16:
        return integerOf(x, {0.999969482421875F, 32767, -1.0F, -32768}, x * 32768.0F);
    case Format::s24:
    case Format::s24in32:
        return integerOf(x, {0.99999988079071044921875F, 8388607, -1.0F, -8388608}, x * 8388608.0F);
    default:
        return integerOf(x, {1.0F, 2147483647, -1.0F, -2147483648},
                         static_cast<double>(x) * 2147483647.5 - 0.5);
    }
}

} // namespace

void store(Format format, float x, std::uint8_t* container) {
    std::uint32_t bits = 0;
    if (format == Format::f32) {
        constexpr float upper = 0.99999988079071044921875F;
        bits = std::bit_cast<std::uint32_t>(x > upper ? upper : x < -1.0F ? -1.0F : x);
    } else {
        // A NaN stores the same as silence, which for u8 is the offset.
        const float silence = format == Format::u8 ? 1.0F : 0.0F;
        bits = static_cast<std::uint32_t>(storedInteger(format, x != x ? silence : x));
    }
    for (std::size_t i = 0; i < containerBytes[static_cast<std::size_t>(format)]; ++i)
        container[i] = static_cast<std::uint8_t>(bits >> (8 * i));
}

float load(Format format, const std::uint8_t* container) {
    const auto byte = [container](std::size_t i) { return static_cast<std::int32_t>(container[i]); };
    const auto wrapped = [](std::int32_t value, std::int32_t half) {
        return value >= half ? value - 2 * half : value;
    };
    switch (format) {
    case Format::s8:
        return static_cast<float>(wrapped(byte(0), 128)) * 0.0078125F;
    case Format::u8:
        return static_cast<float>(byte(0) - 128) * 0.0078125F;
    case Format::s16:
        return static_cast<float>(wrapped(byte(0) + 256 * byte(1), 32768)) * 3.0517578125e-05F;
    case Format::s24:
    case Format::s24in32:
        return static_cast<float>(wrapped(byte(2), 128) * 65536 + 256 * byte(1) + byte(0)) *
               1.1920928955078125e-07F;
    default:
        break;
    }
    std::int32_t value = 0;
    std::memcpy(&value, container, sizeof value);
    if (format == Format::f32)
        return std::bit_cast<float>(value);
    return static_cast<float>((static_cast<double>(value) + 0.5) / 2147483647.5);
}

void deliver(std::size_t outputType, float x, std::uint8_t* container) {
    const auto format = static_cast<Format>(outputType % 7);
    if (outputType >= 7)
        x = load(format, container) + x;
    if (format == Format::u8)
        x = x + 1.0F;
    store(format, x, container);
}

} // namespace audlmd::model

#pragma once

#include "ole/Aud/Instructions.hpp"
#include "ole/Aud/Wrapping.hpp"

#include <compare>
#include <cstdint>

namespace Aud {

/// A position or distance in source samples, in fixed point, so that long stretches do not drift.
///
/// The value is sample + fraction / 1073741823. A normalised fraction is 0 to 1073741822. Positions are
/// ordered by sample, then by fraction.
/// \snippet chain.cpp position
struct SubSamplePos {
    /// 2^30 - 1, deliberately not a power of two.
    static constexpr std::int32_t fractionsPerSample = 1073741823;

    std::int64_t sample;
    std::int32_t fraction;

    /// Normalises. A negative fraction that is not a whole number of samples borrows one more sample and
    /// keeps the magnitude of its remainder: SubSamplePos(5, -1) is 4 samples and a fraction of 1. The host
    /// counts on this borrow rule, although the result is not the arithmetically equal value.
    [[gnu::used]] constexpr SubSamplePos(long wholeSamples, int fractions)
        : sample(wrappingSum(std::int64_t{wholeSamples}, std::int64_t{fractions / fractionsPerSample})),
          fraction(fractions % fractionsPerSample) {
        if (fraction < 0) {
            sample = wrappingSum(sample, std::int64_t{-1});
            fraction = -fraction;
        }
    }

    /// Normalises the sum as the constructor does. The sum of two normalised fractions holds at most one
    /// whole sample, so one subtraction is enough; only positions that a host made by hand are divided.
    [[gnu::always_inline]] SubSamplePos& operator+=(const SubSamplePos& distance) {
        constexpr std::uint32_t wholeSample = fractionsPerSample;
        std::int64_t samples = wrappingSum(sample, distance.sample);
        auto sum = static_cast<std::uint32_t>(wrappingSum(fraction, distance.fraction));
        if (sum >= 2 * wholeSample) [[unlikely]]
            return *this = SubSamplePos(samples, static_cast<std::int32_t>(sum));
        Instructions::carry<wholeSample>(sum, samples);
        sample = samples;
        fraction = static_cast<std::int32_t>(sum);
        return *this;
    }

    // NOLINTNEXTLINE(modernize-use-nullptr): a comparison with the 0 that the compiler writes
    friend constexpr auto operator<=>(const SubSamplePos&, const SubSamplePos&) = default;
};

/// A start offset is compared with zero: only a greater one has an effect.
inline constexpr SubSamplePos zeroSubSamplePos(0, 0);

} // namespace Aud

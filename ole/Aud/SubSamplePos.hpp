#pragma once

#include "ole/Aud/Wrapping.hpp"

#include <compare>
#include <cstdint>

namespace Aud {

/// A position or distance in source samples, in fixed point, so that it does not drift over long stretches.
///
/// The value is sample + fraction / 1073741823; once normalised the fraction is 0 to 1073741822. Positions
/// are ordered by sample, then by fraction.
struct SubSamplePos {
    /// 2^30 - 1, deliberately not a power of two.
    static constexpr std::int32_t fractionsPerSample = 1073741823;

    std::int64_t sample;
    std::int32_t fraction;

    /// Normalises. A negative fraction that is not whole borrows one sample more and keeps the magnitude of
    /// its remainder: SubSamplePos(5, -1) is 4 samples and a fraction of 1. The host counts on this borrow
    /// rule, although the result is not the arithmetically equal value.
    [[gnu::used]] constexpr SubSamplePos(long wholeSamples, int fractions)
        : sample(wrappingSum(std::int64_t{wholeSamples}, std::int64_t{fractions / fractionsPerSample})),
          fraction(fractions % fractionsPerSample) {
        if (fraction < 0) {
            sample = wrappingSum(sample, std::int64_t{-1});
            fraction = -fraction;
        }
    }

    /// Normalises the sum as the constructor does. That of two normalised positions holds at most one whole
    /// sample in its fraction, which one subtraction moves over; dividing is left to what a host makes by
    /// hand.
    [[gnu::always_inline]] SubSamplePos& operator+=(const SubSamplePos& distance) {
        constexpr std::uint32_t wholeSample = fractionsPerSample;
        std::int64_t samples = wrappingSum(sample, distance.sample);
        const auto sum = static_cast<std::uint32_t>(wrappingSum(fraction, distance.fraction));
        if (sum >= 2 * wholeSample) [[unlikely]]
            return *this = SubSamplePos(samples, static_cast<std::int32_t>(sum));
        // The borrow of one subtraction, twice: it restores the sum, or else counts a sample. Compilers
        // compare twice and materialise the carry, three instructions more per output sample.
        std::uint32_t rest = sum;
        asm("sub %[whole], %[rest]\n\t"
            "cmovc %[sum], %[rest]\n\t"
            "sbb $-1, %[samples]"
            : [rest] "+&r"(rest), [samples] "+&r"(samples)
            : [sum] "r"(sum), [whole] "i"(wholeSample)
            : "cc");
        sample = samples;
        fraction = static_cast<std::int32_t>(rest);
        return *this;
    }

    // NOLINTNEXTLINE(modernize-use-nullptr): a comparison with the 0 that the compiler writes
    friend constexpr auto operator<=>(const SubSamplePos&, const SubSamplePos&) = default;
};

/// What a start offset is compared with: it has an effect only if it is greater.
inline constexpr SubSamplePos zeroSubSamplePos(0, 0);

} // namespace Aud

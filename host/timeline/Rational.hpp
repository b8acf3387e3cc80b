#pragma once

#include <compare>
#include <cstdint>

namespace audlmd::timeline {

/// A fraction in lowest terms, of 128-bit integers: seconds, speeds and frame rates without rounding.
///
/// Operators throw std::overflow_error where a result does not fit. That takes times of many unrelated rates.
class Rational {
public:
    __extension__ using Integer = __int128;

    /// Zero.
    constexpr Rational() = default;
    // A whole number stands wherever a fraction does. NOLINTNEXTLINE(google-explicit-constructor)
    constexpr Rational(std::int64_t whole) : numerator_(whole) {}
    /// Throws std::overflow_error for a denominator of 0.
    Rational(Integer numerator, Integer denominator);

    /// The fraction with the smallest denominator whose relative distance to `number` is below 1e-14: 0.1 is
    /// 1/10. Throws std::overflow_error unless the number is finite and its magnitude 0, or between 1e-9 and
    /// 1e15. Use this for numbers that a person or a program wrote in decimals and meant as a simple
    /// fraction.
    static Rational nearest(double number);

    friend Rational operator+(const Rational& a, const Rational& b);
    friend Rational operator-(const Rational& a, const Rational& b);
    friend Rational operator*(const Rational& a, const Rational& b);
    friend Rational operator/(const Rational& a, const Rational& b);
    friend bool operator==(const Rational& a, const Rational& b) = default;
    friend std::strong_ordering operator<=>(const Rational& a, const Rational& b);
    Rational operator-() const { return Rational() - *this; }

    /// The nearest whole number, of two equally near ones the greater.
    std::int64_t rounded() const;
    /// The next whole number that is not smaller.
    std::int64_t roundedUp() const;
    /// The nearest double; exact only where the denominator is a power of two.
    double value() const;

private:
    std::int64_t roundedDown() const;

    Integer numerator_ = 0;
    Integer denominator_ = 1;
};

/// The number without its sign.
Rational magnitude(const Rational& number);

/// The exact rate that a file means by a rounded number, in frames or samples per second. Numbers within 0.03
/// % of 15, 24, 30, 48, 60, 96 or 120 times 1000/1001 are that rate, after SMPTE ST 12-1: 23.976 and 23.98
/// are 24000/1001. After an hour, 23.976 taken as written is 173 samples of 48 kHz off, and 23.98 is 28,651
/// off. Any other number stands for itself. Throws std::overflow_error unless the rate is from 0.001 to
/// 10,000,000. Use this for every rate that a file gives, before any time is computed.
Rational exactRate(double rate);

/// `count` frames at a rate, in seconds. Fractions of a frame are rounded to 2^-32 of a frame. Throws
/// std::overflow_error unless the result is a number whose magnitude is at most longestSeconds. Negative
/// counts are allowed. Trap: pass an exact rate, because an error of the rate grows with the time.
Rational secondsOf(double count, const Rational& rate);

/// About 31 years. Longer times are taken for mistakes.
inline constexpr double longestSeconds = 1e9;

} // namespace audlmd::timeline

#include "host/timeline/Rational.hpp"

#include <cmath>
#include <limits>
#include <numeric>
#include <sstream>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

using Integer = Rational::Integer;

[[noreturn]] void overflow() {
    throw std::overflow_error("its times do not fit together: too large, or of too many unrelated rates");
}

[[noreturn]] void refuse(double number, const char* what) {
    std::ostringstream sentence;
    sentence << number << what;
    throw std::overflow_error(sentence.str());
}

/// Products and sums of integers go through these two functions, because an overflow of 128 bits reports no
/// error of its own.
Integer product(Integer a, Integer b) {
    Integer result = 0;
    if (__builtin_mul_overflow(a, b, &result))
        overflow();
    return result;
}

Integer sum(Integer a, Integer b) {
    Integer result = 0;
    if (__builtin_add_overflow(a, b, &result))
        overflow();
    return result;
}

/// Euclid's algorithm, in 128 bits only as long as the numbers need them.
Integer commonDivisor(Integer a, Integer b) {
    constexpr Integer most = std::numeric_limits<std::int64_t>::max();
    while (b > most || b < -most) {
        const Integer rest = a % b;
        a = b;
        b = rest;
    }
    if (b == 0)
        return a < 0 ? -a : a;
    // Most fractions are small, and dividing 64 bits is many times faster.
    return std::gcd(static_cast<std::int64_t>(a % b), static_cast<std::int64_t>(b));
}

} // namespace

Rational::Rational(Integer numerator, Integer denominator) {
    if (denominator == 0)
        overflow();
    if (denominator < 0) {
        numerator = product(numerator, -1);
        denominator = product(denominator, -1);
    }
    const Integer divisor = commonDivisor(numerator, denominator);
    numerator_ = numerator / divisor;
    denominator_ = denominator / divisor;
}

Rational Rational::nearest(double number) {
    const double size = std::abs(number);
    if (number == 0.0)
        return {};
    if (!(size >= 1e-9 && size <= 1e15))
        overflow();
    // The convergents of the continued fraction. Each turn takes the whole part off and inverts the rest; the
    // fractions come closer by turns from below and above.
    long double rest = size;
    Integer numerator = 1;
    Integer denominator = 0;
    Integer lastNumerator = 0;
    Integer lastDenominator = 1;
    for (;;) {
        const auto whole = static_cast<Integer>(std::floor(rest));
        const Integer nextNumerator = sum(product(whole, numerator), lastNumerator);
        const Integer nextDenominator = sum(product(whole, denominator), lastDenominator);
        lastNumerator = numerator;
        lastDenominator = denominator;
        numerator = nextNumerator;
        denominator = nextDenominator;
        const long double reached =
            static_cast<long double>(numerator) / static_cast<long double>(denominator);
        rest -= static_cast<long double>(whole);
        if (std::abs(reached - static_cast<long double>(size)) <= 1e-14L * static_cast<long double>(size) ||
            rest <= 0.0L)
            return {number < 0.0 ? -numerator : numerator, denominator};
        rest = 1.0L / rest;
    }
}

Rational operator+(const Rational& a, const Rational& b) {
    const Integer divisor = commonDivisor(a.denominator_, b.denominator_);
    // Over the least common denominator instead of the product, so that sums of equal rates do not grow.
    const Integer ofA = b.denominator_ / divisor;
    const Integer ofB = a.denominator_ / divisor;
    return {sum(product(a.numerator_, ofA), product(b.numerator_, ofB)), product(a.denominator_, ofA)};
}

Rational operator-(const Rational& a, const Rational& b) {
    return a + b * Rational(-1);
}

Rational operator*(const Rational& a, const Rational& b) {
    // Common divisors are taken out before multiplying, so that a product that fits does not overflow on the
    // way.
    const Rational crossed(a.numerator_, b.denominator_);
    const Rational other(b.numerator_, a.denominator_);
    return {product(crossed.numerator_, other.numerator_), product(crossed.denominator_, other.denominator_)};
}

Rational operator/(const Rational& a, const Rational& b) {
    return a * Rational(b.denominator_, b.numerator_);
}

/// The sign of the exact difference decides.
std::strong_ordering operator<=>(const Rational& a, const Rational& b) {
    const Integer difference = (a - b).numerator_;
    if (difference == 0)
        return std::strong_ordering::equal;
    return difference < 0 ? std::strong_ordering::less : std::strong_ordering::greater;
}

/// Integer division cuts towards 0, so a negative fraction is lowered by one more.
std::int64_t Rational::roundedDown() const {
    Integer whole = numerator_ / denominator_;
    if (whole * denominator_ > numerator_)
        --whole;
    if (whole > std::numeric_limits<std::int64_t>::max() || whole < std::numeric_limits<std::int64_t>::min())
        overflow();
    return static_cast<std::int64_t>(whole);
}

/// Half a sample is added and the sum rounded down, so that negative times round like positive ones and
/// neighbours still meet.
std::int64_t Rational::rounded() const {
    return (*this + Rational(1, 2)).roundedDown();
}

std::int64_t Rational::roundedUp() const {
    const std::int64_t down = roundedDown();
    return *this == Rational(down) ? down : down + 1;
}

double Rational::value() const {
    return static_cast<double>(static_cast<long double>(numerator_) / static_cast<long double>(denominator_));
}

Rational magnitude(const Rational& number) {
    return number < Rational() ? -number : number;
}

Rational exactRate(double rate) {
    if (!(rate >= 1e-3 && rate <= 1e7))
        refuse(rate, " is not a rate from 0.001 to 10000000 per second");
    // The exact rates lie 0.1 % beside the whole ones, so 24 is never taken for 23.976.
    constexpr double tolerance = 3e-4;
    for (const std::int64_t nominal : {15, 24, 30, 48, 60, 96, 120}) {
        const Rational exact(nominal * 1000, 1001);
        if (std::abs(rate / exact.value() - 1.0) < tolerance)
            return exact;
    }
    return Rational::nearest(rate);
}

Rational secondsOf(double count, const Rational& rate) {
    // Written so that a NaN is refused.
    if (!(std::abs(count / rate.value()) <= longestSeconds))
        refuse(count, " is too long a time: more than 1e9 seconds");
    constexpr std::int64_t parts = std::int64_t{1} << 32;
    const double whole = std::floor(count);
    // The whole frames stay exact; a fraction with a fixed denominator keeps sums of many times small.
    const std::int64_t fraction = std::llround((count - whole) * static_cast<double>(parts));
    return (Rational(static_cast<std::int64_t>(whole)) + Rational(fraction, parts)) / rate;
}

} // namespace audlmd::timeline

#include "host/timeline/Rational.hpp"

#include <cmath>
#include <sstream>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

[[noreturn]] void refuse(double number, const char* what) {
    std::ostringstream sentence;
    sentence << number << what;
    throw std::overflow_error(sentence.str());
}

} // namespace

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

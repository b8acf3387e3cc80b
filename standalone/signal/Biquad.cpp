#include "host/Biquad.hpp"

#include <bit>
#include <cmath>
#include <cstdint>

namespace Aud::Filter {
namespace {

/// Whether a delay is not to be kept. What rings on in silence would end up among the denormal numbers, at a
/// tenth of the speed, and one infinite or undefined sample of the material must not silence the rest of it.
///
/// One comparison of the bits, because it is made for every sample. The limits are far beyond what is heard.
bool isExtreme(double delay) {
    const auto magnitude = [](double x) { return std::bit_cast<std::uint64_t>(x) << 1; };
    return magnitude(delay) - magnitude(0x1p-200) > magnitude(0x1p200) - magnitude(0x1p-200);
}

} // namespace

void Biquad::setCoefficients(const Coefficients& coefficients) {
    coefficients_ = coefficients;
}

void Biquad::reset() {
    now_ = before_ = Memory{};
}

/// Transposed direct form II, in double precision: the noise of low, narrow bands would show in single.
float Biquad::processSample(float x) {
    double first = now_.firstDelay;
    double second = now_.secondDelay;
    before_ = {first, second, now_.lastResult};

    const double in = x;
    const double out = coefficients_.b0 * in + first;
    // Summed so that the least possible waits for the output: the next sample waits for the first delay.
    first = coefficients_.b1 * in + second - coefficients_.a1 * out;
    second = coefficients_.b2 * in - coefficients_.a2 * out;
    if (isExtreme(first)) [[unlikely]] {
        if (!std::isfinite(first) || isExtreme(second))
            first = second = 0.0;
    }
    now_ = {first, second, static_cast<float>(out)};
    return now_.lastResult;
}

// NOLINTNEXTLINE(readability-make-member-function-const): the renderer calls it by this name
float Biquad::getLastProcessSampleResult() {
    return now_.lastResult;
}

} // namespace Aud::Filter

#include "host/Biquad.hpp"

#include <cmath>

namespace Aud::Filter {

void Biquad::setCoefficients(const Coefficients& coefficients) {
    coefficients_ = coefficients;
}

void Biquad::reset() {
    now_ = before_ = Memory{};
}

/// Transposed direct form II, in double precision: the noise of low, narrow bands would show in single.
float Biquad::processSample(float x) {
    before_ = now_;
    // What rings on in silence would end up among the denormal numbers, at a tenth of the speed.
    constexpr double inaudible = 1e-60;
    if (x == 0.0F && std::abs(now_.firstDelay) < inaudible && std::abs(now_.secondDelay) < inaudible)
        now_.firstDelay = now_.secondDelay = 0.0;

    const double in = x;
    const double out = coefficients_.b0 * in + now_.firstDelay;
    now_.firstDelay = coefficients_.b1 * in - coefficients_.a1 * out + now_.secondDelay;
    now_.secondDelay = coefficients_.b2 * in - coefficients_.a2 * out;
    // One infinite or undefined sample of the material must not silence the rest of it.
    if (!std::isfinite(out)) [[unlikely]]
        now_.firstDelay = now_.secondDelay = 0.0;
    return now_.lastResult = static_cast<float>(out);
}

float Biquad::getLastProcessSampleResult() {
    return now_.lastResult;
}

} // namespace Aud::Filter

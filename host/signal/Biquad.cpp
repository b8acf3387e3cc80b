#define AUDLMD_HOST_OPERATION
#include "host/signal/Biquad.ipp"

namespace HostStorage {

/// Leaves the delays alone. The pairs keep together what one vector instruction multiplies.
void Biquad::setCoefficients(const Coefficients& coefficients) {
    b0_ = coefficients.b0;
    b1b2_ = {coefficients.b1, coefficients.b2};
    a1a2_ = {coefficients.a1, coefficients.a2};
}

/// Clears the state before the last sample as well, so that a step back after a reset leads to silence.
void Biquad::reset() {
    delays_ = delaysBefore_ = Pair{};
    lastResult_ = lastResultBefore_ = 0.0F;
}

} // namespace HostStorage

#include "host/signal/GainLaws.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace audlmd {
namespace {

/// The value between 0 and the top that is nearest. A NaN gives 0, silence.
double limited(double value, double top) {
    return value > 0.0 ? std::min(value, top) : 0.0;
}

/// Three square roots, which every processor rounds correctly. The result of std::pow may differ from one C
/// library to another.
double eighthRoot(double x) {
    return std::sqrt(std::sqrt(std::sqrt(x)));
}

double eighthPower(double x) {
    const double square = x * x;
    return square * square * square * square;
}

/// The denominator of the fader law.
double unityTerm() {
    return std::expm1(faderLawExponent);
}

} // namespace

double gainOfDecibels(double decibels) {
    return std::pow(10.0, decibels / 20.0);
}

double decibelsOfGain(double gain) {
    return 20.0 * std::log10(gain);
}

/// expm1 keeps the digits near silence that exp(x) - 1 would cancel.
double mixerStyleGain(double uValue) {
    return std::expm1(faderLawExponent * eighthRoot(limited(uValue, faderTop))) / unityTerm();
}

/// log1p undoes the expm1 of mixerStyleGain(), and keeps the same digits.
double mixerStyleUValue(double gain) {
    // A gain of 4 lies above the top, so that the u-value alone decides where the top is.
    const double u = eighthPower(std::log1p(limited(gain, 4.0) * unityTerm()) / faderLawExponent);
    return std::min(u, faderTop);
}

double mixerStyleUValueOfDecibels(double decibels) {
    return mixerStyleUValue(gainOfDecibels(decibels));
}

AmplifiedLevel amplifiedLevelOf(double decibels) {
    // 20 log10(2).
    constexpr double decibelsPerDoubling = 6.020599913279624;
    const double doublings = std::ceil(std::max(0.0, decibels - faderTopDecibels) / decibelsPerDoubling);
    return {.uValue =
                static_cast<float>(mixerStyleUValueOfDecibels(decibels - doublings * decibelsPerDoubling)),
            .doublings = static_cast<int>(doublings)};
}

double constantPowerGain(double uValue) {
    return std::sin(limited(uValue, 1.0) * (std::numbers::pi / 2.0));
}

} // namespace audlmd

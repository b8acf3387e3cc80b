#pragma once

namespace audlmd {

/// The gain of a number of decibels, 10^(decibels / 20). Minus infinity gives 0. Use this for gains outside
/// the curves, such as the gain of a whole strip.
/// \snippet signal.cpp gain laws
double gainOfDecibels(double decibels);
/// The inverse. A gain of 0 gives minus infinity.
double decibelsOfGain(double gain);

/// The largest u-value of the mixer-style curve, a fader's end stop, and the gain there.
inline constexpr double faderTop = 1.5;
inline constexpr double faderTopDecibels = 10.0;

/// The k of the mixer-style law: ln(10) / 2 over 1.5^(1/8) - 1. This k makes u = 1.5 ten decibels louder than
/// u = 1.0, to 2e-9 dB; the rest is due to the two -1 in the law.
inline constexpr double faderLawExponent = 22.14471046095256952;

/// The law behind the mixer-style curve: a console fader, silent at u = 0, with unity gain at u = 1.0 and +10
/// dB at the end stop, u = 1.5.
///
///     gain(u) = (exp(k u^(1/8)) - 1) / (exp(k) - 1),   k such that gain(1.5) = +10 dB
///
/// The faders of Ardour and other free mixing programs follow the same eighth-root law, written there as gain
/// = 2^((198 p^(1/8) - 192) / 6), with +6 dB at p = 1: decibels go with the eighth root of the travel, which
/// spreads the useful range and compresses the quiet end. Two things differ. k is for +10 dB at the top,
/// which puts unity at exactly two thirds of the travel. The two -1, which are below -190 dB, make the lower
/// end of the travel truly silent. Some values: u = 0.75 is -6.8 dB, 0.5 is -16 dB, 0.25 is -31 dB, 0.1 is
/// -48 dB.
///
/// U-values beyond the travel give the gain of the nearer end stop. A NaN is silent.
/// \snippet signal.cpp gain laws
double mixerStyleGain(double uValue);
/// The inverse. A gain outside 0 to +10 dB gives the nearer end stop.
double mixerStyleUValue(double gain);
/// The u-value at which the mixer-style law has a gain of so many decibels. Use for levels that a user gives.
/// Trap: a level above +10 dB is limited without an error; check the range first where the user should know.
/// \snippet signal.cpp gain laws
double mixerStyleUValueOfDecibels(double decibels);

/// The most that a strip may be amplified.
inline constexpr double mostGainDecibels = 60.0;

/// A gain beyond the fader's end stop: a level, and how often the sound is doubled beside it. A doubling is
/// exact.
struct AmplifiedLevel {
    /// Of the mixer-style curve.
    float uValue;
    int doublings;
};
/// In decibels, from minus infinity up. Up to faderTopDecibels there are no doublings.
/// \snippet signal.cpp gain laws
AmplifiedLevel amplifiedLevelOf(double decibels);

/// The law behind the constant-power curve: sin(u pi/2) for u from 0 to 1.0; other u-values give the gain of
/// the nearer end. Where two u-values add up to 1, the squares of the gains add up to 1. At the middle of a
/// crossfade, u = 0.5, each side is 3 dB down.
/// \snippet signal.cpp gain laws
double constantPowerGain(double uValue);

} // namespace audlmd

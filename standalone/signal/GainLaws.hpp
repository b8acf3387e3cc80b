#pragma once

namespace audlmd {

double gainOfDecibels(double decibels);
/// Minus infinity for a gain of 0.
double decibelsOfGain(double gain);

/// The largest u-value of the mixer-style curve, and its gain: a fader's end stop.
inline constexpr double faderTop = 1.5;
inline constexpr double faderTopDecibels = 10.0;
/// The k of the mixer-style law: ln(10) / 2 over 1.5^(1/8) - 1. It makes u = 1.5 ten decibels louder than
/// u = 1.0, to 2e-9 dB, because of the law's two -1.
inline constexpr double faderLawExponent = 22.14471046095256952;

/// The law behind the mixer-style curve: a console fader, silent at u = 0, with unity gain at u = 1.0 and +10
/// dB at its end stop of u = 1.5.
///
///     gain(u) = (exp(k u^(1/8)) - 1) / (exp(k) - 1),   k such that gain(1.5) = +10 dB
///
/// This is the eighth-root law that the faders of Ardour and other free mixing programs follow, there written
/// as gain = 2^((198 p^(1/8) - 192) / 6) for +6 dB at p = 1: decibels go with the eighth root of the travel,
/// which spreads the useful range and compresses the quiet end. Two things differ: k is for +10 dB at the
/// top, which puts unity at exactly two thirds of the travel, and the two -1 make the end of the travel truly
/// silent; they are below -190 dB. Some values: u = 0.75 is -6.8 dB, 0.5 is -16 dB, 0.25 -31 dB, 0.1 -48 dB.
///
/// Clamped to the travel, as the curve is.
double mixerStyleGain(double uValue);
/// The inverse. A gain outside 0 to +10 dB gives the nearer end stop.
double mixerStyleUValue(double gain);
/// The u-value at which the mixer-style law gives so many decibels.
double mixerStyleUValueOfDecibels(double decibels);

/// The law behind the constant-power curve: sin(u pi/2) for u from 0 to 1.0, clamped. The squares of two
/// gains whose u-values add up to 1 add up to 1.
double constantPowerGain(double uValue);
/// The inverse. A gain outside 0 to 1 gives the nearer end.
double constantPowerUValue(double gain);

} // namespace audlmd

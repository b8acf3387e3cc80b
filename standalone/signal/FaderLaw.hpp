#pragma once

namespace audlmd {

/// The k of the fader law: ln(10) / 2 over 1.5^(1/8) - 1, which makes u = 1.5 ten decibels louder than
/// u = 1.0 (to 2e-9 dB, because of the law's two -1).
inline constexpr double faderLawExponent = 22.14471046095256952;

} // namespace audlmd

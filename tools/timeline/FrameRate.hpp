#pragma once

#include "tools/timeline/Rational.hpp"

namespace audlmd::timeline {

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

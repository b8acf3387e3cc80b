#pragma once

#include "ole/Aud/SubSamplePos.hpp"

#include <cstdint>

namespace audlmd {

/// The slowest and the fastest speed of a strip, in source samples per output sample. The filtering converter
/// limits itself further, see filteringSpeedInForce().
inline constexpr double slowestSpeed = 1e-6;
inline constexpr double fastestSpeed = 1e6;

/// Throws std::invalid_argument unless the speed is a number from slowestSpeed to fastestSpeed.
void requireSpeed(double speed);

/// The nearest position to a number of source samples, ties away from zero. Throws std::invalid_argument
/// unless it is a number of magnitude up to 2^53. Negative numbers give the arithmetically equal position: a
/// negative whole part and a fraction of 0 or more.
Aud::SubSamplePos subSamplePosOf(double sourceSamples);
double sourceSamplesOf(const Aud::SubSamplePos& position);

/// start + count x step, exactly. Both must not be negative, and the sum must fit.
Aud::SubSamplePos advanced(const Aud::SubSamplePos& start, const Aud::SubSamplePos& step,
                           std::uint64_t count);

/// How many of start, start + step, start + 2 step ... are at most `last`, counted up to 2^63 - 1. None of
/// the three is negative, and the step is positive.
std::uint64_t positionsUpTo(const Aud::SubSamplePos& last, const Aud::SubSamplePos& start,
                            const Aud::SubSamplePos& step);

/// What the filtering converter makes of a speed: at most cfgAudioPlaybackSpeedLimit, at least 1/1024.
double filteringSpeedInForce(double speed);

} // namespace audlmd

#pragma once

#include "ole/Aud/SubSamplePos.hpp"

#include <cstdint>
#include <optional>

namespace audlmd {

/// The limits of a strip's speed, in source samples per output sample. The filtering converter has narrower
/// limits, see filteringSpeedInForce().
inline constexpr double slowestSpeed = 1e-6;
inline constexpr double fastestSpeed = 1e6;

/// Whether the speed is a number from slowestSpeed to fastestSpeed.
/// \snippet signal.cpp speed
inline bool isSpeed(double speed) {
    return speed >= slowestSpeed && speed <= fastestSpeed;
}
/// Throws std::invalid_argument unless isSpeed().
void requireSpeed(double speed);

/// Two whole numbers: so many samples of the source last as long as so many of the output.
struct SpeedRatio {
    std::int64_t source = 1;
    std::int64_t output = 1;
};
/// The longest of the two numbers.
inline constexpr std::int64_t longestRatio = std::int64_t{1} << 23;

/// The ratio of the smallest numbers within 1e-12 of a speed, above speed 1 within 1e-12 of itself. Nothing
/// where one of the numbers is above longestRatio: for speeds right beside a simple ratio, such as
/// 1.1000000001, and for one in a hundred of those without any. The speed must be above 1e-12.
std::optional<SpeedRatio> ratioOf(double speed);

/// The position nearest to a number of source samples; ties go away from zero. A negative number gives the
/// arithmetically equal position: a negative whole part, and a fraction of 0 or more. Throws
/// std::invalid_argument unless the number has a magnitude of at most 2^53. A speed is turned into a step by
/// the same function: the step is the position after one output sample.
/// \snippet signal.cpp positions
Aud::SubSamplePos subSamplePosOf(double sourceSamples);
/// The inverse, to the nearest double.
double sourceSamplesOf(const Aud::SubSamplePos& position);

/// start + count x step, exactly. Start and step must not be negative, and the sum must fit into a position.
/// Use this for the position of an output sample far away, where repeated addition would take too long.
/// \snippet signal.cpp positions
Aud::SubSamplePos advanced(const Aud::SubSamplePos& start, const Aud::SubSamplePos& step,
                           std::uint64_t count);

/// The number of positions start, start + step, start + 2 step ... that are at most `last`, limited to 2^63 -
/// 1. No argument may be negative, and the step must be positive. Use this to find how many output samples a
/// range of source samples is good for.
/// \snippet signal.cpp positions
std::uint64_t positionsUpTo(const Aud::SubSamplePos& last, const Aud::SubSamplePos& start,
                            const Aud::SubSamplePos& step);

/// The number of steps from `start` to the next position without a fraction; at least 1, or 0 where there is
/// no such position. Neither argument may be negative.
std::uint64_t stepsToWholePosition(const Aud::SubSamplePos& start, const Aud::SubSamplePos& step);

/// The speed at which the filtering converter plays when asked for `speed`: at least 1/1024, at most
/// cfgAudioPlaybackSpeedLimit. Without the library there is no upper limit.
/// \snippet signal.cpp speed
double filteringSpeedInForce(double speed);
/// Whether the filtering converter plays at a speed as asked. The linear converter does at any.
bool isFilteringSpeed(double speed);
/// Throws std::invalid_argument, naming the limits and the linear converter, unless isFilteringSpeed().
void requireFilteringSpeed(double speed);

} // namespace audlmd

#include "host/signal/Speed.hpp"

#include "ole/Aud/SpeedLimit.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <utility>

// Weak, so that a program that uses only the cache or the curves of this library need not load the renderer.
// NOLINTNEXTLINE(readability-redundant-declaration)
[[gnu::weak]] extern double cfgAudioPlaybackSpeedLimit;

namespace audlmd {
namespace {

using Aud::SubSamplePos;
__extension__ using Fractions = __int128;

constexpr std::int64_t perSample = SubSamplePos::fractionsPerSample;

/// A position as one whole number. 128 bits hold any position, and any sum that fits into one.
Fractions fractionsOf(const SubSamplePos& position) {
    return static_cast<Fractions>(position.sample) * perSample + position.fraction;
}

/// Of a number, modulo a modulus without a common factor (the extended Euclidean algorithm).
std::int64_t inverse(std::int64_t number, std::int64_t modulus) {
    std::int64_t remainder = modulus;
    std::int64_t nextRemainder = number % modulus;
    std::int64_t factor = 0;
    std::int64_t nextFactor = 1;
    while (nextRemainder != 0) {
        const std::int64_t quotient = remainder / nextRemainder;
        remainder = std::exchange(nextRemainder, remainder - quotient * nextRemainder);
        factor = std::exchange(nextFactor, factor - quotient * nextFactor);
    }
    return factor < 0 ? factor + modulus : factor;
}

} // namespace

void requireSpeed(double speed) {
    if (isSpeed(speed))
        return;
    std::ostringstream sentence;
    sentence << "the speed must be a number from " << slowestSpeed << " to " << fastestSpeed << ", not "
             << speed << " (backwards is a direction of its own)";
    throw std::invalid_argument(sentence.str());
}

/// The fraction of smallest numbers between the two ends of an interval: both ends as continued fractions,
/// for as long as they agree, and one more term.
std::optional<SpeedRatio> ratioOf(double speed) {
    const long double tolerance = 1e-12L * std::max(1.0L, static_cast<long double>(speed));
    long double low = static_cast<long double>(speed) - tolerance;
    long double high = static_cast<long double>(speed) + tolerance;
    SpeedRatio before{0, 1};
    SpeedRatio ratio{1, 0};
    for (;;) {
        const long double whole = std::ceil(low);
        const bool isLast = whole <= high;
        const long double term = isLast ? whole : std::floor(low);
        const long double most = std::max(term * static_cast<long double>(ratio.source),
                                          term * static_cast<long double>(ratio.output));
        if (most > static_cast<long double>(longestRatio))
            return std::nullopt;
        const auto times = static_cast<std::int64_t>(term);
        before = std::exchange(ratio,
                               {times * ratio.source + before.source, times * ratio.output + before.output});
        if (std::max(ratio.source, ratio.output) > longestRatio)
            return std::nullopt;
        if (isLast)
            return ratio;
        low = std::exchange(high, 1.0L / (low - term));
        low = 1.0L / (low - term);
    }
}

SubSamplePos subSamplePosOf(double sourceSamples) {
    if (!(std::abs(sourceSamples) <= 0x1p53))
        throw std::invalid_argument("a position in source samples must be a number up to 2^53");
    // Rounding may give a fraction of one whole sample; the constructor of the position carries that over.
    const double whole = std::floor(sourceSamples);
    const double fraction = std::round((sourceSamples - whole) * static_cast<double>(perSample));
    return {static_cast<long>(whole), static_cast<int>(fraction)};
}

double sourceSamplesOf(const SubSamplePos& position) {
    return static_cast<double>(position.sample) +
           static_cast<double>(position.fraction) / static_cast<double>(perSample);
}

SubSamplePos advanced(const SubSamplePos& start, const SubSamplePos& step, std::uint64_t count) {
    const Fractions sum = fractionsOf(start) + fractionsOf(step) * static_cast<Fractions>(count);
    return {static_cast<long>(sum / perSample), static_cast<int>(sum % perSample)};
}

std::uint64_t positionsUpTo(const SubSamplePos& last, const SubSamplePos& start, const SubSamplePos& step) {
    constexpr Fractions most = std::numeric_limits<std::int64_t>::max();
    const Fractions distance = fractionsOf(last) - fractionsOf(start);
    // One more than the steps that fit, because the start itself is a position.
    return distance < 0 ? 0 : static_cast<std::uint64_t>(std::min(distance / fractionsOf(step) + 1, most));
}

/// Solves start + n step = 0 modulo the fractions of a sample, for the least n.
std::uint64_t stepsToWholePosition(const SubSamplePos& start, const SubSamplePos& step) {
    const std::int64_t common = std::gcd(std::int64_t{step.fraction}, perSample);
    if (start.fraction % common != 0)
        return 0;
    const std::int64_t period = perSample / common;
    // All three factors are below 2^30.
    const std::int64_t steps =
        (period - start.fraction / common) % period * inverse(step.fraction / common, period) % period;
    return static_cast<std::uint64_t>(steps == 0 ? period : steps);
}

double filteringSpeedInForce(double speed) {
    // The library limits factors, which are inverse speeds, to 1024.
    constexpr double slowest = 1.0 / 1024.0;
    if (speed < slowest)
        return slowest;
    // The variable has no address where no renderer is loaded.
    if (&cfgAudioPlaybackSpeedLimit != nullptr && speed > cfgAudioPlaybackSpeedLimit)
        return cfgAudioPlaybackSpeedLimit;
    return speed;
}

bool isFilteringSpeed(double speed) {
    return filteringSpeedInForce(speed) == speed;
}

void requireFilteringSpeed(double speed) {
    if (isFilteringSpeed(speed))
        return;
    std::ostringstream sentence;
    sentence << "the filtering converter plays at speeds from " << filteringSpeedInForce(slowestSpeed)
             << " to " << filteringSpeedInForce(fastestSpeed)
             << " (the setting AudioPlaybackSpeedLimit), not at " << speed
             << ": choose the linear converter for this speed";
    throw std::invalid_argument(sentence.str());
}

} // namespace audlmd

#pragma once

#include "standalone/cache/MaterialCache.hpp"
#include "standalone/signal/StripPlayer.hpp"
#include "tools/audlmd/plot/Figures.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace audlmd::plot {

/// What a strip makes of a material of `length` samples that is 1.0 at its first `ones` samples and 0.0 after
/// them, rendered by the library: its gain over time for a constant, its impulse response for a single one.
/// The settings' cookie and range are set here. The player's exceptions pass.
class GainTrace {
public:
    GainTrace(StripSettings settings, std::int64_t length, std::int64_t ones);

    std::int64_t length() const { return static_cast<std::int64_t>(player_->outputLength()); }

    /// The next samples, fewer at the end, none after it.
    std::span<const float> next();

private:
    MaterialCache cache_;
    std::optional<StripPlayer> player_;
    std::vector<float> block_;
};

/// The gain of the settings over so many samples, as a line over seconds with at most a few thousand points:
/// of every stretch of time its lowest and its highest gain.
std::vector<Point> gainOverTime(const StripSettings& settings, std::int64_t length, int sampleRate,
                                const Watcher& watcher);

/// The same line in decibels.
std::vector<Point> inDecibels(std::vector<Point> gains);

/// An axis for levels that reaches around all points, in whole multiples of 6 dB, but not below `lowest`.
Axis decibelAxis(const std::vector<Series>& series, double lowest);

} // namespace audlmd::plot

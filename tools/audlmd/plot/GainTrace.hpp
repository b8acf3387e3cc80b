#pragma once

#include "host/cache/MaterialCache.hpp"
#include "host/signal/StripPlayer.hpp"
#include "tools/audlmd/plot/Figures.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace audlmd::command {

/// Renders a strip over a material of `length` samples: 1.0 in the first `ones` samples, 0.0 after them. With
/// ones throughout, the output is the gain over time; with a single one, the output is the impulse response.
class GainTrace {
public:
    /// Cookie and range of the settings are set here. Throws std::invalid_argument for settings that a player
    /// refuses.
    GainTrace(StripSettings settings, std::int64_t length, std::int64_t ones);

    /// Of the output, in samples.
    std::int64_t length() const { return static_cast<std::int64_t>(player_->outputLength()); }

    /// The next samples: 65536, fewer at the end, none after the end. The next call overwrites them.
    std::span<const float> next();

private:
    MaterialCache cache_;
    std::optional<StripPlayer> player_;
    std::vector<float> block_;
};

/// The gain of the settings over `length` samples, as points over seconds. The time is cut into about 1500
/// parts; of each part the points show the lowest and the highest gain.
std::vector<plot::Point> gainOverTime(const StripSettings& settings, std::int64_t length, int sampleRate,
                                      const Watcher& watcher);

/// The same line in decibels.
std::vector<plot::Point> inDecibels(std::vector<plot::Point> gains);

/// An axis for levels that reaches around all points, in whole multiples of 6 dB, but not below `lowest`.
plot::Axis decibelAxis(const std::vector<plot::Series>& series, double lowest);

} // namespace audlmd::command

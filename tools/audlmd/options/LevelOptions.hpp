#pragma once

#include "host/deliver/DeliveryGain.hpp"

#include <optional>

namespace CLI {
class App;
}

namespace audlmd::command {

/// The options that bring an output to a level by one gain.
struct LevelOptions {
    /// In LUFS, decibels over full scale of true peaks, and decibels over full scale of samples.
    std::optional<double> loudness;
    std::optional<double> truePeak;
    std::optional<double> normalise;
    /// Whether less than the loudness is taken where peaks are in the way.
    bool loudnessOrPeak = false;

    /// Declares the options in the group "Levels" of the help. This object must outlive the app.
    void declare(CLI::App& app);

    /// Throws CommandError for options that cannot stand together, alone, or without an output.
    void requireCompatible(bool hasOutput) const;

    bool areGiven() const { return loudness || normalise; }
    /// The option that is given, for messages.
    const char* name() const { return loudness ? "--loudness" : "--normalise"; }

    /// `clips`: whether the output's format cuts off what is beyond full scale.
    DeliveryTarget target(bool clips) const;
};

} // namespace audlmd::command

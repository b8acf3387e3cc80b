#pragma once

#include "host/mix/Media.hpp"
#include "host/signal/StripPlayer.hpp"
#include "tools/audlmd/options/Parsers.hpp"
#include "tools/audlmd/options/Range.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace audlmd::command {

/// The input as a player reads it: after the conversion of its sample rate, where there is one.
struct StripInput {
    /// For messages.
    std::filesystem::path path;
    /// At `sampleRate`.
    std::int64_t frames = 0;
    /// Of the output, in samples per second.
    int sampleRate = 48000;
    /// At `sampleRate`.
    std::vector<Marker> markers = {};
};

/// What the options say of an input.
struct ResolvedStrip {
    StripSettings settings;
    /// What is not as it was asked. May hold empty ones.
    std::vector<std::string> notes;
};

/// The options that say which range of an input is played, and how. They are read without the input:
/// settingsFor() resolves what depends on the input's sample rate and length.
struct StripOptions {
    bool reverse = false;
    /// In the input.
    RangeOptions range;

    /// In the order of the command line, which is the order of the cascade.
    std::vector<EqualiserBand> equaliser;
    std::optional<FadeValue> fadeIn;
    std::optional<FadeValue> fadeOut;
    /// In decibels.
    std::optional<double> gain;
    /// The u-value of the outer level.
    std::optional<float> level;
    /// A CSV file, see readAutomationFile(). Takes the place of `level`.
    std::optional<std::filesystem::path> automation;
    bool automationReverse = false;
    std::optional<SpeedValue> speed;
    /// Not set: best where there is a speed other than 1, filtering at speed 1, else none.
    std::optional<Converter> converter;

    /// Declare the options of the groups "Range" and "Sound". This object must outlive the app.
    void declareRange(CLI::App& app);
    void declareSound(CLI::App& app);

    /// Throws CommandError for options that cannot stand together, or alone. Call this before settingsFor().
    void requireCompatible() const;

    /// Whether the samples of the range stay as they are. Their order may be reversed.
    bool changesNoSample() const;

    /// How often the input is doubled before a player reads it, for the part of the gain that is beyond the
    /// levels of a player.
    int doublings() const;
    /// The input after that.
    Media amplified(Media input) const;

    /// The settings of a player of any channel of amplified(); the caller sets the cookie. Reads the
    /// automation file. Throws CommandError. Times are rounded to samples at input.sampleRate; fades and
    /// automation become source samples. The range is what RangeOptions::in() makes of it, with its note.
    ResolvedStrip settingsFor(const StripInput& input) const;
};

} // namespace audlmd::command

#pragma once

#include "tools/audlmd/mix/TrackChoice.hpp"
#include "tools/audlmd/options/OutputOptions.hpp"
#include "tools/audlmd/options/StripOptions.hpp"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// The options of `play`. The rate is the device's.
struct PlayOptions : RenderingOptions {
    /// Sound files and timelines, in the order of playing. Empty: only the devices are listed.
    std::vector<std::filesystem::path> inputs;
    /// See MediaFinder.
    std::vector<std::filesystem::path> media;
    /// Of timelines.
    TrackChoice tracks;

    bool listDevices = false;
    /// Not set: the default device.
    std::optional<std::string> device;
    /// Frames that the device asks for at a time.
    std::size_t block = 256;
    /// From rendering to the loudspeaker, in milliseconds.
    double latency = 80.0;

    /// Where playing starts in the first input. Not set: the start, or backwards the end.
    std::optional<TimeValue> from;
    /// Equaliser, fades and levels of sound files; the gain of timelines, too. Speed and direction are the
    /// transport's first ones.
    StripOptions strip;

    /// Declares all options with their help. This object must outlive the app.
    void declare(CLI::App& play);

    /// Throws CommandError for options that cannot stand together, or alone.
    void requireCompatible() const;

    /// The first speed of the transport: negative backwards.
    double speed() const;
    /// Whether that speed is played by the linear converter, though nobody asked for it.
    bool changesConverter() const;
};

} // namespace audlmd::command

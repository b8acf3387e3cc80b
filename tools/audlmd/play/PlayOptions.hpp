#pragma once

#include "tools/audlmd/options/StripOptions.hpp"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// The options of `play`.
struct PlayOptions {
    /// A sound file or a timeline. Empty: only the devices are listed.
    std::filesystem::path input;
    /// In samples per second. Not set: the input's.
    std::optional<int> rate;
    /// See MediaFinder.
    std::vector<std::filesystem::path> media;

    bool listDevices = false;
    /// Not set: the default device.
    std::optional<std::string> device;
    /// Frames that the device asks for at a time.
    std::size_t block = 256;
    /// From rendering to the loudspeaker, in milliseconds.
    double latency = 80.0;
    /// Whether the functions of the loaded library render, and not those compiled into the command.
    bool throughTables = false;

    /// Where playing starts. Not set: the start, or backwards the end.
    std::optional<TimeValue> from;
    /// Equaliser, fades and levels of a sound file. Speed and direction are the transport's first ones.
    StripOptions strip;

    /// Declares all options with their help. This object must outlive the app.
    void declare(CLI::App& play);

    /// Throws CommandError for options that cannot stand together, or alone.
    void requireCompatible() const;

    /// Looks into the file, see isTimelineFile().
    bool isTimeline() const;
    /// The first speed of the transport: negative backwards.
    double speed() const;
};

} // namespace audlmd::command

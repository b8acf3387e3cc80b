#pragma once

#include "host/mix/Media.hpp"
#include "host/services/RenderFunctions.hpp"
#include "host/signal/Unclipped.hpp"
#include "tools/audlmd/files/OutputFormat.hpp"
#include "tools/audlmd/options/ChannelOptions.hpp"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace audlmd::command {

/// A sound file that is open.
struct OpenInput {
    Media media;
    /// How its channels are folded down, in a line for the user. Empty: they are not.
    std::string note;
};

/// The options of every command that renders.
struct RenderingOptions {
    ChannelOptions channels;
    /// In samples per second. Not set: the input's.
    std::optional<int> rate;
    /// Whether the functions of the loaded library render, and not those compiled into the command.
    bool throughTables = false;

    /// What holds without --rate and --channels, for the help.
    struct Defaults {
        std::string rate = "the input's";
        std::string channels = "the input's";
    };

    /// Declares the options in a group of the help. This object must outlive the app.
    void declareRendering(CLI::App& app, const std::string& group, const Defaults& defaults);

    /// What players take for `inlined`.
    RenderFunctionLookUp<Unclipped> inlined() const;

    /// Opens a sound file, with the channels and at the rate of the output. Throws SoundFileError, and
    /// CommandError for a file without samples, or without the channels.
    OpenInput open(const std::filesystem::path& input) const;
};

/// The options of every command that renders into a sound file.
struct OutputOptions : RenderingOptions {
    /// Empty: nothing is rendered.
    std::filesystem::path output;
    /// Not set: that of the kind of file.
    std::optional<FormatId> format;
    /// Samples per render call.
    std::size_t block = 4096;
    /// The most threads that render. 0: as many as there are processors.
    std::size_t threads = 0;

    /// Declares the options in the group "Output", with blocks of up to `mostBlock` samples. `outputHelp`
    /// describes --output.
    void declareOutput(CLI::App& app, const std::string& outputHelp, const Defaults& defaults,
                       std::size_t mostBlock);
};

} // namespace audlmd::command

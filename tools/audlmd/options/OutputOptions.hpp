#pragma once

#include "host/deliver/Delivery.hpp"
#include "host/mix/Media.hpp"
#include "host/mix/Relabel.hpp"
#include "host/services/RenderFunctions.hpp"
#include "host/signal/Unclipped.hpp"
#include "host/timeline/MediaFinder.hpp"
#include "tools/audlmd/JobLog.hpp"
#include "tools/audlmd/cache/DecodingOptions.hpp"
#include "tools/audlmd/files/FileKind.hpp"
#include "tools/audlmd/files/OutputFile.hpp"
#include "tools/audlmd/files/SpooledInput.hpp"
#include "tools/audlmd/options/ChannelOptions.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace audlmd::command {

/// A sound file that is open.
struct OpenInput {
    Media media;
    /// What of it is not as in the file, such as a fold-down, in lines for the user.
    std::vector<std::string> notes;
};

/// The options of every command that opens sound files.
struct InputOptions {
    /// Where one of these is set, the input has no header; then all must be.
    std::optional<FormatId> inputFormat;
    std::optional<int> inputRate;
    std::optional<int> inputChannels;
    DecodingOptions decoding;
    /// What becomes of truncated recordings.
    bool partial = false;
    std::optional<Relabel> relabel;
    /// How the job tells what it does.
    JobStyle style;

    /// Declares the options on an input without a header and on the input's streams, in the group "Input" of
    /// the help. This object must outlive the app.
    void declareInput(CLI::App& app);
    /// Declares --relabel, in the same group.
    void declareRelabel(CLI::App& app);
    /// Declares the options on films and damaged recordings, in the same group.
    void declareMaterial(CLI::App& app);

    /// A file that opens the input at random: its own, that of a copy of what `-`, a pipe or samples without
    /// a header bring, or what is decoded of a film. Throws CommandError and SoundFileError.
    PlayableFile atHand(const std::filesystem::path& input) const;

    /// For the media of a timeline. This object must outlive the search.
    timeline::MediaSearch mediaSearch(std::vector<std::filesystem::path> folders,
                                      std::function<void(const std::filesystem::path&)> looksAt = {}) const;

    /// The rate at which the input is taken.
    Relabel taken() const { return relabel.value_or(Relabel()); }
    Truncated truncated() const { return partial ? Truncated::taken : Truncated::refused; }

private:
    std::optional<RawLayout> rawInput() const;
};

/// The options of every command that renders.
struct RenderingOptions : InputOptions {
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

    /// Opens what atHand() has given for an input, with the channels and at the rate of the output. Throws
    /// SoundFileError, and CommandError for a file without samples, or without the channels, which name the
    /// input.
    OpenInput open(const std::filesystem::path& file, const std::filesystem::path& input) const;
};

/// The options of every command that renders into a sound file.
struct OutputOptions : RenderingOptions {
    /// All from one pass. Empty: nothing is rendered.
    std::vector<std::filesystem::path> outputs;
    /// Never null. Not set: the name of the output says it.
    std::optional<const FileKind*> kind;
    /// Not set: that of the kind of file, or of the input.
    std::optional<FormatId> format;
    /// How integers are rounded: to the nearest step where neither is set.
    bool dither = false;
    bool truncate = false;
    /// Samples per render call.
    std::size_t block = 4096;
    /// The most threads that render. 0: as many as there are processors.
    std::size_t threads = 0;

    /// Declares the options in the group "Output", with blocks of up to `mostBlock` samples. `outputHelp`
    /// describes --output.
    void declareOutput(CLI::App& app, const std::string& outputHelp, const Defaults& defaults,
                       std::size_t mostBlock);

    /// Their names, for messages.
    std::string outputNames() const;

    /// What an output holds, and what of that is not as it was asked, in a line.
    struct Stored {
        FormatId format;
        Rounding rounding;
        std::string note;
    };
    /// What each of the outputs holds. `kept` is the format that the samples have by themselves, if they do:
    /// without --format a kind that holds it keeps it. Throws CommandError where the options exclude each
    /// other, or fit no output.
    std::vector<Stored> storedIn(const std::vector<OutputTarget>& targets,
                                 std::optional<FormatId> kept = std::nullopt) const;
    /// How samples become those of a format. Throws CommandError where the options exclude each other or do
    /// not fit the format.
    Rounding roundingTo(FormatId outputFormat) const;
};

} // namespace audlmd::command

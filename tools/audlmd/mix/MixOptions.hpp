#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"
#include "tools/audlmd/mix/TrackChoice.hpp"
#include "tools/audlmd/options/LevelOptions.hpp"
#include "tools/audlmd/options/OutputOptions.hpp"
#include "tools/audlmd/options/PeaksOptions.hpp"
#include "tools/audlmd/options/Range.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace audlmd::command {

/// As of MixerOptions.
inline constexpr std::size_t mostMixBlock = 65536;

/// One of several parts of equal length, to within a sample.
struct Slice {
    /// From 1 to `count`.
    std::int64_t number = 1;
    std::int64_t count = 1;
};

/// Reads K/N. Throws CommandError, naming `option`, unless K is from 1 to N and N at most a million.
Slice parseSlice(std::string_view text, std::string_view option);

/// The options of `mix`. Block and threads are as in MixerOptions. Where neither the command line nor the
/// timeline says a rate or channels, there are 2 at 48000.
struct MixOptions : OutputOptions {
    /// A timeline, or several sound files.
    std::vector<std::filesystem::path> inputs;
    /// The timeline; a name for messages where there is none.
    std::filesystem::path timeline;

    /// Folders in which missing media are looked for.
    std::vector<std::filesystem::path> media;
    /// Whether anything that would be silent though it should sound ends the command before anything is
    /// written.
    bool strict = false;

    /// In the output.
    RangeOptions range;
    std::optional<Slice> slice;
    /// Whether the output ends with the last sound, and not with the programme.
    bool untilLastSound = false;
    /// The timeline to mix of a file that holds several. Empty: the only one.
    std::string timelineName;

    TrackChoice tracks;
    /// A folder for one file for each track. Empty: none.
    std::filesystem::path stems;
    /// The format that the samples have by themselves, see storedIn().
    std::optional<FormatId> kept;

    LevelOptions levels;
    PeaksOptions peaks;
    bool noMetadata = false;
    bool list = false;
    /// Of the list: text or json.
    std::string as = "text";
    /// A JSON file. Empty: none.
    std::filesystem::path report;
    /// A .png or .svg file. Empty: none.
    std::filesystem::path picture;
    /// An HTML file. Empty: none.
    std::filesystem::path page;
    /// A CSV file. Empty: none.
    std::filesystem::path markers;

    /// Whether the command mixes again whenever the timeline or a medium changes.
    bool watch = false;

    /// Declares all options with their help. This object must outlive the app.
    void declare(CLI::App& mix);

    /// Throws CommandError for options that cannot stand together, or alone.
    void requireCompatible() const;

    /// The part of the output to mix, and what is not as it was asked. Throws CommandError for a part without
    /// samples, or outside the timeline.
    std::pair<TimelineSpan, std::string> wholeOf(const Timeline& timeline) const;
    /// The slice of it. Throws CommandError for one without samples.
    TimelineSpan sliceOf(TimelineSpan whole) const;
};

} // namespace audlmd::command

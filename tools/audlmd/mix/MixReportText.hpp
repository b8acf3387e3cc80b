#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/OutputLevels.hpp"
#include "tools/audlmd/mix/MixOptions.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// Which of the parts of a whole was mixed.
struct SliceOf {
    Slice slice;
    /// The same for slices that fit together: see wholeName().
    std::string whole;
};

/// A sound file that was written, by the user's name.
struct WrittenSound {
    std::string path;
    FormatId format = FormatId::f32;
    /// Whether samples beyond full scale are clipped in it.
    bool clips = false;
};

/// What was mixed, and how that ended.
struct MixRun {
    TimelineSpan span;
    std::optional<SliceOf> slice = std::nullopt;
    /// Of wall-clock time.
    double seconds = 0.0;
    /// The files, as the user has named them.
    std::string timeline;
    std::vector<WrittenSound> outputs = {};
    /// One for each track, or none.
    std::vector<WrittenSound> stems = {};
    /// The tracks that are not heard though they are there, as TrackChoice::applyTo() gives them.
    std::vector<std::string> muted = {};
    std::string picture = {};
    std::string page = {};
    std::string markers = {};
    /// Whether the text tells only what is not as it was asked.
    bool quiet = false;
    /// Of an output that was brought to a level.
    std::optional<OutputLevels> levels = std::nullopt;
    ExitStatus status = ExitStatus::done;
    /// Why it failed. Empty: it did not.
    std::string failure = {};
};

/// The report for a terminal, the timeline's notes included; each kind of problem takes a dozen lines at
/// most.
std::vector<std::string> reportLines(const MixReport& report, const Timeline& timeline, const MixRun& run);

/// What a report says of samples beyond full scale, by whether they were clipped.
constexpr const char* overloadWords(bool clips) {
    return clips ? "clipped" : "over full scale, not clipped";
}

/// The same of several outputs: one kind of line where all of them are alike, else two that name the outputs.
std::vector<std::string> overloadWordsOf(const std::vector<WrittenSound>& outputs);
/// "37 samples, by up to 3.52 dB, first at 0:00:00.500". Leaves out a peak of 0, which nobody has measured.
std::string overloadText(const Overload& overload, int sampleRate);

/// The line of a report on what is beyond full scale in one channel of an output, counted from 0. Empty where
/// there is nothing to tell. `what` is the kind of line.
std::string channelOverloadLine(const std::string& what, std::size_t channel, const Overload& overload,
                                int sampleRate);

} // namespace audlmd::command

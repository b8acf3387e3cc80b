#pragma once

#include "host/mix/Mixer.hpp"
#include "tools/audlmd/JobLog.hpp"
#include "tools/audlmd/files/OutputLevels.hpp"
#include "tools/audlmd/files/OutputPath.hpp"
#include "tools/audlmd/mix/MixOptions.hpp"
#include "tools/audlmd/mix/OutputCourse.hpp"

#include <functional>
#include <optional>
#include <vector>

namespace audlmd::command {

/// What of a timeline is written, and into which files.
struct MixedFiles {
    /// Of the timeline's output.
    TimelineSpan span;
    /// Of the mix, and what each of them holds.
    std::vector<OutputTarget> sounds;
    std::vector<OutputOptions::Stored> stored;
    /// One for each track, or none.
    std::vector<OutputTarget> stems;
};

/// What is known of a mix when its files have their names.
struct WrittenMix {
    MixReport report;
    /// How long that took.
    double seconds = 0.0;
    /// Of a mix that was brought to a level.
    std::optional<OutputLevels> levels = std::nullopt;
};

/// Mixes into all files at once, in two passes where the mix is brought to a level. The mixer gives stems
/// where there are files for them. `course` follows what is written; null: nobody asks for that. Throws
/// CommandError, and then nothing is written.
WrittenMix writeMix(Mixer& mixer, const MixedFiles& files, const MixOptions& options, OutputCourse* course,
                    const JobLog& log);

} // namespace audlmd::command

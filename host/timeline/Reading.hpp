#pragma once

#include "host/mix/Timeline.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/timeline/TimelineFiles.hpp"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace audlmd::timeline {

/// Whether a name of a medium is no path of this system, and is kept as it is: a URL, or a path with a
/// drive's letter.
bool isElsewhere(std::string_view medium);

/// What is known of a timeline's media. Asks about each of them once.
class MediaAnswers {
public:
    explicit MediaAnswers(const ReadOptions& options) : options_(options) {}

    struct Answer {
        std::optional<MediaFacts> facts;
        /// Where there are no facts: why.
        std::string problem;
    };
    /// Valid as long as this object.
    const Answer& of(const std::string& media);

private:
    const ReadOptions& options_;
    std::map<std::string, Answer> answers_;
};

/// The reading of a timeline, as it stands at one track or clip: what every part of a reader has at hand.
/// Handed down from part to part, each time at() the track or clip that the part reads, so that every error
/// and every note can name them.
struct Reading {
    const ReadOptions& options;
    MediaAnswers& media;
    /// What is read so far. Sample rate and channels are those of the output from the start.
    Timeline& timeline;
    Where where = {};

    Reading at(Where there) const { return {options, media, timeline, std::move(there)}; }

    /// Throws TimelineError: track and clip, a colon, the sentence.
    [[noreturn]] void fail(const std::string& sentence) const;
    /// Notes in the timeline what is not played as written, from the output sample `sample` on. `silences`:
    /// see TimelineNote.
    void note(std::string text, std::optional<TimelineSample> sample, bool silences = false) const;
    /// A path as it stands in a file. Relative ones start in ReadOptions::folder. An empty path stays empty,
    /// and what is elsewhere stays as it is. The file need not exist.
    std::string pathOf(const std::string& medium) const;
    /// The length of a medium that is taken at another rate, at the output's rate, rounded, at most
    /// farthestPosition. Nothing where it is not known.
    std::optional<std::int64_t> lengthOf(const std::string& medium, const Relabel& relabel) const;
};

} // namespace audlmd::timeline

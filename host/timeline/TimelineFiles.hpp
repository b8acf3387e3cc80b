#pragma once

#include "host/mix/Timeline.hpp"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace audlmd::timeline {

/// What a sound file says of itself.
struct MediaFacts {
    /// In samples per channel.
    std::int64_t length = 0;
    /// In samples per second.
    int sampleRate = 48000;
    /// The time of the first sample on the recorder's clock, in samples. 0 where the file has none.
    std::int64_t timeReference = 0;
};

/// What a reader must know that the timeline's file does not say. The readers open no files: what a file says
/// comes through these functions.
struct ReadOptions {
    /// Of the output, in samples per second. JSON of our own may name another one.
    int sampleRate = 48000;
    /// Of the output. JSON of our own may name another number.
    std::size_t channels = 2;
    /// Relative paths of media start here: the folder of the timeline's file.
    std::filesystem::path folder;
    /// The timeline to read of a file that holds several. Empty: the only one.
    std::string timeline;
    /// Tells about a medium. Nothing: the medium is not there. The text of a std::exception says why a medium
    /// that is there cannot be read, and goes into the message about the clip. Called once for each medium
    /// while a timeline is read. Not set: nothing is known of any.
    std::function<std::optional<MediaFacts>(const std::string& media)> media;
};

/// Whether a text may be a timeline, of which the first bytes suffice: it begins as JSON does.
bool mayBeTimeline(std::string_view start);

/// Reads OpenTimelineIO or our own JSON: an object with an OTIO_SCHEMA, or with the key "audlmd". The content
/// decides, because the extension of a file says nothing certain. What is not played as it is written becomes
/// a note, see docs/timelines.md. Throws TimelineError, one line for the user. The timeline needs no files to
/// be there, except where it does not say how long a medium is.
/// \snippet timeline.cpp read
Timeline readTimeline(std::string_view text, const ReadOptions& options);

/// Our own JSON, all times in samples, see docs/timeline.schema.json. readTimeline() makes the same timeline
/// of it. What the mixer sets (cookie, levels, waiting) is left out. Bytes of names that are no UTF-8 become
/// U+FFFD. Use this to convert a timeline, or to see what became of one.
/// \snippet timeline.cpp read
std::string writeJson(const Timeline& timeline);

} // namespace audlmd::timeline

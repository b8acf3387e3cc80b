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
    /// Reads a band of the equaliser that is written as text, `kind:frequency:gain:q`. Any std::exception
    /// that it throws becomes a TimelineError that names the clip. Not set: such texts are refused.
    std::function<EqualiserBand(std::string_view text)> band;
};

} // namespace audlmd::timeline

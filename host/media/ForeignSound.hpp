#pragma once

#include "host/cache/ChannelLayout.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace audlmd {

/// The samples that ffmpeg makes of a stream: floats of 32 bits, the channels side by side.
struct ForeignFormat {
    int channels = 0;
    /// In frames per second.
    int sampleRate = 0;
    /// Unknown where the file does not say it.
    ChannelLayout layout;
    /// The time of the first frame by the timecode of the file, in frames. Nothing where it has none.
    std::optional<std::int64_t> timeReference = std::nullopt;
};

/// Takes what ffmpeg decodes.
struct ForeignSink {
    /// Called once, before the first samples. `expected` is the length that the file states, in frames; 0
    /// where it states none.
    std::function<void(const ForeignFormat& format, std::int64_t expected)> begin;
    /// The next bytes, which may end within a sample.
    std::function<void(std::span<const std::byte>)> take;
};

/// One stream of sound in a file that libsndfile does not read, as the program ffmpeg decodes it.
struct ForeignSound {
    std::filesystem::path path;
    /// Of the streams with sound, counted from 0.
    int stream = 0;
    /// How long ffmpeg may be silent before it is ended.
    std::chrono::milliseconds patience{60'000};
    /// Why libsndfile does not read the file.
    std::string reason;

    /// Decodes the stream once, from its start to its end: the bytes of `ffmpeg -i PATH -map 0:a:STREAM -f
    /// f32le`. Returns what a user must know of the result, in one line: that it is shorter than the file
    /// states, begins later than the pictures, or what ffmpeg complained of. Empty: nothing. Throws
    /// SoundFileError where ffmpeg is missing, fails or hangs, and where there is no such stream; whatever
    /// the sink throws; and std::system_error where no process can be made.
    std::string decode(const ForeignSink& sink) const;
};

} // namespace audlmd

#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace audlmd {

/// A file that SoundFile opens.
struct PlayableFile {
    /// The medium itself, or the file of its decoded samples.
    std::filesystem::path path;
    /// What is not as the medium states it, in a line for the user. Empty: nothing.
    std::string note = {};
    bool isDecoded = false;
};

/// What was decoded of a medium.
struct DecodedMedium {
    /// The medium, as an absolute path, and the stream of it, counted from 0.
    std::filesystem::path medium;
    int stream = 0;
    /// Of the decoded file.
    std::uintmax_t bytes = 0;
    std::chrono::system_clock::time_point used;
};

struct DecodedCacheOptions {
    /// Is made, for the user alone, when the first file is decoded.
    std::filesystem::path folder = defaultFolder();
    /// The most bytes in the folder: what was used least recently is removed beyond that. What a process
    /// uses stays, so that the folder may hold more meanwhile.
    std::uintmax_t limit = std::uintmax_t{32} << 30;
    /// How long the decoding program may be silent before it is ended.
    std::chrono::milliseconds patience{60'000};
    /// Called when decoding begins; `expected` is the length that the medium states, in frames, or 0. What it
    /// returns is called with the frames that are done, and destroyed at the end. Not set: nobody looks on.
    std::function<std::function<void(std::int64_t done)>(const std::filesystem::path& medium,
                                                         std::int64_t expected, int sampleRate)>
        watch = {};

    /// The folder audlmd in XDG_CACHE_HOME, else in ~/.cache. Empty if neither that variable nor HOME is set.
    static std::filesystem::path defaultFolder();
};

/// Makes media playable that libsndfile does not read, such as film containers: the program ffmpeg decodes
/// them, once, from start to end, into a file of 32-bit floats in a folder, which is then read from any
/// position. A decoded file serves until its medium changes in path, size or time.
///
/// This is the one part of the host that starts programs. Whoever wants none opens media without it.
///
///     DecodedCache cache;
///     Mixer mixer(timeline, [&](const std::string& medium) {
///         return openSoundFile(cache.playable(medium).path);
///     });
///
/// Thread safe. Decodes one medium at a time; another process that wants the same medium waits, and decodes
/// nothing. The files that an object has given stay in the folder as long as the object is there.
/// \snippet cache.cpp decoded
class DecodedCache {
public:
    /// Makes and reads nothing yet.
    explicit DecodedCache(DecodedCacheOptions options = {});
    ~DecodedCache();
    DecodedCache(const DecodedCache&) = delete;
    DecodedCache& operator=(const DecodedCache&) = delete;

    /// The file to open for a medium: the medium itself where libsndfile knows its format, also where it is
    /// damaged or not there, as who opens it is told. Such a medium has one stream; the streams with sound
    /// are counted from 0. Decodes where that must be, which may take minutes. Throws SoundFileError where
    /// ffmpeg is missing, fails or prints nothing for too long, and where there is no such stream; and
    /// std::system_error where the folder cannot be written.
    PlayableFile playable(const std::filesystem::path& medium, int stream = 0);

    /// What there is, least recently used first.
    std::vector<DecodedMedium> contents() const;
    /// Removes everything but what a process uses. Returns the number of removed files.
    std::size_t clear();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace audlmd

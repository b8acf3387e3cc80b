#pragma once

#include "host/cache/ChannelLayout.hpp"
#include "tools/audlmd/files/FileKind.hpp"
#include "tools/audlmd/files/Metadata.hpp"
#include "tools/audlmd/info/Levels.hpp"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// All that `info` tells of a sound file.
struct FileInfo {
    /// A part of the file with a name of its own, without that name and the length before it.
    struct Chunk {
        std::string name;
        /// In bytes.
        std::uint64_t size = 0;
    };

    /// "WAV", and how libsndfile calls its samples: "Signed 16 bit PCM".
    std::string kind;
    std::string coding;
    /// Nothing where the library has no such format.
    std::optional<FormatId> format;
    /// In samples per second.
    int sampleRate = 0;
    /// The length.
    std::int64_t frames = 0;
    /// Of the first frame on the recorder's clock, in frames.
    std::int64_t timeReference = 0;
    /// What the channels are, by the file, or else as is usual.
    ChannelLayout layout;
    /// Whether the file is shorter than it says.
    bool isTruncated = false;
    /// Whether the file says it, or need not.
    bool isLayoutStated = true;
    /// Of WAV, RF64, AIFF and CAF files, in their order.
    std::vector<Chunk> chunks;
    Metadata metadata;
    Levels levels;
};

/// Reads a sound file as a whole. `done` is told how much of it is measured, after each block. Throws
/// SoundFileError.
FileInfo fileInfo(const std::filesystem::path& path, Truncated truncated,
                  const std::function<void(const FileInfo& info, std::int64_t frames)>& done);

} // namespace audlmd::command

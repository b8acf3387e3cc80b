#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace audlmd::command {

/// Where an output goes: a sound file, a report or a picture. Making one writes nothing.
struct OutputPath {
    /// Throws CommandError for a folder, and for a path that cannot be followed.
    explicit OutputPath(const std::filesystem::path& given);

    /// As given, but with symbolic links followed: the file behind a link is written, and made where the link
    /// leads to no file.
    std::filesystem::path path;
    /// The descriptor that the path names: 1 for `-` and /dev/stdout, 3 for /dev/fd/3.
    std::optional<int> inherited;
    /// Whether the target is a descriptor, a device or a pipe. The output then goes there at once, without a
    /// temporary file.
    bool isStream = false;
};

/// Throws CommandError if an output is the file at `input`, under whatever name. `what` says what that file
/// is. Call this before anything is written.
void requireOther(const OutputPath& output, const std::filesystem::path& input, const std::string& what);

/// Throws CommandError if two outputs are one file. A character device, which keeps nothing, may take
/// several.
void requireDistinct(std::span<const OutputPath> outputs);

/// Throws CommandError. `error` is a value of errno.
[[noreturn]] void failToWrite(const std::filesystem::path& path, int error);

} // namespace audlmd::command

#pragma once

#include "host/cache/SoundFile.hpp"
#include "tools/audlmd/files/OutputFormat.hpp"

#include <filesystem>
#include <optional>

namespace audlmd::command {

/// How samples without a header are read, which do not tell it themselves.
struct RawLayout {
    FormatId format = FormatId::s16;
    /// In samples per second.
    int sampleRate = 48000;
    int channels = 1;
};

/// Whether a path names what can only be read once from its start: `-` (standard input), a pipe or a device.
bool isStream(const std::filesystem::path& input);

/// Copies an input into a temporary file without a name, which lives as long as the process, and returns a
/// path that opens the copy: so a stream is read at random, and samples without a header get one. A WAV that
/// did not know its length when its header was written (0, or all bits set, as pipes have it) learns it.
/// Throws CommandError, which names the input.
std::filesystem::path spooled(const std::filesystem::path& input, const std::optional<RawLayout>& raw);

/// A failure of the copy as one of the input, because users do not know the copy.
SoundFileError failureOf(const std::filesystem::path& input, const std::filesystem::path& copy,
                         const SoundFileError& failure);

} // namespace audlmd::command

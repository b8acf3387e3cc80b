#pragma once

#include "host/media/ForeignSound.hpp"

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace audlmd {

/// Of what samples were decoded. A file that has changed since is another origin.
struct Origin {
    /// Absolute, without links.
    std::filesystem::path path;
    std::uintmax_t size = 0;
    /// In nanoseconds since 1970.
    std::int64_t modified = 0;
    /// Of the streams with sound, counted from 0.
    int stream = 0;

    bool operator==(const Origin&) const = default;
};

/// Throws SoundFileError for a file that is not there.
Origin originOf(const std::filesystem::path& path, int stream);
/// A number that is nearly never that of another origin.
std::uint64_t hashOf(const Origin& origin);

/// What stands behind the samples of a decoded file.
struct DecodedLabel {
    Origin origin;
    std::int64_t frames = 0;
    /// See ForeignSound::decode().
    std::string note;
};

/// Nothing for a file that is no decoded file, or not to its end.
std::optional<DecodedLabel> readLabel(const std::filesystem::path& path);

/// Writes samples into an RF64 file, and at last the label behind them. The label comes last, so that a file
/// that was cut off has none.
class DecodedFile {
public:
    /// Throws std::filesystem::filesystem_error. The descriptor stays open.
    DecodedFile(int descriptor, const ForeignFormat& format);

    /// Bytes of samples, the channels side by side. Throws std::filesystem::filesystem_error.
    void take(std::span<const std::byte> bytes);
    /// How many frames have come.
    std::int64_t frames() const { return frames_; }
    /// Waits until all is on the storage device. Throws std::filesystem::filesystem_error.
    void finish(const Origin& origin, const std::string& note);

private:
    struct Closer {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };

    int descriptor_;
    std::size_t frameBytes_;
    bool hasLayout_;
    std::unique_ptr<SNDFILE, Closer> file_;
    std::int64_t frames_ = 0;
    /// The start of a frame whose rest has not come yet.
    std::vector<std::byte> begun_;
};

} // namespace audlmd

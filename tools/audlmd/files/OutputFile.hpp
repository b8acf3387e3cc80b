#pragma once

#include "tools/audlmd/files/FileKind.hpp"
#include "tools/audlmd/files/TemporaryFile.hpp"

#include <sndfile.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// Closes an open sound file of libsndfile.
struct CloseSoundFile {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFileHandle = std::unique_ptr<SNDFILE, CloseSoundFile>;

/// The content of a sound file: its sample format and its size. Known before the first sample, because the
/// header of some kinds states the length.
struct OutputLayout {
    FormatId format = FormatId::f32;
    int channels = 1;
    /// In frames per second.
    int sampleRate = 48000;
    std::int64_t frames = 0;
    /// The time of the first frame on the user's clock, in frames. Kept by .wav and .rf64 files, where it is
    /// not 0.
    std::int64_t timeReference = 0;

    std::size_t frameBytes() const { return static_cast<std::size_t>(channels) * outputFormat(format).bytes; }
    std::uint64_t dataBytes() const { return static_cast<std::uint64_t>(frames) * frameBytes(); }
};

/// Where an output goes. Making one writes nothing.
struct OutputTarget {
    /// Throws CommandError for a folder, and for a file with an unknown extension. Without a known extension,
    /// a device, a pipe and standard output (`-`) get samples without a header.
    explicit OutputTarget(const std::filesystem::path& given);

    /// As given, but with symbolic links to files resolved: the file is replaced, not the link.
    std::filesystem::path path;
    /// The descriptor that the path names: 1 for `-` and /dev/stdout, 3 for /dev/fd/3.
    std::optional<int> inherited;
    /// Whether the target is a descriptor, a device or a pipe. Samples then go there at once, without a
    /// temporary file.
    bool isStream = false;
    /// Never null after construction.
    const FileKind* kind = nullptr;
};

/// Writes a sound file. The samples go to a temporary file, which takes the target's name in commit();
/// without commit(), the target stays as it was. All failures are CommandErrors that name the file. A reader
/// of the target thus sees the old file or the whole new one. A stream has no such protection: samples go out
/// as they come.
class OutputFile {
public:
    /// Opens the temporary file, or the stream.
    OutputFile(const OutputTarget& target, const OutputLayout& layout);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Appends frames: containers of the layout's format, the channels side by side.
    void write(const std::byte* interleaved, std::size_t frames);

    /// Closes the file, checks that its last frame can be read, and gives it the target's name. Call this
    /// once, after layout.frames frames.
    void commit();

private:
    /// Opens the temporary file or the stream; an inherited descriptor is duplicated, so that closing leaves
    /// the original open.
    void openDescriptor();
    /// Lets libsndfile write the header through the descriptor.
    void openSoundFile();
    /// Lets libsndfile write the time reference.
    void setTimeReference();
    /// Fails unless the file reads back to the last frame.
    void checkWhole();
    /// Lets libsndfile change the byte order. Returns whether all frames were written.
    bool writeConverted(const std::byte* interleaved, std::size_t frames);
    [[noreturn]] void fail(const std::string& why) const;

    OutputTarget target_;
    OutputLayout layout_;
    std::optional<TemporaryFile> temporary_;
    int descriptor_ = -1;
    SoundFileHandle file_;
    /// For formats that libsndfile takes as ints.
    std::vector<int> wide_;
};

} // namespace audlmd::command

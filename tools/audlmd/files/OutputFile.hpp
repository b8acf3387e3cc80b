#pragma once

#include "tools/audlmd/files/Container.hpp"
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

struct CloseSoundFile {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFileHandle = std::unique_ptr<SNDFILE, CloseSoundFile>;

/// What an output file is to hold.
struct OutputLayout {
    FormatId format = FormatId::f32;
    int channels = 1;
    /// In frames per second.
    int sampleRate = 48000;
    std::int64_t frames = 0;

    std::size_t frameBytes() const { return static_cast<std::size_t>(channels) * outputFormat(format).bytes; }
    std::uint64_t dataBytes() const { return static_cast<std::uint64_t>(frames) * frameBytes(); }
};

/// Where an output goes, found out before anything is written.
struct OutputTarget {
    /// Throws CommandError for a folder, or for an extension that names no container. A device or pipe that
    /// has no such extension, and standard output (`-`), gets headerless samples.
    explicit OutputTarget(const std::filesystem::path& given);

    /// Links are followed.
    std::filesystem::path path;
    /// A descriptor that this process was started with: the path is `-`, /dev/stdout, /dev/fd/3 ...
    std::optional<int> inherited;
    /// Such a descriptor, a device or a pipe: written in place, for there is nothing to preserve.
    bool isStream = false;
    const Container* container = nullptr;
};

/// A sound file that stands under its name only once it is whole: until then the samples go to a temporary
/// file beside it. All failures are CommandErrors that name the file.
class OutputFile {
public:
    OutputFile(const OutputTarget& target, const OutputLayout& layout);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Appends frames of the format's containers.
    void write(const std::byte* interleaved, std::size_t frames);

    /// Closes the file, makes sure that it reads back to the last frame, and puts it in place.
    void commit();

private:
    void openDescriptor();
    void openSoundFile();
    void checkWhole();
    bool writeConverted(const std::byte* interleaved, std::size_t frames);
    [[noreturn]] void fail(const std::string& why) const;

    OutputTarget target_;
    OutputLayout layout_;
    std::optional<TemporaryFile> temporary_;
    int descriptor_ = -1;
    SoundFileHandle file_;
    /// For containers whose samples libsndfile converts.
    std::vector<int> wide_;
};

} // namespace audlmd::command

#pragma once

#include "host/cache/ChannelLayout.hpp"
#include "host/deliver/ProgrammeMeter.hpp"
#include "tools/audlmd/files/CheckedDescriptor.hpp"
#include "tools/audlmd/files/FileKind.hpp"
#include "tools/audlmd/files/Metadata.hpp"
#include "tools/audlmd/files/OpenOutput.hpp"

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
    /// What the channels are. Empty, or unknown: the file does not say it.
    ChannelLayout speakers = {};
    /// The time reference of its broadcast extension is that above.
    Metadata metadata = {};
    /// Where they are measured, a broadcast extension holds the loudness.
    std::optional<ProgrammeLevels> levels = std::nullopt;

    std::size_t frameBytes() const { return static_cast<std::size_t>(channels) * outputFormat(format).bytes; }
    std::uint64_t dataBytes() const { return static_cast<std::uint64_t>(frames) * frameBytes(); }
};

/// Where a sound file goes.
struct OutputTarget : OutputPath {
    /// Throws CommandError, also for a terminal, and for a file with an unknown extension where no kind is
    /// `wanted`. Without a known extension, a device, a pipe and standard output (`-`) get samples without a
    /// header.
    explicit OutputTarget(const std::filesystem::path& given, const FileKind* wanted = nullptr);

    /// Never null after construction.
    const FileKind* kind = nullptr;
};

/// Writes a sound file through an OpenOutput; without commit(), a regular file stays as it was. All failures
/// are CommandErrors that name the file.
class OutputFile {
public:
    OutputFile(const OutputTarget& target, const OutputLayout& layout);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Appends frames: containers of the layout's format, the channels side by side.
    void write(const std::byte* interleaved, std::size_t frames);

    /// Closes the file if all of it was written: no write failed, the header says what the layout says, and
    /// the last frame can be read. Call this once, after layout.frames frames.
    void complete();
    /// Gives the file, which is complete, the target's name. Call this once.
    void commit() { output_->commit(); }

    /// What the file does not keep of what the layout says, in lines for the user. After complete().
    std::vector<std::string> notes() const;

private:
    /// What libsndfile is to write.
    SF_INFO info() const;
    /// Lets libsndfile write the header through the descriptor.
    void openSoundFile();
    /// Puts chunks_ behind the samples of a RIFF file that libsndfile has closed.
    void appendChunks();
    /// Writes the header of a WAV into a pipe, with lengths that mean that they are not known. libsndfile
    /// writes no WAV into a pipe; it makes this header in memory.
    void writeStreamedHeader();
    /// What stands in a header beside format and length.
    void describe(SNDFILE* file);
    /// Lets libsndfile write the broadcast extension.
    void setBroadcast(SNDFILE* file) const;
    void requireNoError() const;
    void requireHeader() const;
    /// Also finds out what metadata are missing.
    void requireLastFrame();
    /// Lets libsndfile change the byte order. Returns whether all frames were written.
    bool writeConverted(const std::byte* interleaved, std::size_t frames);
    void findMissing(SNDFILE* file, int descriptor);
    [[noreturn]] void fail(const std::string& why) const;

    OutputTarget target_;
    OutputLayout layout_;
    /// libsndfile's number.
    int type_ = 0;
    /// Whether the file says what its channels are.
    bool isLayoutStated_ = false;
    /// Of a RIFF file: what libsndfile does not write of the metadata.
    std::string chunks_;
    /// See missingIn().
    std::string missing_;
    std::optional<OpenOutput> output_;
    /// Of a regular file.
    std::optional<CheckedDescriptor> checked_;
    /// Closed before the two above: closing still writes. Null where a WAV goes into a pipe.
    SoundFileHandle file_;
    /// For formats that libsndfile takes as ints.
    std::vector<int> wide_;
};

} // namespace audlmd::command

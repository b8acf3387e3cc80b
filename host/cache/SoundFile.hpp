#pragma once

#include "host/cache/ChannelLayout.hpp"
#include "host/cache/SampleSource.hpp"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>

namespace audlmd {

/// A sound file that cannot be opened or read. The text names the file and says why.
class SoundFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What becomes of a file that is shorter than its header says, as after a power failure.
enum class Truncated {
    refused,
    /// What is there is taken. Opening takes as long as decoding all of it.
    taken
};

/// A file that libsndfile can read, and does not understand. Another program may, see DecodedCache.
class UnknownFormat : public SoundFileError {
public:
    using SoundFileError::SoundFileError;
};

/// An open sound file in any format of libsndfile, shared by the sources of its channels.
///
/// A file stores the samples of all channels together, while a cache reads each channel on its own. So the
/// file keeps what it has decoded until all channels have read it, and the other channels find their samples
/// there without decoding again. Up to 8 MiB of decoded samples are kept, or two excerpts if those are
/// larger. The trap: where the readers of two channels are further apart than that, each of them has the file
/// decoded anew.
///
/// Thread safe. Reads wait for each other.
/// \snippet cache.cpp sound file
class SoundFile final : public FrameSource {
public:
    /// A path may lead into a zip archive as into a folder ("film.otioz/media/a.wav"), to a member that is
    /// stored as it is. Throws SoundFileError if the file is not there, not readable, not seekable, shorter
    /// than its header says, or at a sample rate outside those of SampleRates.hpp; UnknownFormat if it is not
    /// audio, or of a format that libsndfile does not read, as film containers are. The trap: without memory,
    /// some of the decoders below libsndfile end the process.
    explicit SoundFile(const std::filesystem::path& path, Truncated truncated = Truncated::refused);
    ~SoundFile() override;
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    /// As it was given.
    const std::filesystem::path& path() const;
    /// Samples in a frame.
    int channels() const;
    /// In frames per second.
    int sampleRate() const;
    /// The length, in frames (one sample of each channel); 0 is possible.
    std::int64_t frames() const;
    /// Whether the file is shorter than its header says.
    bool isTruncated() const;
    /// The time of the first frame on the recorder's clock, in frames, from a broadcast wave file. 0 in
    /// others.
    std::int64_t timeReference() const;
    /// What the file says of its channels. Unknown where it says nothing.
    const ChannelLayout& layout() const;

    /// Fills `samples` with one channel, counted from 0, from frame `position` on. Full scale is -1.0 to 1.0.
    /// Throws SoundFileError, also for a file that ends too early.
    void read(int channel, std::int64_t position, std::span<float> samples);
    /// The same for several channels. All of them at one go are decoded straight into the stretches.
    void read(std::int64_t position, std::span<const Stretch> stretches) override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// One channel of a sound file, as a cache reads it.
class SoundFileSource final : public SampleSource {
public:
    /// Throws std::out_of_range if the file does not have the channel, counted from 0.
    SoundFileSource(std::shared_ptr<SoundFile> file, int channel);

    std::int64_t length() const override { return file_->frames(); }
    /// Throws SoundFileError.
    void read(std::int64_t position, std::span<float> samples) override {
        file_->read(channel_, position, samples);
    }
    /// The file: its channels are read one after another, because each read would wait for the others.
    const void* exclusiveResource() const override { return file_.get(); }
    InFrames inFrames() const override {
        return {.frames = file_.get(), .channel = static_cast<std::size_t>(channel_)};
    }

private:
    std::shared_ptr<SoundFile> file_;
    int channel_;
};

} // namespace audlmd

#pragma once

#include "standalone/cache/SampleSource.hpp"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>

namespace audlmd {

/// A sound file that cannot be opened or read. The text names the file.
class SoundFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An open sound file in any format of libsndfile, shared by the sources of its channels.
///
/// A stretch of a file with several channels is decoded once: what was decoded last is kept, so that the
/// other channels find it there as long as their readers are not too far apart (8 MiB of decoded samples, or
/// two segments). Thread safe.
class SoundFile {
public:
    /// Throws SoundFileError: not there, not readable, not audio, not seekable, or shorter than its header
    /// says.
    explicit SoundFile(const std::filesystem::path& path);
    ~SoundFile();
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    const std::filesystem::path& path() const;
    int channels() const;
    /// In frames per second.
    int sampleRate() const;
    /// The length, in frames; 0 is possible.
    std::int64_t frames() const;

    /// Fills `samples` with one channel, counted from 0, from frame `position` on. Full scale is -1.0 to 1.0.
    /// Throws SoundFileError; a file that ends too early is an error.
    void read(int channel, std::int64_t position, std::span<float> samples);

    /// How often a stretch of the file has been decoded.
    std::uint64_t decodedStretches() const;

private:
    class Decoder;
    std::unique_ptr<Decoder> decoder_;
};

/// One channel of a sound file.
class SoundFileSource final : public SampleSource {
public:
    /// Throws std::out_of_range if the file does not have the channel, counted from 0.
    SoundFileSource(std::shared_ptr<SoundFile> file, int channel);

    std::int64_t length() const override { return file_->frames(); }
    void read(std::int64_t position, std::span<float> samples) override {
        file_->read(channel_, position, samples);
    }
    const void* exclusiveResource() const override { return file_.get(); }

private:
    std::shared_ptr<SoundFile> file_;
    int channel_;
};

} // namespace audlmd

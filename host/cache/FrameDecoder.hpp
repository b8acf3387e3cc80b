#pragma once

#include "host/cache/ChannelLayout.hpp"
#include "host/cache/SoundFile.hpp"
#include "host/cache/ZipArchive.hpp"

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace audlmd {

/// Reads frames of one sound file with libsndfile, from any position. Not thread safe: a SoundFile locks it.
class FrameDecoder {
public:
    /// Opens the file and checks it. Throws SoundFileError, as SoundFile's constructor says.
    explicit FrameDecoder(const std::filesystem::path& path, Truncated truncated);

    const std::filesystem::path& path() const { return path_; }
    /// What the file's header says, but for the frames of a truncated file. Never changes.
    const SF_INFO& info() const { return info_; }
    /// See SoundFile. Never changes.
    bool isTruncated() const { return isTruncated_; }
    /// See SoundFile. Never changes.
    std::int64_t timeReference() const { return timeReference_; }
    /// See SoundFile. Never changes.
    const ChannelLayout& layout() const { return layout_; }

    /// Fills `interleaved` with whole frames from frame `position` on. Throws SoundFileError. After a failure
    /// libsndfile may not find its way again, so the next call opens the file anew.
    void decode(std::int64_t position, std::span<float> interleaved);

private:
    struct Closer {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };
    using File = std::unique_ptr<SNDFILE, Closer>;

    /// Throws SoundFileError.
    File open(SF_INFO& info) const;
    void reopen();
    /// Decodes all that is there, and takes that for the length. Throws SoundFileError where that is nothing.
    void takeWhatIsThere();
    /// Makes frame `position` the next one. Throws SoundFileError.
    void goTo(std::int64_t position);
    /// Throws SoundFileError if the file ends too early.
    void decodeNext(std::span<float> interleaved);

    std::filesystem::path path_;
    SF_INFO info_{};
    bool isTruncated_ = false;
    std::int64_t timeReference_ = 0;
    ChannelLayout layout_;
    /// Not set for a file of its own.
    std::unique_ptr<FilePartReader> part_;
    /// Null after a failure.
    File file_;
    /// The frame that would be decoded next without seeking.
    std::int64_t next_ = 0;
};

} // namespace audlmd

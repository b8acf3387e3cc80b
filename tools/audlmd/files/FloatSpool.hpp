#pragma once

#include "tools/audlmd/files/OutputPath.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace audlmd::command {

/// Channels of 32-bit floats, all of one length, in a file that nobody else finds and that is gone with the
/// process: for programmes whose gain is known only once all of them is rendered. Several programmes share a
/// spool as one has several channels.
///
/// All failures are CommandErrors that name the folder.
class FloatSpool {
public:
    /// In the folder of the output, which has room for a file of that size once it is written; for a stream,
    /// in the folder of temporary files.
    FloatSpool(const OutputPath& output, std::size_t channels, std::int64_t frames);
    ~FloatSpool();
    FloatSpool(const FloatSpool&) = delete;
    FloatSpool& operator=(const FloatSpool&) = delete;

    std::size_t channels() const { return channels_; }
    std::int64_t frames() const { return frames_; }

    // Samples of one channel, from a frame on. Threads may write and read at a time.
    void write(std::size_t channel, std::int64_t from, std::span<const float> samples);
    void read(std::size_t channel, std::int64_t from, std::span<float> samples) const;

private:
    std::int64_t offsetOf(std::size_t channel, std::int64_t frame) const;
    [[noreturn]] void fail(const std::string& what, int error) const;

    std::string folder_;
    std::size_t channels_;
    std::int64_t frames_;
    int descriptor_ = -1;
};

} // namespace audlmd::command

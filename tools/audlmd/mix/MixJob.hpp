#pragma once

#include "host/mix/Mixer.hpp"
#include "tools/audlmd/files/OutputFile.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace audlmd::command {

/// Mixes a part of a timeline into a file, chunk by chunk. One chunk is mixed while the one before is stored
/// in the file's format and written.
class MixJob {
public:
    /// The layout has the timeline's channels and the part's frames. The mixer must outlive the job.
    MixJob(Mixer& mixer, TimelineSpan span, const OutputLayout& layout);

    /// Calls `written` after every chunk with the number of frames written so far; `written` may use the
    /// mixer, and an exception from it ends the job. Throws what the mixer or the output throws.
    void run(OutputFile& output, const std::function<void(std::int64_t)>& written);

private:
    using Channels = std::vector<std::vector<float>>;
    /// Stores samples as containers, clipped.
    using Store = void (*)(std::span<const float>, std::byte*);

    std::size_t framesIn(std::size_t chunk) const;
    void mix(std::size_t chunk);
    void write(std::size_t chunk, OutputFile& output);

    Mixer& mixer_;
    TimelineSpan span_;
    OutputLayout layout_;
    Store store_ = nullptr;
    std::size_t chunks_;
    /// Of the chunk that is mixed and of the one that is written, in turn.
    Channels mixed_[2];
    std::vector<std::vector<std::byte>> stored_;
    std::vector<std::byte> interleaved_;
};

} // namespace audlmd::command

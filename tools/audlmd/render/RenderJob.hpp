#pragma once

#include "standalone/signal/StripPlayer.hpp"
#include "tools/audlmd/files/ExistingMix.hpp"
#include "tools/audlmd/files/OutputFile.hpp"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace audlmd::command {

/// Renders all channels and writes them, with the stages side by side: worker threads render their channels
/// into a ring of chunks, and the calling thread reads what is mixed into, interleaves, and writes. The
/// threads meet once a chunk.
class RenderJob {
public:
    struct Sizes {
        /// Samples per render call.
        std::size_t block;
        /// At most; never more than there are channels.
        std::size_t threads;
    };

    /// One player a channel, all of the same length. `existing` is null where nothing is mixed.
    RenderJob(std::vector<std::unique_ptr<StripPlayer>>& players, const OutputLayout& layout,
              ExistingMix* existing, Sizes sizes);

    /// `written` is told the number of frames that are done, after every chunk, and may throw to give up.
    /// Throws whatever stops a channel or the output.
    void run(OutputFile& output, const std::function<void(std::int64_t)>& written);

private:
    struct Chunk {
        std::vector<std::vector<std::byte>> channels;
        std::size_t channelsLeft = 0;
    };
    using RenderChannel = void (*)(StripPlayer&, std::byte*, std::size_t frames, std::size_t block);

    std::size_t framesIn(std::size_t chunk) const;
    Chunk& chunkAt(std::size_t number) { return ring_[number % ring_.size()]; }

    /// Hands a chunk to the workers.
    void open(std::size_t number);
    /// Waits until the workers are done with a chunk. Throws what stopped one of them.
    void waitFor(std::size_t number);
    void write(std::size_t number, OutputFile& output);
    void work(std::size_t worker, std::size_t workers);
    bool waitUntilOpen(std::size_t chunk);
    void stop(std::exception_ptr failure);

    std::vector<std::unique_ptr<StripPlayer>>& players_;
    OutputLayout layout_;
    ExistingMix* existing_;
    Sizes sizes_;
    RenderChannel renderChannel_ = nullptr;
    std::size_t chunkFrames_;
    std::size_t chunks_;
    std::vector<Chunk> ring_;
    std::vector<std::byte> interleaved_;

    std::mutex mutex_;
    std::condition_variable opened_;
    std::condition_variable finished_;
    /// Chunks that the workers may render, or have rendered.
    std::size_t open_ = 0;
    bool stopped_ = false;
    std::exception_ptr failure_;
};

} // namespace audlmd::command

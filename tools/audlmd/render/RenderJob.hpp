#pragma once

#include "host/mix/Reporting.hpp"
#include "host/signal/StripPlayer.hpp"
#include "tools/audlmd/files/ExistingMix.hpp"
#include "tools/audlmd/files/OutputFile.hpp"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace audlmd::command {

/// Renders all channels and writes them, chunk by chunk. Worker threads render their channels into a ring of
/// chunks; meanwhile the calling thread reads the existing mix, interleaves and writes. The threads wait for
/// each other only once in a chunk.
class RenderJob {
public:
    struct Sizes {
        /// Samples per render call.
        std::size_t block;
        /// The most worker threads. There are never more than channels.
        std::size_t threads;
    };
    /// Which functions render: those compiled into the command, or those of the loaded library.
    enum class Through { inlined, tables };

    /// What went beyond full scale in one channel.
    struct Clipped {
        /// Through the inlined functions: the samples before they were stored, in a mix the sums.
        OverloadMeter meter{1};
        /// Through the tables, where the library has clipped them: all samples at the limits of the format.
        /// Some may have been there by themselves, so this is the most that were clipped. Without a peak.
        Overload atLimits;
    };

    /// `players` has one player for each channel, all of the same length. `existing` is null unless the
    /// render is mixed into a file. All arguments by reference or pointer must outlive the job.
    RenderJob(std::vector<std::unique_ptr<StripPlayer>>& players, const OutputLayout& layout,
              ExistingMix* existing, Sizes sizes, Through through);

    /// Calls `written` after every chunk with the number of frames written so far; an exception from
    /// `written` ends the job. Throws what a player, the existing mix or the output throws, when all threads
    /// have ended.
    void run(OutputFile& output, const std::function<void(std::int64_t)>& written);

    /// Of each channel, once the job has run.
    const std::vector<Clipped>& clipped() const { return clipped_; }

private:
    /// A part of the output, with a buffer for each channel.
    struct Chunk {
        std::vector<std::vector<std::byte>> channels;
        /// How many channels are not rendered yet. Guarded by mutex_.
        std::size_t channelsLeft = 0;
    };
    using RenderChannel = void (*)(StripPlayer&, std::byte*, std::size_t frames, std::size_t block, Clipped&);

    void start(std::vector<std::jthread>& threads, std::size_t workers);
    std::size_t framesIn(std::size_t chunk) const;
    Chunk& chunkAt(std::size_t number) { return ring_[number % ring_.size()]; }

    /// Fills a chunk with the existing mix and hands it to the workers.
    void open(std::size_t number);
    /// Waits until all channels of a chunk are rendered. Rethrows the exception of a worker that failed.
    void waitFor(std::size_t number);
    void write(std::size_t number, OutputFile& output);

    /// The workers: each renders every `workers`th channel, from channel number `worker` on.
    void work(std::size_t worker, std::size_t workers);
    /// Returns false if the job has been stopped.
    bool waitUntilOpen(std::size_t chunk);
    /// Ends all threads. The first failure that is not null is rethrown by waitFor().
    void stop(std::exception_ptr failure);

    std::vector<std::unique_ptr<StripPlayer>>& players_;
    OutputLayout layout_;
    ExistingMix* existing_;
    Sizes sizes_;
    RenderChannel renderChannel_ = nullptr;
    std::size_t chunkFrames_;
    std::size_t chunks_;
    std::vector<Chunk> ring_;
    /// Each is used by the worker that renders the channel.
    std::vector<Clipped> clipped_;
    /// One chunk with the channels side by side. Used by the calling thread only.
    std::vector<std::byte> interleaved_;

    /// Guards all members below.
    std::mutex mutex_;
    std::condition_variable opened_;
    std::condition_variable finished_;
    /// How many chunks have been handed to the workers.
    std::size_t open_ = 0;
    bool stopped_ = false;
    std::exception_ptr failure_;
};

} // namespace audlmd::command

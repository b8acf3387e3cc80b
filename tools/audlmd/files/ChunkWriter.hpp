#pragma once

#include "host/services/Threads.hpp"
#include "tools/audlmd/files/SoundOutputs.hpp"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <thread>
#include <vector>

namespace audlmd::command {

/// A part of what a pass writes, each channel alone: of several outputs the channels of the first one, and
/// those of the others behind.
struct Chunk {
    /// The first frame in the output.
    std::int64_t from = 0;
    std::size_t frames = 0;
    /// In containers of the chunks' format, with room for the longest chunk.
    std::vector<std::vector<std::byte>> channels;
};

/// What fills the chunks of outputs.
class ChunkProducer {
public:
    virtual ~ChunkProducer() = default;

    /// How many threads fill a chunk, each a part of it.
    virtual std::size_t parts() const = 0;
    /// Called for every chunk in order, before its parts, on the thread that writes: for what the parts add
    /// to. Meanwhile earlier chunks are filled.
    virtual void begin(Chunk& /*chunk*/) {}
    /// Fills one part of a chunk, counted from 0. Each part has a thread of its own, which fills it in every
    /// chunk in order; the threads need not be at the same chunk.
    virtual void fill(std::size_t part, Chunk& chunk) = 0;
};

/// Writes outputs chunk by chunk. Threads fill a ring of chunks; meanwhile the calling thread prepares
/// empty ones, and writes those that are full. The threads wait for each other only once in a
/// chunk.
class ChunkWriter {
public:
    /// The layout is that of the chunks. A chunk has whole blocks, of so many frames. The producer must
    /// outlive the writer.
    ChunkWriter(ChunkProducer& producer, const OutputLayout& layout, std::size_t block);

    /// Hands all chunks over, in order. Calls `taken` after every one with the number of frames so far;
    /// meanwhile later chunks are filled. Throws what the producer, `take` or `taken` throws, when all
    /// threads have ended. Call this once.
    void run(const std::function<void(const Chunk&)>& take, const std::function<void(std::int64_t)>& taken);

private:
    void start(std::vector<std::jthread>& threads);
    std::size_t slotOf(std::size_t number) const { return number % ring_.size(); }

    /// Hands a chunk to the threads.
    void open(std::size_t number);
    /// Waits until a chunk is full. Rethrows the exception of a thread that failed.
    void waitFor(std::size_t number);

    /// The threads.
    void work(std::size_t part);
    /// Returns false if the threads are to end.
    bool waitUntilOpen(std::size_t number);
    /// Ends all threads. The first failure that is not null is rethrown by waitFor().
    void stop(std::exception_ptr failure);

    ChunkProducer& producer_;
    OutputLayout layout_;
    std::size_t parts_;
    std::size_t chunkFrames_;
    std::size_t chunks_;
    /// A chunk belongs to the threads from open() until all its parts are filled, and else to the calling
    /// thread.
    std::vector<Chunk> ring_;

    Mutex mutex_;
    std::condition_variable opened_;
    std::condition_variable filled_;
    /// Of each chunk in the ring, how many parts are not filled yet.
    std::vector<std::size_t> partsLeft_ AUDLMD_GUARDED_BY(mutex_);
    /// How many chunks have been handed to the threads.
    std::size_t open_ AUDLMD_GUARDED_BY(mutex_) = 0;
    bool stopped_ AUDLMD_GUARDED_BY(mutex_) = false;
    std::exception_ptr failure_ AUDLMD_GUARDED_BY(mutex_);
};

} // namespace audlmd::command

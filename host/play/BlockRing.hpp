#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace audlmd {

/// Neighbouring frames on their way from the render thread to the audio callback.
struct LiveBlock {
    /// Counts the changes of the transport. The callback drops blocks from before the last change.
    std::uint64_t generation = 0;
    /// Where the first frame lies in the sound that is played, and how far each frame moves on. In samples of
    /// the sound; negative steps play backwards.
    double position = 0.0;
    double step = 1.0;
    std::size_t frames = 0;
    /// Whether nothing follows in this generation.
    bool isLast = false;
    /// Interleaved; room for the most frames of a block.
    std::vector<float> samples;
};

/// A queue of blocks between one writing and one reading thread. Neither of them ever waits, locks or
/// allocates: the blocks are made at construction, and filled and read in place.
///
/// Why that is safe: `filled_`, `written_` and `read_` only grow, and block n lies at n modulo the capacity.
/// The writer touches block `filled_`, which is `written_` or beyond, while filled_ - read_ < capacity; the
/// reader touches block `read_` while read_ < written_. The two numbers differ by less than the capacity
/// then, so they name different places. The writer fills a block before the release of `written_` that makes
/// the block readable, and the reader's acquire sees all of it. The reader is done with a block before the
/// release of `read_` that makes the place writable, and the writer's acquire sees that. Each number has one
/// writer, which may read it relaxed.
class BlockRing {
public:
    BlockRing(std::size_t blocks, std::size_t samplesPerBlock) : blocks_(blocks) {
        for (LiveBlock& block : blocks_)
            block.samples.resize(samplesPerBlock);
    }

    /// The writer's: the block to fill next, or null while the ring is full.
    LiveBlock* writable() {
        if (filled_ - read_.load(std::memory_order_acquire) == blocks_.size())
            return nullptr;
        return &blocks_[filled_ % blocks_.size()];
    }
    /// The writer's: the block of writable() is filled. The reader gets it with the next publish().
    void push() { ++filled_; }
    /// The writer's: hands over all blocks that are filled.
    void publish() { written_.store(filled_, std::memory_order_release); }

    /// The reader's: the oldest block, or null while the ring is empty.
    const LiveBlock* readable() const {
        const std::uint64_t next = read_.load(std::memory_order_relaxed);
        return next == written_.load(std::memory_order_acquire) ? nullptr : &blocks_[next % blocks_.size()];
    }
    /// The reader's: gives back the block of readable().
    void pop() { read_.store(read_.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

    /// The writer's: how many blocks were filled so far.
    std::uint64_t pushed() const { return filled_; }
    /// How many blocks were given back so far. For any thread.
    std::uint64_t popped() const { return read_.load(std::memory_order_acquire); }

private:
    // Three cache lines: what nobody writes, what the writer writes and what the reader writes.
    alignas(64) std::vector<LiveBlock> blocks_;
    alignas(64) std::atomic<std::uint64_t> written_{0};
    /// The writer's own.
    std::uint64_t filled_ = 0;
    alignas(64) std::atomic<std::uint64_t> read_{0};
};

} // namespace audlmd

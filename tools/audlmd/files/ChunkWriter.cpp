#include "tools/audlmd/files/ChunkWriter.hpp"

#include <algorithm>
#include <utility>

namespace audlmd::command {
namespace {

/// One chunk is written while the others are filled.
constexpr std::size_t ringLength = 3;

/// The bytes of all channels of a chunk; a block that is larger makes the chunk larger. So many bytes stay in
/// the processor's cache until they are written, and the threads wait for each other rarely.
constexpr std::size_t chunkBytes = 256 * 1024;

/// Whole blocks, or the whole output if that is shorter.
std::size_t chooseChunk(const OutputLayout& layout, std::size_t block) {
    const std::size_t blocks = std::max<std::size_t>(1, chunkBytes / layout.frameBytes() / block);
    return static_cast<std::size_t>(
        std::min(static_cast<std::uint64_t>(blocks * block), static_cast<std::uint64_t>(layout.frames)));
}

} // namespace

ChunkWriter::ChunkWriter(ChunkProducer& producer, const OutputLayout& layout, std::size_t block)
    : producer_(producer), layout_(layout), parts_(producer.parts()),
      chunkFrames_(chooseChunk(layout, block)),
      chunks_((static_cast<std::size_t>(layout.frames) + chunkFrames_ - 1) / chunkFrames_),
      ring_(std::min(ringLength, chunks_)), partsLeft_(ring_.size()) {
    for (Chunk& chunk : ring_)
        chunk.channels.assign(static_cast<std::size_t>(layout.channels),
                              std::vector<std::byte>(chunkFrames_ * outputFormat(layout.format).bytes));
}

void ChunkWriter::run(const std::function<void(const Chunk&)>& take,
                      const std::function<void(std::int64_t)>& taken) {
    std::vector<std::jthread> threads;
    try {
        start(threads);
        for (std::size_t number = 0; number < ring_.size(); ++number)
            open(number);
        for (std::size_t number = 0; number < chunks_; ++number) {
            waitFor(number);
            const Chunk& chunk = ring_[slotOf(number)];
            take(chunk);
            taken(chunk.from + static_cast<std::int64_t>(chunk.frames));
            if (number + ring_.size() < chunks_)
                open(number + ring_.size());
        }
    } catch (...) {
        stop(nullptr);
        throw;
    }
}

/// Where one of the threads cannot be started, the others must be stopped: they wait for chunks. They leave
/// the signals to the calling thread.
void ChunkWriter::start(std::vector<std::jthread>& threads) {
    const EndingSignalsBlocked blocked;
    // A thread that has been started and finds no room here would be waited for before stop() is called.
    threads.reserve(parts_);
    for (std::size_t part = 0; part < parts_; ++part)
        threads.push_back(
            namedThread("audlmd-chunks", [this, part](const std::stop_token& /*stop*/) { work(part); }));
}

void ChunkWriter::open(std::size_t number) {
    Chunk& chunk = ring_[slotOf(number)];
    const std::size_t from = number * chunkFrames_;
    chunk.from = static_cast<std::int64_t>(from);
    chunk.frames = std::min(chunkFrames_, static_cast<std::size_t>(layout_.frames) - from);
    producer_.begin(chunk);
    {
        const Lock lock(mutex_);
        partsLeft_[slotOf(number)] = parts_;
        open_ = number + 1;
    }
    opened_.notify_all();
}

void ChunkWriter::waitFor(std::size_t number) {
    Lock lock(mutex_);
    filled_.wait(lock.native(), [&]() AUDLMD_REQUIRES(mutex_) {
        return partsLeft_[slotOf(number)] == 0 || failure_ != nullptr;
    });
    if (failure_ != nullptr)
        std::rethrow_exception(failure_);
}

void ChunkWriter::work(std::size_t part) {
    try {
        for (std::size_t number = 0; number < chunks_ && waitUntilOpen(number); ++number) {
            producer_.fill(part, ring_[slotOf(number)]);
            const Lock lock(mutex_);
            if (--partsLeft_[slotOf(number)] == 0)
                filled_.notify_one();
        }
    } catch (...) {
        stop(std::current_exception());
    }
}

bool ChunkWriter::waitUntilOpen(std::size_t number) {
    Lock lock(mutex_);
    opened_.wait(lock.native(), [&]() AUDLMD_REQUIRES(mutex_) { return open_ > number || stopped_; });
    return !stopped_;
}

void ChunkWriter::stop(std::exception_ptr failure) {
    {
        const Lock lock(mutex_);
        stopped_ = true;
        if (failure_ == nullptr)
            failure_ = std::move(failure);
    }
    opened_.notify_all();
    filled_.notify_one();
}

} // namespace audlmd::command

#include "tools/audlmd/render/RenderJob.hpp"

#include "host/signal/Unclipped.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"

#include <algorithm>
#include <cstring>
#include <span>
#include <type_traits>
#include <utility>

namespace audlmd::command {
namespace {

/// One chunk is written while the others are rendered.
constexpr std::size_t ringLength = 3;

/// The bytes of all channels of a chunk; a block that is larger makes the chunk larger. So many bytes stay in
/// the processor's cache until they are written, and the threads wait for each other rarely.
constexpr std::size_t chunkBytes = 256 * 1024;

/// The containers behind an output type.
template <class Out>
struct ContainersOf;
template <class Format>
struct ContainersOf<Format*> {
    using Type = Format;
    static constexpr bool summing = false;
};
template <class Format>
struct ContainersOf<Aud::Render::Summing<Format*>> {
    using Type = Format;
    static constexpr bool summing = true;
};

/// Counts the samples that stand at one of the limits of the format, where the library puts what is beyond.
template <class Format>
void countAtLimits(const Format* containers, std::size_t count, std::int64_t at, Overload& overload) {
    constexpr float beyond[] = {2.0F, -2.0F};
    Format limits[2];
    Format* out = limits;
    convertBlock(beyond, 2, out);
    for (std::size_t n = 0; n < count; ++n)
        if (std::memcmp(&containers[n], &limits[0], sizeof(Format)) == 0 ||
            std::memcmp(&containers[n], &limits[1], sizeof(Format)) == 0)
            if (overload.samples++ == 0)
                overload.firstAt = at + static_cast<std::int64_t>(n);
}

/// Renders the next frames of one channel to `at`, in blocks.
template <class Out>
void renderInlined(StripPlayer& player, std::byte* at, std::size_t frames, std::size_t block,
                   RenderJob::Clipped& clipped) {
    using Containers = ContainersOf<Out>;
    auto* out = reinterpret_cast<typename Containers::Type*>(at);
    std::vector<float> samples(std::min(frames, block));
    for (std::size_t count = 0; frames != 0; frames -= count) {
        count = std::min(frames, block);
        const auto position = player.position().number();
        const std::span<float> rendered(samples.data(), count);
        player.renderFloats(rendered);
        if constexpr (Containers::summing)
            addStored(out, rendered);
        clipped.meter.measure(rendered, 1.0F, position);
        convertBlock(samples.data(), count, out);
    }
}

/// The same, and the library converts each sample.
template <class Out>
void renderThroughTables(StripPlayer& player, std::byte* at, std::size_t frames, std::size_t block,
                         RenderJob::Clipped& clipped) {
    using Format = typename ContainersOf<Out>::Type;
    Out out(reinterpret_cast<Format*>(at));
    const auto position = player.position().number();
    const std::size_t all = frames;
    for (std::size_t count = 0; frames != 0; frames -= count) {
        count = std::min(frames, block);
        player.render(out, count);
    }
    countAtLimits(reinterpret_cast<const Format*>(at), all, position, clipped.atLimits);
}

/// Frames in a chunk: whole blocks, or the whole output if that is shorter.
std::size_t chooseChunk(const OutputLayout& layout, std::size_t block) {
    const std::size_t blocks = std::max<std::size_t>(1, chunkBytes / layout.frameBytes() / block);
    return static_cast<std::size_t>(
        std::min(static_cast<std::uint64_t>(blocks * block), static_cast<std::uint64_t>(layout.frames)));
}

} // namespace

RenderJob::RenderJob(std::vector<std::unique_ptr<StripPlayer>>& players, const OutputLayout& layout,
                     ExistingMix* existing, Sizes sizes, Through through)
    : players_(players), layout_(layout), existing_(existing), sizes_(sizes),
      chunkFrames_(chooseChunk(layout, sizes.block)),
      chunks_((static_cast<std::size_t>(layout.frames) + chunkFrames_ - 1) / chunkFrames_),
      ring_(std::min(ringLength, chunks_)), clipped_(players.size()),
      interleaved_(chunkFrames_ * layout.frameBytes()) {
    for (Chunk& chunk : ring_)
        chunk.channels.assign(players.size(),
                              std::vector<std::byte>(chunkFrames_ * outputFormat(layout.format).bytes));
    withOutputType(layout.format, existing != nullptr, [&]<class Out>(std::type_identity<Out>) {
        renderChannel_ = through == Through::inlined ? &renderInlined<Out> : &renderThroughTables<Out>;
    });
}

void RenderJob::run(OutputFile& output, const std::function<void(std::int64_t)>& written) {
    const std::size_t workers = std::clamp<std::size_t>(sizes_.threads, 1, players_.size());
    std::vector<std::jthread> threads;
    try {
        start(threads, workers);
        for (std::size_t chunk = 0; chunk < ring_.size(); ++chunk)
            open(chunk);
        for (std::size_t chunk = 0; chunk < chunks_; ++chunk) {
            waitFor(chunk);
            write(chunk, output);
            written(static_cast<std::int64_t>(chunk * chunkFrames_ + framesIn(chunk)));
            if (chunk + ring_.size() < chunks_)
                open(chunk + ring_.size());
        }
    } catch (...) {
        stop(nullptr);
        throw;
    }
}

/// Where one of the threads cannot be started, the others must be stopped: they wait for chunks.
void RenderJob::start(std::vector<std::jthread>& threads, std::size_t workers) {
    const EndingSignalsBlocked blocked;
    for (std::size_t worker = 0; worker < workers; ++worker)
        threads.emplace_back([this, worker, workers] { work(worker, workers); });
}

std::size_t RenderJob::framesIn(std::size_t chunk) const {
    return std::min(chunkFrames_, static_cast<std::size_t>(layout_.frames) - chunk * chunkFrames_);
}

void RenderJob::open(std::size_t number) {
    Chunk& chunk = chunkAt(number);
    if (existing_ != nullptr) {
        existing_->read(interleaved_.data(), framesIn(number));
        std::vector<std::byte*> channels;
        for (std::vector<std::byte>& channel : chunk.channels)
            channels.push_back(channel.data());
        deinterleave(interleaved_.data(), outputFormat(layout_.format).bytes, framesIn(number), channels);
    }
    {
        const std::lock_guard lock(mutex_);
        chunk.channelsLeft = players_.size();
        open_ = number + 1;
    }
    opened_.notify_all();
}

void RenderJob::waitFor(std::size_t number) {
    std::unique_lock lock(mutex_);
    finished_.wait(lock, [&] { return chunkAt(number).channelsLeft == 0 || failure_ != nullptr; });
    if (failure_ != nullptr)
        std::rethrow_exception(failure_);
}

void RenderJob::write(std::size_t number, OutputFile& output) {
    const Chunk& chunk = chunkAt(number);
    if (chunk.channels.size() == 1) {
        output.write(chunk.channels.front().data(), framesIn(number));
        return;
    }
    std::vector<const std::byte*> channels;
    for (const std::vector<std::byte>& channel : chunk.channels)
        channels.push_back(channel.data());
    interleave(channels, outputFormat(layout_.format).bytes, framesIn(number), interleaved_.data());
    output.write(interleaved_.data(), framesIn(number));
}

void RenderJob::work(std::size_t worker, std::size_t workers) {
    try {
        for (std::size_t number = 0; number < chunks_ && waitUntilOpen(number); ++number) {
            Chunk& chunk = chunkAt(number);
            std::size_t rendered = 0;
            for (std::size_t channel = worker; channel < players_.size(); channel += workers, ++rendered)
                renderChannel_(*players_[channel], chunk.channels[channel].data(), framesIn(number),
                               sizes_.block, clipped_[channel]);
            const std::lock_guard lock(mutex_);
            chunk.channelsLeft -= rendered;
            if (chunk.channelsLeft == 0)
                finished_.notify_one();
        }
    } catch (...) {
        stop(std::current_exception());
    }
}

bool RenderJob::waitUntilOpen(std::size_t chunk) {
    std::unique_lock lock(mutex_);
    opened_.wait(lock, [&] { return open_ > chunk || stopped_; });
    return !stopped_;
}

void RenderJob::stop(std::exception_ptr failure) {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
        if (failure_ == nullptr)
            failure_ = std::move(failure);
    }
    opened_.notify_all();
    finished_.notify_one();
}

} // namespace audlmd::command

#include "host/play/LiveRenderer.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace audlmd {
namespace {

/// How long before a loop jumps the cache is asked for the other end, in seconds.
constexpr double loopAhead = 2.0;
/// The most sound that is loaded before a start, at normal speed.
constexpr std::chrono::duration<double> mostLoaded(2.0);
constexpr std::size_t farAway = std::numeric_limits<std::size_t>::max();

std::size_t framesIn(double seconds, int sampleRate) {
    return static_cast<std::size_t>(std::max(1LL, std::llround(seconds * sampleRate)));
}

} // namespace

LiveRenderer::Sizes LiveRenderer::sizesFor(const LiveOptions& options, int sampleRate) {
    if (!(options.latency >= 0.005 && options.latency <= 2.0))
        throw std::invalid_argument("the latency must be from 0.005 to 2 seconds");
    if (!(options.fade >= 0.001 && options.fade <= 0.1))
        throw std::invalid_argument("a fade must be from 0.001 to 0.1 seconds");
    const std::size_t latency = framesIn(options.latency, sampleRate);
    const std::size_t block = std::clamp<std::size_t>(latency / 8, 16, 4096);
    return {.blockFrames = block,
            .blocksAhead = std::max<std::size_t>(2, latency / block),
            .fadeFrames = framesIn(options.fade, sampleRate),
            .sampleRate = sampleRate};
}

LiveRenderer::LiveRenderer(LiveContent& content, LiveMix* mix, BlockRing& ring, const Sizes& sizes)
    : content_(content), mix_(mix), ring_(ring), sizes_(sizes),
      buffers_(content.channels(), std::vector<float>(sizes.blockFrames)) {}

bool LiveRenderer::follow(const LiveOrder& order, double position) {
    bool hasRoom = false;
    if (order.generation != generation_) {
        begin(order, position);
        // All at once: a device that fills its own buffer asks for several blocks at the same instant.
        while (voice_ != nullptr && renderBlock(order)) {
        }
    } else {
        hasRoom = voice_ != nullptr && renderBlock(order);
    }
    ring_.publish();
    return hasRoom;
}

void LiveRenderer::begin(const LiveOrder& order, double position) {
    generation_ = order.generation;
    voice_.reset();
    if (!order.plays)
        return;
    voice_ = start(position, order.speed);
    writtenBefore_ = ring_.pushed();
    // The callback fades in where a generation starts.
    fade_ = sizes_.fadeFrames;
    loopIsRequested_ = false;
}

bool LiveRenderer::awaitStart(const LiveOrder& order, double position,
                              const std::function<bool()>& isWanted) const {
    using Clock = std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;
    const auto start = Clock::now();
    const auto load = [&](Seconds sound) {
        return content_.awaitLoaded(position, order.speed, framesIn(sound.count(), sizes_.sampleRate),
                                    isWanted);
    };
    Seconds loaded(static_cast<double>(2 * sizes_.blocksAhead * sizes_.blockFrames) / sizes_.sampleRate);
    bool isLoaded = load(loaded);
    while (isLoaded && loaded * std::abs(order.speed) < mostLoaded && 2.0 * (Clock::now() - start) > loaded) {
        loaded += Seconds(0.25);
        isLoaded = load(loaded);
    }
    return isLoaded;
}

std::unique_ptr<LiveVoice> LiveRenderer::start(double position, double speed) {
    std::unique_ptr<LiveVoice> voice = content_.start(position, speed);
    return mix_ != nullptr && speed == 1.0 ? mix_->play(std::move(voice)) : std::move(voice);
}

bool LiveRenderer::renderBlock(const LiveOrder& order) {
    const std::uint64_t waiting = ring_.pushed() - std::max(writtenBefore_, ring_.popped());
    LiveBlock* const block = ring_.writable();
    if (block == nullptr || waiting >= sizes_.blocksAhead)
        return false;
    const bool loops = order.loop && !order.stopAt;
    const std::size_t toSeam = loops ? loop(*order.loop, order.speed) : farAway;
    const std::size_t toStop = order.stopAt ? framesTo(*order.stopAt) : farAway;
    // A voice that has passed the end of the loop renders its fade-out, then jumps.
    const std::size_t wanted = std::min({sizes_.blockFrames, toSeam == 0 ? fade_ : toSeam, toStop});
    std::vector<std::span<float>> channels;
    for (std::vector<float>& buffer : buffers_)
        channels.push_back(std::span(buffer).first(wanted));
    block->generation = generation_;
    block->position = voice_->position();
    block->step = voice_->step();
    block->frames = voice_->render(channels);
    block->isLast = wanted == toStop || (voice_->isAtEnd() && !loops);
    interleave(*block, toSeam);
    if (block->isLast)
        voice_.reset();
    ring_.push();
    return true;
}

std::size_t LiveRenderer::loop(const RangeSpan& range, double speed) {
    const auto [end, begin] = speed < 0.0 ? std::pair{range.from, range.to} : std::pair{range.to, range.from};
    const std::size_t left = framesTo(end);
    if ((left == 0 && fade_ == 0) || voice_->isAtEnd()) {
        voice_ = start(static_cast<double>(begin.number()), speed);
        fade_ = 0;
        loopIsRequested_ = false;
        return framesTo(end);
    }
    if (!loopIsRequested_ && static_cast<double>(left) < loopAhead * sizes_.sampleRate) {
        content_.load(static_cast<double>(begin.number()), speed);
        loopIsRequested_ = true;
    }
    return left;
}

std::size_t LiveRenderer::framesTo(RangeSample position) const {
    const double frames =
        std::ceil((static_cast<double>(position.number()) - voice_->position()) / voice_->step());
    return frames > 0.0 ? static_cast<std::size_t>(std::min(frames, 0x1p62)) : 0;
}

void LiveRenderer::interleave(LiveBlock& block, std::size_t framesToSeam) {
    const auto full = sizes_.fadeFrames;
    float* out = block.samples.data();
    for (std::size_t frame = 0; frame < block.frames; ++frame) {
        const float gain = static_cast<float>(fade_) / static_cast<float>(full);
        for (const std::vector<float>& buffer : buffers_)
            *out++ = buffer[frame] * gain;
        const std::size_t left = framesToSeam - std::min(frame, framesToSeam);
        if (left <= fade_)
            --fade_;
        else
            fade_ += fade_ == full ? 0 : 1;
    }
}

} // namespace audlmd

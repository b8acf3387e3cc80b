#include "standalone/play/LiveRenderer.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace audlmd {
namespace {

/// How long before a loop jumps the cache is asked for the other end, in seconds.
constexpr double loopAhead = 2.0;
constexpr std::size_t farAway = std::numeric_limits<std::size_t>::max();

} // namespace

LiveRenderer::LiveRenderer(LiveContent& content, BlockRing& ring, const Sizes& sizes)
    : content_(content), ring_(ring), sizes_(sizes),
      buffers_(content.channels(), std::vector<float>(sizes.blockFrames)) {}

void LiveRenderer::follow(const LiveOrder& order, double position) {
    if (order.generation != generation_)
        begin(order, position);
    while (voice_ != nullptr && renderBlock(order)) {
    }
}

void LiveRenderer::begin(const LiveOrder& order, double position) {
    generation_ = order.generation;
    voice_.reset();
    if (!order.plays)
        return;
    content_.awaitLoaded(position, order.speed);
    voice_ = content_.start(position, order.speed);
    origin_ = std::llround(position);
    writtenBefore_ = ring_.pushed();
    // The callback fades in where a generation starts.
    sinceSeam_ = sizes_.fadeFrames;
    loopIsRequested_ = false;
}

bool LiveRenderer::renderBlock(const LiveOrder& order) {
    const std::uint64_t waiting = ring_.pushed() - std::max(writtenBefore_, ring_.popped());
    LiveBlock* const block = ring_.writable();
    if (block == nullptr || waiting >= sizes_.blocksAhead)
        return false;
    std::size_t toSeam = farAway;
    if (order.loop && !order.stopAt) {
        loop(*order.loop, order.speed);
        toSeam = framesTo(order.speed < 0.0 ? order.loop->from : order.loop->to);
    }
    const std::size_t toStop = order.stopAt ? framesTo(*order.stopAt) : farAway;
    const std::size_t wanted = std::min({sizes_.blockFrames, toSeam, toStop});
    std::vector<std::span<float>> channels;
    for (std::vector<float>& buffer : buffers_)
        channels.push_back(std::span(buffer).first(wanted));
    block->generation = generation_;
    block->origin = origin_;
    block->position = voice_->position();
    block->step = voice_->step();
    block->frames = voice_->render(channels);
    block->isLast = block->frames < wanted || wanted == toStop;
    interleave(*block, toSeam);
    if (block->isLast)
        voice_.reset();
    ring_.push();
    return true;
}

void LiveRenderer::loop(const LoopRange& range, double speed) {
    const auto [end, start] = speed < 0.0 ? std::pair{range.from, range.to} : std::pair{range.to, range.from};
    const std::size_t left = framesTo(end);
    if (left == 0) {
        voice_ = content_.start(static_cast<double>(start), speed);
        sinceSeam_ = 0;
        loopIsRequested_ = false;
    } else if (!loopIsRequested_ && static_cast<double>(left) < loopAhead * sizes_.sampleRate) {
        content_.load(static_cast<double>(start), speed);
        loopIsRequested_ = true;
    }
}

std::size_t LiveRenderer::framesTo(std::int64_t position) const {
    const double frames = std::ceil((static_cast<double>(position) - voice_->position()) / voice_->step());
    return frames > 0.0 ? static_cast<std::size_t>(std::min(frames, 0x1p62)) : 0;
}

void LiveRenderer::interleave(LiveBlock& block, std::size_t framesToSeam) {
    const std::size_t fade = sizes_.fadeFrames;
    float* out = block.samples.data();
    for (std::size_t frame = 0; frame < block.frames; ++frame) {
        const std::size_t distance = std::min({framesToSeam - frame, sinceSeam_, fade});
        sinceSeam_ = std::min(sinceSeam_ + 1, fade);
        const float gain = static_cast<float>(distance) / static_cast<float>(fade);
        for (const std::vector<float>& buffer : buffers_)
            *out++ = buffer[frame] * gain;
    }
}

} // namespace audlmd

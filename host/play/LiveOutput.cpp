#include "host/play/LiveOutput.hpp"

#include <algorithm>
#include <cmath>

namespace audlmd {

LiveOutput::LiveOutput(BlockRing& ring, std::size_t channels, std::size_t fadeFrames)
    : ring_(ring), channels_(channels), fadeFrames_(fadeFrames), lastFrame_(channels), peaks_(channels) {}

void LiveOutput::fill(std::span<float> interleaved) noexcept {
    const std::uint64_t wanted = wanted_.load(std::memory_order_acquire);
    for (std::span<float> rest = interleaved; rest.size() >= channels_;) {
        if (heard_ != wanted && fade_ == 0) {
            heard_ = wanted;
            isSounding_ = false;
            isStarving_ = false;
        }
        const bool leaves = heard_ != wanted;
        std::size_t frames = rest.size() / channels_;
        if (leaves)
            frames = std::min(frames, fade_);
        const float* const samples = next(frames);
        if (samples == nullptr && isSounding_ && !leaves)
            countStarved(frames);
        play(samples, rest.first(frames * channels_), leaves || samples == nullptr);
        if (samples != nullptr)
            advance(frames);
        rest = rest.subspan(frames * channels_);
    }
    measure(interleaved);
}

const float* LiveOutput::next(std::size_t& frames) {
    while (const LiveBlock* const block = ring_.readable()) {
        if (block->generation > heard_)
            return nullptr;
        if (block->generation == heard_) {
            if (!isSounding_)
                begin(*block);
            if (used_ < block->frames) {
                frames = std::min(frames, block->frames - used_);
                return block->samples.data() + used_ * channels_;
            }
            advance(0);
        } else {
            used_ = 0;
            ring_.pop();
        }
    }
    return nullptr;
}

/// Stores the position first and the generation second: until then position() returns the requested start.
void LiveOutput::begin(const LiveBlock& block) {
    isSounding_ = true;
    position_.store(block.position, std::memory_order_release);
    begun_.store(heard_, std::memory_order_release);
}

void LiveOutput::advance(std::size_t frames) {
    const LiveBlock& block = *ring_.readable();
    used_ += frames;
    isStarving_ = false;
    position_.store(block.position + static_cast<double>(used_) * block.step, std::memory_order_release);
    if (used_ < block.frames)
        return;
    if (block.isLast) {
        isSounding_ = false;
        ended_.store(heard_, std::memory_order_release);
    }
    used_ = 0;
    ring_.pop();
}

void LiveOutput::countStarved(std::size_t frames) {
    starvedFrames_.fetch_add(frames, std::memory_order_relaxed);
    if (!isStarving_)
        starvedEpisodes_.fetch_add(1, std::memory_order_relaxed);
    isStarving_ = true;
}

void LiveOutput::play(const float* samples, std::span<float> out, bool fadesOut) {
    const float gain = gain_.load(std::memory_order_relaxed);
    const float step = 1.0F / static_cast<float>(fadeFrames_);
    for (std::size_t at = 0; at < out.size(); at += channels_) {
        if (samples != nullptr)
            std::copy_n(samples + at, channels_, lastFrame_.begin());
        currentGain_ = std::clamp(gain, currentGain_ - step, currentGain_ + step);
        // At full level and a gain of 1 the factor is exactly 1, which changes no bit.
        const float factor = currentGain_ * (static_cast<float>(fade_) / static_cast<float>(fadeFrames_));
        for (std::size_t channel = 0; channel < channels_; ++channel)
            out[at + channel] = lastFrame_[channel] * factor;
        if (fadesOut)
            fade_ -= fade_ == 0 ? 0 : 1;
        else
            fade_ += fade_ == fadeFrames_ ? 0 : 1;
    }
}

void LiveOutput::measure(std::span<const float> interleaved) {
    for (std::size_t channel = 0; channel < channels_; ++channel) {
        float peak = 0.0F;
        for (std::size_t at = channel; at < interleaved.size(); at += channels_)
            peak = std::max(peak, std::fabs(interleaved[at]));
        if (peak > peaks_[channel].load(std::memory_order_relaxed))
            peaks_[channel].store(peak, std::memory_order_relaxed);
    }
}

} // namespace audlmd

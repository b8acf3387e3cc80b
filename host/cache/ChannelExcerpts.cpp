#include "host/cache/ChannelExcerpts.hpp"

#include <algorithm>
#include <utility>

namespace audlmd {

ChannelExcerpts::ChannelExcerpts(std::size_t channels, Layout layout, const Limits& limits, Make make)
    : channels_(channels), layout_(layout), limits_(limits), make_(std::move(make)) {}

void ChannelExcerpts::read(std::size_t channel, std::int64_t position, std::span<float> samples) {
    const Lock lock(mutex_);
    // No other channel will ask for the frames: they need not be kept.
    if (channels_ == 1)
        return make_(position, samples);
    Excerpt& excerpt = find(position, samples.size());
    excerpt.read += samples.size();
    const bool isPlanar = layout_ == Layout::planar;
    const std::size_t frames = excerpt.samples.size() / channels_;
    const std::size_t step = isPlanar ? 1 : channels_;
    const float* from = excerpt.samples.data() + (isPlanar ? channel * frames : channel) +
                        static_cast<std::size_t>(position - excerpt.position) * step;
    for (float& sample : samples) {
        sample = *from;
        from += step;
    }
}

ChannelExcerpts::Excerpt& ChannelExcerpts::find(std::int64_t position, std::size_t frames) {
    const auto holdsAll = [&](const Excerpt& excerpt) {
        const auto kept = static_cast<std::int64_t>(excerpt.samples.size() / channels_);
        return excerpt.position <= position &&
               position + static_cast<std::int64_t>(frames) <= excerpt.position + kept;
    };
    const auto found = std::ranges::find_if(kept_, holdsAll);
    return found != kept_.end() ? *found : add(position, frames);
}

/// Reuses the memory of the excerpt that is dropped last. That of one that all channels have read is still in
/// the processor's caches.
ChannelExcerpts::Excerpt& ChannelExcerpts::add(std::int64_t position, std::size_t frames) {
    Excerpt excerpt;
    const auto wasRead = [](const Excerpt& kept) { return kept.read >= kept.samples.size(); };
    if (const auto done = std::ranges::find_if(kept_, wasRead); done != kept_.end())
        excerpt = take(done);
    while (kept_.size() >= limits_.excerpts && keptSamples_ + frames * channels_ > limits_.samples)
        excerpt = take(kept_.begin());
    excerpt.read = 0;
    excerpt.position = position;
    excerpt.samples.resize(frames * channels_);
    make_(position, excerpt.samples);
    keptSamples_ += excerpt.samples.size();
    return kept_.emplace_back(std::move(excerpt));
}

ChannelExcerpts::Excerpt ChannelExcerpts::take(const std::deque<Excerpt>::iterator& kept) {
    Excerpt taken = std::move(*kept);
    keptSamples_ -= taken.samples.size();
    kept_.erase(kept);
    return taken;
}

} // namespace audlmd

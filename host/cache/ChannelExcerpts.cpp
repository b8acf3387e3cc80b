#include "host/cache/ChannelExcerpts.hpp"

#include "host/signal/BlockLoops.hpp"

#include <algorithm>
#include <utility>

namespace audlmd {
namespace {

/// Of all channels together. Small enough for the caches of a processor, large enough for few calls.
constexpr std::size_t pieceSamples = 16384;

} // namespace

ChannelExcerpts::ChannelExcerpts(std::size_t channels, Layout layout, const Limits& limits, Make make)
    : channels_(channels), layout_(layout), limits_(limits), make_(std::move(make)) {}

void ChannelExcerpts::read(std::size_t channel, std::int64_t position, std::span<float> samples) {
    const Lock lock(mutex_);
    readOne(channel, position, samples);
}

void ChannelExcerpts::read(std::int64_t position, std::span<const FrameSource::Stretch> stretches) {
    const Lock lock(mutex_);
    if (layout_ == Layout::interleaved && channels_ > 1 && areAllChannels(stretches) &&
        kept(position, stretches.front().samples.size()) == nullptr)
        return split(position, stretches);
    for (const auto& [channel, factor, samples] : stretches) {
        readOne(channel, position, samples);
        if (factor != 1.0F)
            multiply(samples, factor);
    }
}

bool ChannelExcerpts::areAllChannels(std::span<const FrameSource::Stretch> stretches) const {
    std::vector<bool> isThere(channels_);
    for (const FrameSource::Stretch& stretch : stretches)
        isThere[stretch.channel] = true;
    return stretches.size() == channels_ && std::ranges::count(isThere, true) == std::ssize(isThere);
}

void ChannelExcerpts::split(std::int64_t position, std::span<const FrameSource::Stretch> stretches) {
    const std::size_t frames = stretches.front().samples.size();
    const std::size_t most = std::max<std::size_t>(1, pieceSamples / channels_);
    piece_.resize(most * channels_);
    std::vector<float*> parts(channels_);
    for (std::size_t done = 0; done < frames; done += most) {
        const std::size_t count = std::min(most, frames - done);
        const std::span<float> piece = std::span(piece_).first(count * channels_);
        make_(position + static_cast<std::int64_t>(done), piece);
        for (const FrameSource::Stretch& stretch : stretches)
            parts[stretch.channel] = &stretch.samples[done];
        splitFrames(piece, parts);
        for (const FrameSource::Stretch& stretch : stretches)
            if (stretch.factor != 1.0F)
                multiply(stretch.samples.subspan(done, count), stretch.factor);
    }
}

void ChannelExcerpts::readOne(std::size_t channel, std::int64_t position, std::span<float> samples) {
    // No other channel will ask for the frames: they need not be kept.
    if (channels_ == 1)
        return make_(position, samples);
    Excerpt* const found = kept(position, samples.size());
    Excerpt& excerpt = found != nullptr ? *found : add(position, samples.size());
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

ChannelExcerpts::Excerpt* ChannelExcerpts::kept(std::int64_t position, std::size_t frames) {
    const auto holdsAll = [&](const Excerpt& excerpt) {
        const auto length = static_cast<std::int64_t>(excerpt.samples.size() / channels_);
        return excerpt.position <= position &&
               position + static_cast<std::int64_t>(frames) <= excerpt.position + length;
    };
    const auto found = std::ranges::find_if(kept_, holdsAll);
    return found != kept_.end() ? &*found : nullptr;
}

/// Reuses the memory of the excerpt that is dropped last. That of one that all channels have read is still in
/// the processor's caches.
ChannelExcerpts::Excerpt& ChannelExcerpts::add(std::int64_t position, std::size_t frames) {
    Excerpt excerpt;
    const auto wasRead = [](const Excerpt& old) { return old.read >= old.samples.size(); };
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

ChannelExcerpts::Excerpt ChannelExcerpts::take(const std::deque<Excerpt>::iterator& unwanted) {
    Excerpt taken = std::move(*unwanted);
    keptSamples_ -= taken.samples.size();
    kept_.erase(unwanted);
    return taken;
}

} // namespace audlmd

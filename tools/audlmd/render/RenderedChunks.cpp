#include "tools/audlmd/render/RenderedChunks.hpp"

#include "tools/audlmd/files/SampleLayouts.hpp"

#include <algorithm>
#include <cstring>
#include <span>
#include <type_traits>

namespace audlmd::command {
namespace {

/// The container behind an output type.
template <class Out>
struct ContainerOf {
    using Type = typename Out::Format;
};
template <class Format>
struct ContainerOf<Format*> {
    using Type = Format;
};

/// Counts the samples that stand at one of the limits of the format, where the library puts what is beyond.
template <class Container>
void countAtLimits(FormatId format, std::span<const Container> containers, std::int64_t at,
                   Overload& overload) {
    constexpr float beyond[] = {2.0F, -2.0F};
    Container limits[2];
    store(format, Rounding::truncated, {}, beyond, reinterpret_cast<std::byte*>(limits));
    for (std::size_t n = 0; n < containers.size(); ++n)
        if (std::memcmp(&containers[n], &limits[0], sizeof(Container)) == 0 ||
            std::memcmp(&containers[n], &limits[1], sizeof(Container)) == 0)
            if (overload.samples++ == 0)
                overload.firstAt = at + static_cast<std::int64_t>(n);
}

} // namespace

RenderedChunks::RenderedChunks(std::vector<std::unique_ptr<RenderedChannel>>& channels,
                               const OutputLayout& layout, Rounding rounding, ExistingMix* existing,
                               Sizes sizes, RenderedChannel::Through through)
    : channels_(channels), format_(layout.format), rounding_(rounding), existing_(existing),
      block_(sizes.block), parts_(std::clamp<std::size_t>(sizes.threads, 1, channels.size())),
      through_(through), clipped_(channels.size()) {}

void RenderedChunks::begin(Chunk& chunk) {
    if (existing_ == nullptr)
        return;
    const std::size_t bytes = outputFormat(format_).bytes;
    interleaved_.resize(chunk.frames * channels_.size() * bytes);
    existing_->read(interleaved_.data(), chunk.frames);
    std::vector<std::byte*> channels;
    for (std::vector<std::byte>& channel : chunk.channels)
        channels.push_back(channel.data());
    deinterleave(interleaved_.data(), bytes, chunk.frames, channels);
}

/// Part 0 of three renders channels 0, 3, 6 and so on.
void RenderedChunks::fill(std::size_t part, Chunk& chunk) {
    const auto render = through_ == RenderedChannel::Through::outputTypes ? &RenderedChunks::renderContainers
                                                                          : &RenderedChunks::renderFloats;
    for (std::size_t channel = part; channel < channels_.size(); channel += parts_)
        (this->*render)(channel, chunk.channels[channel].data(), chunk.frames);
}

void RenderedChunks::renderFloats(std::size_t channel, std::byte* containers, std::size_t frames) {
    RenderedChannel& rendered = *channels_[channel];
    std::vector<float> samples(std::min(frames, block_));
    for (std::size_t count = 0; frames != 0; frames -= count) {
        count = std::min(frames, block_);
        const OutputPlace place{channel, rendered.player().position().number()};
        const std::span<float> room(samples.data(), count);
        std::span<const float> block = room;
        // Measured before they are stored, but of a mix the sums.
        if (existing_ == nullptr) {
            block = rendered.renderInto(room);
            store(format_, rounding_, place, block, containers);
        } else {
            rendered.render(room);
            add(format_, rounding_, place, room, containers);
        }
        clipped_[channel].meter.measure(block, 1.0F, place.position);
        containers += count * outputFormat(format_).bytes;
    }
}

/// The library converts each sample.
void RenderedChunks::renderContainers(std::size_t channel, std::byte* containers, std::size_t frames) {
    StripPlayer& player = channels_[channel]->player();
    const auto position = player.position().number();
    withOutputType(format_, existing_ != nullptr, [&]<class Out>(std::type_identity<Out>) {
        using Container = typename ContainerOf<Out>::Type;
        auto* const first = reinterpret_cast<Container*>(containers);
        Out out(first);
        for (std::size_t done = 0; done < frames; done += block_)
            player.render(out, std::min(block_, frames - done));
        countAtLimits<Container>(format_, {first, frames}, position, clipped_[channel].atLimits);
    });
}

} // namespace audlmd::command

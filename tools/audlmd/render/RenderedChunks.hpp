#pragma once

#include "host/deliver/Delivery.hpp"
#include "host/mix/Reporting.hpp"
#include "tools/audlmd/files/ChunkWriter.hpp"
#include "tools/audlmd/files/ExistingMix.hpp"
#include "tools/audlmd/render/RenderedChannel.hpp"

#include <cstddef>
#include <memory>
#include <vector>

namespace audlmd::command {

/// A strip as the chunks of an output: each channel is rendered in the output's format, into what is read
/// from an existing mix where there is one.
class RenderedChunks final : public ChunkProducer {
public:
    struct Sizes {
        /// Samples per render call.
        std::size_t block;
        /// The most threads that render. There are never more than channels.
        std::size_t threads;
    };
    /// What went beyond full scale in one channel.
    struct Clipped {
        /// The samples before they were stored, in a mix the sums.
        OverloadMeter meter{1};
        /// Through the output types, where the library has clipped them: all samples at the limits of the
        /// format. Some may have been there by themselves, so this is the most that were clipped. Without a
        /// peak.
        Overload atLimits;
    };

    /// `channels` are all of the same length, and made for `through`. `existing` is null unless the render is
    /// mixed into a file. All arguments by reference or pointer must outlive this object.
    RenderedChunks(std::vector<std::unique_ptr<RenderedChannel>>& channels, const OutputLayout& layout,
                   Rounding rounding, ExistingMix* existing, Sizes sizes, RenderedChannel::Through through);

    std::size_t parts() const override { return parts_; }
    void begin(Chunk& chunk) override;
    void fill(std::size_t part, Chunk& chunk) override;

    /// Of each channel, once all chunks are filled.
    const std::vector<Clipped>& clipped() const { return clipped_; }

private:
    // The next frames of one channel, in blocks.
    void renderFloats(std::size_t channel, std::byte* containers, std::size_t frames);
    void renderContainers(std::size_t channel, std::byte* containers, std::size_t frames);

    std::vector<std::unique_ptr<RenderedChannel>>& channels_;
    FormatId format_;
    Rounding rounding_;
    ExistingMix* existing_;
    std::size_t block_;
    std::size_t parts_;
    RenderedChannel::Through through_;
    /// Each is used by the thread that renders the channel.
    std::vector<Clipped> clipped_;
    /// What was read of the existing mix, with the channels side by side.
    std::vector<std::byte> interleaved_;
};

} // namespace audlmd::command

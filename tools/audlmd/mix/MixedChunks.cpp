#include "tools/audlmd/mix/MixedChunks.hpp"

#include "tools/audlmd/files/SampleLayouts.hpp"

#include <algorithm>
#include <span>
#include <utility>

namespace audlmd::command {

MixedChunks::MixedChunks(Mixer& mixer, TimelineSample from, const OutputLayout& chunks, Rounding rounding,
                         std::size_t block, std::function<void()> mixed, OutputCourse* course)
    : mixer_(mixer), from_(from), format_(chunks.format), rounding_(rounding), mixed_(std::move(mixed)),
      course_(course), samples_(static_cast<std::size_t>(chunks.channels), std::vector<float>(block)) {}

/// Block by block, so that the sums are still in the processor's cache when they are stored.
void MixedChunks::fill(std::size_t /*part*/, Chunk& chunk) {
    std::vector<std::span<float>> block(samples_.begin(), samples_.end());
    for (std::size_t done = 0; done < chunk.frames; done += block.front().size()) {
        for (std::span<float>& channel : block)
            channel = channel.first(std::min(channel.size(), chunk.frames - done));
        const TimelineSample position = from_ + chunk.from + static_cast<std::int64_t>(done);
        mixer_.render(position, block);
        if (course_ != nullptr)
            course_->add(block);
        for (std::size_t channel = 0; channel < block.size(); ++channel)
            store(format_, rounding_, {channel, position.number()}, block[channel],
                  &chunk.channels[channel][done * outputFormat(format_).bytes]);
    }
    mixed_();
}

} // namespace audlmd::command

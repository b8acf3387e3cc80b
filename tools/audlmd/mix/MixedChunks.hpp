#pragma once

#include "host/deliver/Delivery.hpp"
#include "host/mix/Mixer.hpp"
#include "tools/audlmd/files/ChunkWriter.hpp"
#include "tools/audlmd/mix/OutputCourse.hpp"

#include <cstddef>
#include <functional>
#include <vector>

namespace audlmd::command {

/// A part of a timeline as the chunks of an output.
class MixedChunks final : public ChunkProducer {
public:
    /// `from` is the output sample of the timeline with which the output begins. The chunks have as many
    /// channels as the mixer renders: the stems' are behind. After each chunk, `mixed` is called on the
    /// thread that mixes, and so is the course, where there is one. Mixer and course must outlive this
    /// object.
    MixedChunks(Mixer& mixer, TimelineSample from, const OutputLayout& chunks, Rounding rounding,
                std::size_t block, std::function<void()> mixed, OutputCourse* course = nullptr);

    /// The mixer has threads of its own.
    std::size_t parts() const override { return 1; }
    void fill(std::size_t part, Chunk& chunk) override;

private:
    Mixer& mixer_;
    TimelineSample from_;
    FormatId format_;
    Rounding rounding_;
    std::function<void()> mixed_;
    OutputCourse* course_;
    /// One block of each channel.
    std::vector<std::vector<float>> samples_;
};

} // namespace audlmd::command

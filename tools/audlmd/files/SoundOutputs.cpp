#include "tools/audlmd/files/SoundOutputs.hpp"

#include "tools/audlmd/files/ChunkWriter.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"

#include <algorithm>
#include <span>
#include <utility>

namespace audlmd::command {

SoundOutputs::SoundOutputs(std::vector<SoundOutput> outputs, std::int64_t start)
    : outputs_(std::move(outputs)), start_(start), chunks_(outputs_.front().layout),
      rounding_(outputs_.front().rounding) {
    for (const SoundOutput& output : outputs_) {
        if (output.layout.format != chunks_.format || output.rounding != rounding_) {
            chunks_.format = FormatId::f32;
            rounding_ = Rounding::nearest;
        }
        chunks_.channels =
            std::max(chunks_.channels, static_cast<int>(output.firstChannel) + output.layout.channels);
        files_.emplace_back(output.target, output.layout);
    }
}

void SoundOutputs::write(const Chunk& chunk) {
    auto file = files_.begin();
    for (const SoundOutput& output : outputs_) {
        const std::vector<const std::byte*> channels = channelsOf(output, chunk);
        if (channels.size() == 1) {
            (file++)->write(channels.front(), chunk.frames);
            continue;
        }
        interleaved_.resize(std::max(interleaved_.size(), chunk.frames * output.layout.frameBytes()));
        interleave(channels, outputFormat(output.layout.format).bytes, chunk.frames, interleaved_.data());
        (file++)->write(interleaved_.data(), chunk.frames);
    }
}

std::vector<const std::byte*> SoundOutputs::channelsOf(const SoundOutput& output, const Chunk& chunk) {
    const FormatId format = output.layout.format;
    const bool isStored = format == chunks_.format && output.rounding == rounding_;
    const auto count = static_cast<std::size_t>(output.layout.channels);
    stored_.resize(std::max(stored_.size(), count));
    std::vector<const std::byte*> channels;
    for (std::size_t n = 0; n < count; ++n) {
        const std::size_t channel = output.firstChannel + n;
        channels.push_back(chunk.channels[channel].data());
        if (isStored)
            continue;
        std::vector<std::byte>& stored = stored_[n];
        stored.resize(std::max(stored.size(), chunk.frames * outputFormat(format).bytes));
        store(format, output.rounding, {channel, start_ + chunk.from},
              {reinterpret_cast<const float*>(channels.back()), chunk.frames}, stored.data());
        channels.back() = stored.data();
    }
    return channels;
}

void SoundOutputs::commit() {
    for (OutputFile& file : files_)
        file.complete();
    for (OutputFile& file : files_)
        file.commit();
}

std::vector<std::string> SoundOutputs::notes() const {
    std::vector<std::string> all;
    for (const OutputFile& file : files_)
        for (std::string& note : file.notes())
            all.push_back(std::move(note));
    return all;
}

} // namespace audlmd::command

#pragma once

#include "host/deliver/WaveformPeaks.hpp"
#include "tools/audlmd/files/ChunkWriter.hpp"
#include "tools/audlmd/options/PeaksOptions.hpp"

#include <optional>
#include <vector>

namespace audlmd::command {

/// The waveform peaks of an output, written beside it if that is asked for.
class PeaksFile {
public:
    /// Of the chunks of a layout: of the channels that it has speakers for.
    PeaksFile(const PeaksOptions& options, const OutputLayout& layout);

    /// Takes the next chunk, in the layout's format.
    void take(const Chunk& chunk);

    /// Throws CommandError. Call this once, behind the last chunk.
    void write() const;

private:
    PeaksOptions options_;
    FormatId format_;
    /// Nothing where no file is asked for.
    std::optional<WaveformPeaks> peaks_;
    /// One chunk of each channel.
    std::vector<std::vector<float>> samples_;
};

} // namespace audlmd::command

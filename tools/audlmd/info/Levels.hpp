#pragma once

#include "tools/audlmd/files/ReadThrough.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace audlmd::command {

/// Two or more neighbouring samples at full scale, or beyond, on one side: what is left of a wave that was
/// clipped. A single one may be the peak of a sound that just fits.
struct ClippedRuns {
    std::uint64_t count = 0;
    /// In samples.
    std::int64_t longest = 0;
    /// Where the first begins.
    std::int64_t first = 0;
};

struct ChannelLevels {
    /// Linear, of the samples that are numbers.
    double peak = 0.0;
    /// Linear.
    std::optional<double> truePeak;
    ClippedRuns clipped;
    /// Samples that are NaN or infinite, as a float file can have them. They count as silence.
    std::uint64_t notNumbers = 0;
};

/// What is measured in one pass over a file.
struct Levels {
    std::vector<ChannelLevels> channels;
    /// As LoudnessMeter says.
    std::optional<double> integrated;
    std::optional<double> range;
    std::optional<double> highestMomentary;
    std::optional<double> highestShortTerm;
    /// Why neither loudness nor true peaks are measured, for any length. Empty: they are.
    std::string whyNoLoudness;
};

/// Measures a whole file. `layout` is what its channels are; `fullScale` is where its format clips. `done` is
/// told the frames that are measured. Throws SoundFileError.
Levels measureLevels(SoundFile& file, const ChannelLayout& layout, float fullScale,
                     const std::function<void(std::int64_t frames)>& done);

} // namespace audlmd::command

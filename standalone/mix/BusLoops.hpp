#pragma once

#include <cstdint>
#include <span>

namespace audlmd {

// The loops over samples that a mixer adds to those of the library.

/// Adds `gain` times the input to the bus, sample by sample. Both have one length.
void addTo(std::span<float> bus, std::span<const float> input, float gain);

/// The largest magnitude. A NaN counts as 0.
float peakOf(std::span<const float> samples);

/// Samples of a magnitude above a limit.
struct CountAbove {
    std::uint64_t samples = 0;
    /// The first and the last of them, counted from the start of the samples. Meaningless where there are
    /// none.
    std::int64_t first = 0;
    std::int64_t last = 0;
};

CountAbove countAbove(std::span<const float> samples, float limit);

} // namespace audlmd

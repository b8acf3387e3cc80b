#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace audlmd {

// Loops over blocks of samples, outside the chains of the library.

/// Adds `gain` times the input to the bus, sample by sample. Both have one length.
void addTo(std::span<float> bus, std::span<const float> input, float gain);

/// Adds the sum of two products to the bus: bus + (a * gainOfA + b * gainOfB). All have one length.
void addTo(std::span<float> bus, std::span<const float> a, float gainOfA, std::span<const float> b,
           float gainOfB);

/// What is added to a bus: as many samples as the bus has, times a gain.
struct BusInput {
    const float* samples;
    float gain;
};

/// Adds all inputs to the bus, one after another, in one pass: (bus + a * gainOfA) + b * gainOfB and so on.
void addTo(std::span<float> bus, std::span<const BusInput> inputs);

/// Multiplies all samples by a gain, in place.
void multiply(std::span<float> samples, float gain);

/// Fills `samples` from the one at `last` backwards: last[0], last[-1] and so on.
void copyReversed(const float* last, std::span<float> samples);

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

/// Takes frames apart: each channel gets its samples of all frames, and has room for them.
void splitFrames(std::span<const float> frames, std::span<float* const> channels);

/// Puts the containers of two channels side by side, each of 1 to 4 bytes. `frames` has room for all of them.
void joinChannels(const std::byte* left, const std::byte* right, std::size_t bytes, std::size_t count,
                  std::byte* frames);

} // namespace audlmd

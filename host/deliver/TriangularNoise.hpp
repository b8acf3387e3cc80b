#pragma once

#include <cstddef>
#include <cstdint>

namespace audlmd {

/// The noise for dither: triangular, two steps wide. Each number is the sum of two that are evenly spread
/// over a step, so that neither mean nor variance of the rounding error depend on the signal.
///
/// A number is a function of channel and position alone, so slices, blocks and threads agree. The trap: two
/// outputs have the same noise at the same place, which adds up by 6 dB where both are summed.
class TriangularNoise {
public:
    /// Of one channel, counted from 0, from one sample of the output on.
    TriangularNoise(std::size_t channel, std::int64_t position)
        : state_(mixed(channel) + static_cast<std::uint64_t>(position) * increment) {}

    /// The next number, in steps: between -1.0 and 1.0.
    float next() {
        const std::uint64_t bits = mixed(state_);
        state_ += increment;
        const auto sum = static_cast<std::int32_t>((bits >> 48) + (bits >> 32 & 0xFFFF));
        return static_cast<float>(sum - 0xFFFF) * 0x1p-16F;
    }

private:
    static constexpr std::uint64_t increment = 0x9E3779B97F4A7C15;

    /// SplitMix64: a counter in even steps, whose bits are mixed.
    static std::uint64_t mixed(std::uint64_t bits) {
        bits += increment;
        bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
        bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
        return bits ^ bits >> 31;
    }

    std::uint64_t state_;
};

} // namespace audlmd

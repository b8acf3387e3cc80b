#pragma once

#include "tools/plot/Chart.hpp"
#include "tools/plot/Fourier.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace audlmd::plot {

/// The level of a signal over time and frequency, in dB; 0 dB is a sine at full scale.
///
/// The signal is cut into overlapping parts of 1/24 to 1/12 s. Each part is weighted by a Kaiser window
/// (Kaiser and Schafer, 1980) with side lobes below -120 dB, so that a level beside a tone comes from the
/// signal. A cell holds the mean power of the parts in its column, and of each part the largest bin in its
/// row, so that a tone stays visible at any size.
class Spectrogram {
public:
    /// `samples` is the length of the whole signal; `sampleRate` is in samples per second.
    Spectrogram(std::int64_t samples, int sampleRate, std::size_t mostColumns = 600,
                std::size_t mostRows = 320);

    /// Takes the next samples of the signal, in portions of any size.
    void add(std::span<const float> samples);

    /// Ends the signal and returns a heat map over seconds and kilohertz. The darkest colour stands for a
    /// level of `floor` dB. Call this once, after the last add().
    Chart chart(double floor);

private:
    /// Adds the spectrum of the latest samples to the column of their centre.
    void analyse();

    std::int64_t samples_;
    int sampleRate_;
    /// Samples in a part, and from one part to the next.
    std::size_t length_;
    std::size_t hop_;
    std::size_t columns_;
    std::size_t rows_;
    std::vector<float> window_;
    RealFourierTransform transform_;
    /// The latest `length_` samples, oldest first.
    std::vector<float> recent_;
    std::vector<float> weighted_;
    /// How many samples are missing before the next spectrum.
    std::size_t awaited_;
    /// The position of the sample in the middle of the next spectrum.
    std::int64_t centre_ = 0;
    /// Sums over the parts of each column, laid out as HeatMap::values.
    std::vector<float> power_;
    std::vector<std::uint32_t> spectraInColumn_;
};

} // namespace audlmd::plot

#pragma once

#include "tools/audlmd/plot/Chart.hpp"
#include "tools/audlmd/plot/Fourier.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace audlmd::plot {

/// The level of a signal over time and frequency, from short overlapping spectra of about 1/24 second.
///
/// 0 dB is a sine at full scale. Each frame is weighted by a Kaiser window (Kaiser and Schafer, 1980) whose
/// side lobes lie below -120 dB, so that what shows beside a tone is there. A column holds the mean power of
/// its frames, a row the largest of its bins, so that a tone stays visible at any size.
class Spectrogram {
public:
    /// `frames` is the length of the signal, which arrives in portions.
    Spectrogram(std::int64_t frames, int sampleRate, std::size_t mostColumns = 600,
                std::size_t mostRows = 320);

    void add(std::span<const float> samples);

    /// Ends the signal. `floor` is the level, in dB, that is drawn in the darkest colour.
    Chart chart(double floor);

private:
    void analyse();

    std::int64_t frames_;
    int sampleRate_;
    std::size_t length_;
    std::size_t hop_;
    std::size_t columns_;
    std::size_t rows_;
    std::vector<float> window_;
    RealFourierTransform transform_;
    /// The latest `length_` samples, oldest first, and how many more are awaited before the next spectrum.
    std::vector<float> recent_;
    std::vector<float> weighted_;
    std::size_t awaited_;
    std::int64_t centre_ = 0;
    std::vector<float> power_;
    std::vector<std::uint32_t> spectraInColumn_;
};

} // namespace audlmd::plot

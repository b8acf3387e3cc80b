#include "tools/plot/Spectrogram.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

namespace audlmd::plot {
namespace {

/// In samples per second. Above this, the parts last no longer.
constexpr int mostAnalysed = 1 << 20;

/// A Kaiser window, scaled so that a sine at full scale has a power of 1 in its bin.
std::vector<float> kaiserWindow(std::size_t length) {
    constexpr double beta = 17.0;
    std::vector<double> window(length);
    for (std::size_t i = 0; i < length; ++i) {
        const double x = 2.0 * static_cast<double>(i) / static_cast<double>(length) - 1.0;
        window[i] = std::cyl_bessel_i(0.0, beta * std::sqrt(1.0 - x * x));
    }
    const double scale = 2.0 / std::accumulate(window.begin(), window.end(), 0.0);
    std::vector<float> scaled(length);
    std::ranges::transform(window, scaled.begin(),
                           [scale](double w) { return static_cast<float>(w * scale); });
    return scaled;
}

} // namespace

Spectrogram::Spectrogram(std::int64_t samples, int sampleRate, std::size_t mostColumns, std::size_t mostRows)
    : samples_(std::max<std::int64_t>(samples, 1)), sampleRate_(sampleRate),
      length_(std::bit_ceil(static_cast<unsigned int>(std::clamp(sampleRate, 384, mostAnalysed)) / 24U)),
      hop_(std::clamp<std::size_t>(static_cast<std::size_t>(samples_) / mostColumns, 1, length_ / 2)),
      columns_(std::min(mostColumns, static_cast<std::size_t>(samples_) / hop_ + 1)),
      rows_(std::min(mostRows, length_ / 2)), window_(kaiserWindow(length_)), transform_(length_),
      recent_(length_), weighted_(length_), awaited_(length_ / 2), power_(columns_ * rows_),
      spectraInColumn_(columns_) {}

void Spectrogram::add(std::span<const float> samples) {
    while (!samples.empty()) {
        const std::size_t count = std::min(awaited_, samples.size());
        std::shift_left(recent_.begin(), recent_.end(), static_cast<std::ptrdiff_t>(count));
        std::ranges::copy(samples.first(count), recent_.end() - static_cast<std::ptrdiff_t>(count));
        samples = samples.subspan(count);
        awaited_ -= count;
        if (awaited_ == 0)
            analyse();
    }
}

void Spectrogram::analyse() {
    std::ranges::transform(recent_, window_, weighted_.begin(), std::multiplies<>());
    const auto spectrum = transform_(weighted_);
    const auto columns = static_cast<std::int64_t>(columns_);
    const auto column = static_cast<std::size_t>(std::min(centre_ * columns / samples_, columns - 1));
    const std::size_t bins = length_ / 2;
    for (std::size_t row = 0; row < rows_; ++row) {
        float largest = 0.0F;
        for (std::size_t bin = row * bins / rows_; bin < (row + 1) * bins / rows_; ++bin)
            largest = std::max(largest, std::norm(spectrum[bin]));
        power_[column * rows_ + row] += largest;
    }
    ++spectraInColumn_[column];
    centre_ += static_cast<std::int64_t>(hop_);
    awaited_ = hop_;
}

Chart Spectrogram::chart(double floor) {
    const std::vector<float> silence(length_ / 2);
    add(silence);

    Chart chart;
    chart.x = timeAxis(static_cast<double>(samples_) / sampleRate_);
    chart.y = {"Frequency (kHz)", 0.0, sampleRate_ / 2000.0, Scale::linear};
    chart.heatMap = HeatMap{columns_,
                            rows_,
                            std::vector<float>(power_.size()),
                            {"Level (dB re full scale)", floor, 0.0, Scale::decibels}};
    for (std::size_t cell = 0; cell < power_.size(); ++cell) {
        const std::uint32_t spectra = std::max<std::uint32_t>(spectraInColumn_[cell / rows_], 1);
        chart.heatMap->values[cell] = 10.0F * std::log10(power_[cell] / static_cast<float>(spectra));
    }
    return chart;
}

} // namespace audlmd::plot

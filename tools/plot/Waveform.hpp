#pragma once

#include "tools/plot/Chart.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace audlmd::plot {

/// A signal over time, in columns of equal length: the lowest and the highest sample of each, and its RMS
/// where a column has 32 samples or more. What stands at full scale is marked.
class Waveform {
public:
    /// `samples` is the length of the whole signal, above 0; `sampleRate` is in samples per second. Samples
    /// of `fullScale` and more are at full scale.
    Waveform(std::int64_t samples, int sampleRate, double fullScale, std::size_t mostColumns = 1500);

    /// Takes the next samples of the signal, in portions of any size. What is no finite number is left out.
    void add(std::span<const float> samples);

    /// The highest level so far.
    double peak() const;

    /// A chart over seconds, from -`top` to `top`.
    Chart chart(double top) const;

private:
    struct Column {
        double lowest = std::numeric_limits<double>::infinity();
        double highest = -std::numeric_limits<double>::infinity();
        /// The sum of the squares.
        double energy = 0.0;
        std::int64_t samples = 0;
    };

    /// In seconds.
    double middleOf(std::size_t column) const;
    /// A series with an outline from left to right above, and back below. `edges` gives the lowest and the
    /// highest point of a column.
    template <class Edges>
    Series areaOf(const std::string& name, const Colour& colour, Edges edges) const;

    std::int64_t samples_;
    int sampleRate_;
    double fullScale_;
    std::vector<Column> columns_;
    std::int64_t position_ = 0;
};

} // namespace audlmd::plot

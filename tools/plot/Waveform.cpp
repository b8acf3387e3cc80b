#include "tools/plot/Waveform.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace audlmd::plot {
namespace {

/// Fewer say nothing beyond their own levels.
constexpr std::int64_t fewestForRms = 32;

} // namespace

Waveform::Waveform(std::int64_t samples, int sampleRate, double fullScale, std::size_t mostColumns)
    : samples_(samples), sampleRate_(sampleRate), fullScale_(fullScale),
      columns_(std::min(static_cast<std::size_t>(samples), mostColumns)) {}

void Waveform::add(std::span<const float> samples) {
    for (const float sample : samples) {
        Column& column = columns_[static_cast<std::size_t>(position_++ * std::ssize(columns_) / samples_)];
        if (!std::isfinite(sample))
            continue;
        const auto value = static_cast<double>(sample);
        column.lowest = std::min(column.lowest, value);
        column.highest = std::max(column.highest, value);
        column.energy += value * value;
        ++column.samples;
    }
}

double Waveform::peak() const {
    double peak = 0.0;
    for (const Column& column : columns_)
        peak = std::max({peak, column.highest, -column.lowest});
    return peak;
}

double Waveform::middleOf(std::size_t column) const {
    const double share = (static_cast<double>(column) + 0.5) / static_cast<double>(columns_.size());
    return share * static_cast<double>(samples_) / sampleRate_;
}

template <class Edges>
Series Waveform::areaOf(const std::string& name, const Colour& colour, Edges edges) const {
    // Where each column is a sample, the area is but its edge.
    const double width = samples_ == std::ssize(columns_) ? 1.25 : 0.5;
    Series series{.name = name, .colour = colour, .width = width, .area = true, .points = {}};
    for (std::size_t column = 0; column < columns_.size(); ++column)
        if (columns_[column].samples != 0)
            series.points.push_back({middleOf(column), edges(columns_[column]).second});
    for (std::size_t column = columns_.size(); column-- != 0;)
        if (columns_[column].samples != 0)
            series.points.push_back({middleOf(column), edges(columns_[column]).first});
    return series;
}

Chart Waveform::chart(double top) const {
    Chart chart;
    chart.x = timeAxis(static_cast<double>(samples_) / sampleRate_);
    chart.y = {"", -top, top, Scale::linear};
    chart.series.push_back(areaOf("Peak", Palette::skyBlue, [](const Column& column) {
        return std::pair(column.lowest, column.highest);
    }));
    if (samples_ >= fewestForRms * std::ssize(columns_))
        chart.series.push_back(areaOf("RMS", Palette::blue, [](const Column& column) {
            const double level = std::sqrt(column.energy / static_cast<double>(column.samples));
            return std::pair(-level, level);
        }));
    Series atFullScale{
        .name = "At full scale", .colour = Palette::alarm, .width = 2.0, .dots = true, .points = {}};
    for (std::size_t column = 0; column < columns_.size(); ++column) {
        if (columns_[column].highest >= fullScale_)
            atFullScale.points.push_back({middleOf(column), columns_[column].highest});
        if (columns_[column].lowest <= -fullScale_)
            atFullScale.points.push_back({middleOf(column), columns_[column].lowest});
    }
    chart.series.push_back(std::move(atFullScale));
    return chart;
}

} // namespace audlmd::plot

#include "tools/audlmd/plot/Figures.hpp"
#include "tools/audlmd/plot/GainTrace.hpp"
#include "tools/plot/Fourier.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace audlmd::command {

using namespace plot;

namespace {

constexpr double lowestFrequency = 20.0;
constexpr std::size_t transformLength = 131072;

/// The response in decibels over hertz. Each point is the transform's bin at or below one of the frequencies
/// that are evenly spaced on the logarithmic axis.
std::vector<Point> impulseResponse(std::vector<EqualiserBand> bands, int sampleRate,
                                   double highestFrequency) {
    StripSettings settings;
    settings.equaliser = std::move(bands);
    settings.sampleRate = sampleRate;
    GainTrace trace(std::move(settings), transformLength, 1);
    std::vector<float> response;
    for (auto samples = trace.next(); !samples.empty(); samples = trace.next())
        response.insert(response.end(), samples.begin(), samples.end());
    RealFourierTransform transform(transformLength);
    const auto spectrum = transform(response);

    constexpr int steps = 600;
    const double binWidth = static_cast<double>(sampleRate) / transformLength;
    std::vector<Point> points;
    for (int i = 0; i <= steps; ++i) {
        const double wanted =
            lowestFrequency * std::pow(highestFrequency / lowestFrequency, static_cast<double>(i) / steps);
        // The last point takes the bin above, so that the line reaches the edge of the chart.
        const auto bin =
            static_cast<std::size_t>(i < steps ? wanted / binWidth : std::ceil(wanted / binWidth));
        points.push_back({static_cast<double>(bin) * binWidth,
                          20.0 * std::log10(static_cast<double>(std::abs(spectrum[bin])))});
    }
    return points;
}

} // namespace

Figure equaliserFigure(const std::vector<NamedBand>& bands, int sampleRate) {
    const double highestFrequency = std::min(20000.0, sampleRate / 2.0);
    Chart chart;
    if (bands.size() > 1) {
        std::vector<EqualiserBand> all;
        std::ranges::transform(bands, std::back_inserter(all), &NamedBand::band);
        chart.series.push_back({.name = "All bands",
                                .colour = Palette::black,
                                .width = 3.5,
                                .points = impulseResponse(all, sampleRate, highestFrequency)});
    }
    for (std::size_t i = 0; i < bands.size(); ++i)
        chart.series.push_back({.name = bands[i].name,
                                .colour = Palette::lines[i % Palette::lines.size()],
                                .width = 1.5,
                                .points = impulseResponse({bands[i].band}, sampleRate, highestFrequency)});
    constexpr double lowestLevel = -48.0;
    chart.x = {"Frequency (Hz)", lowestFrequency, highestFrequency, Scale::logarithmic};
    chart.y = decibelAxis(chart.series, lowestLevel);
    Figure figure;
    figure.title = "Equaliser";
    figure.subtitle = "Response to an impulse at " + std::to_string(sampleRate) + " Hz";
    figure.charts = {std::move(chart)};
    return figure;
}

} // namespace audlmd::command

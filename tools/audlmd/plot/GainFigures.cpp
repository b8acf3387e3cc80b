#include "host/signal/GainLaws.hpp"
#include "tools/audlmd/plot/Figures.hpp"
#include "tools/audlmd/plot/GainTrace.hpp"

#include <algorithm>
#include <utility>

namespace audlmd::command {

using namespace plot;

namespace {

/// The charts end at this level, in dB.
constexpr double lowestLevel = -72.0;

double seconds(std::int64_t samples, int sampleRate) {
    return static_cast<double>(samples) / sampleRate;
}

} // namespace

Figure envelopeFigure(const StripSettings& settings, std::int64_t length, int sampleRate,
                      const Watcher& watcher) {
    Chart linear;
    linear.series.push_back(
        {.name = "Gain", .width = 2.5, .points = gainOverTime(settings, length, sampleRate, watcher)});
    const auto& points = linear.series[0].points;
    const double highest = std::ranges::max_element(points, {}, &Point::y)->y;
    linear.x = timeAxis(seconds(length, sampleRate));
    linear.y = {"Gain (linear)", 0.0, 1.1 * std::max(1.0, highest), Scale::linear};

    Chart decibels;
    decibels.series.push_back({.name = "Gain", .width = 2.5, .points = inDecibels(points)});
    decibels.x = linear.x;
    decibels.y = decibelAxis(decibels.series, lowestLevel);

    Figure figure;
    figure.title = "Envelope";
    figure.charts = {std::move(linear), std::move(decibels)};
    figure.chartHeight = 300.0;
    return figure;
}

Figure automationFigure(const StripSettings& settings, std::int64_t length, int sampleRate,
                        const Watcher& watcher) {
    const AutomationWalk& walk = settings.automation.value();
    Series nodes{.name = "Nodes", .colour = Palette::vermillion, .width = 4.0, .dots = true, .points = {}};
    for (const auto& node : walk.automation.nodes()) {
        const std::int64_t delivered =
            walk.direction == DynamicLevelDirection::forwards ? node.position : length - 1 - node.position;
        const auto gain = static_cast<double>(
            Aud::GainCurve::Curve<Aud::GainCurve::eMixerStyleLog>::mapUValueToMagnitude(node.uValue));
        nodes.points.push_back({seconds(delivered, sampleRate), decibelsOfGain(gain)});
    }

    Chart chart;
    chart.series.push_back({.name = "Level",
                            .width = 2.5,
                            .points = inDecibels(gainOverTime(settings, length, sampleRate, watcher))});
    chart.series.push_back(std::move(nodes));
    chart.x = timeAxis(seconds(length, sampleRate));
    chart.y = decibelAxis(chart.series, lowestLevel);
    Figure figure;
    figure.title = "Automation";
    figure.charts = {std::move(chart)};
    return figure;
}

} // namespace audlmd::command

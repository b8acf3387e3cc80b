#include "host/signal/GainLaws.hpp"
#include "ole/Aud/GainCurves.hpp"
#include "tools/audlmd/plot/Figures.hpp"
#include "tools/audlmd/plot/GainTrace.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace audlmd::command {

using namespace plot;

namespace {

using namespace Aud::GainCurve;

struct NamedCurve {
    const char* name;
    float (*mapUValueToMagnitude)(float);
    Colour colour;
    bool dashed;
};

constexpr NamedCurve curves[]{
    {"linear", &Curve<eLinear>::mapUValueToMagnitude, Palette::blue, false},
    {"log", &Curve<eMixerStyleLog>::mapUValueToMagnitude, Palette::vermillion, false},
    {"power", &Curve<eConstantPower>::mapUValueToMagnitude, Palette::green, true},
};

/// The charts end at this level, in dB.
constexpr double lowestLevel = -72.0;

double seconds(std::int64_t samples, int sampleRate) {
    return static_cast<double>(samples) / sampleRate;
}

} // namespace

Figure curvesFigure() {
    constexpr int steps = 1500;
    Chart linear{"Linear gain", {"u-value", 0.0, 1.5}, {"Gain", 0.0, 3.5}, {}, {}};
    Chart decibels{"In decibels", {"u-value", 0.0, 1.5}, {"Gain (dB)", -72.0, 12.0, Scale::decibels}, {}, {}};
    for (const NamedCurve& curve : curves) {
        Series gains{.name = curve.name, .colour = curve.colour, .dashed = curve.dashed, .points = {}};
        Series levels = gains;
        for (int i = 0; i <= steps; ++i) {
            const double u = 1.5 * i / steps;
            const auto gain = static_cast<double>(curve.mapUValueToMagnitude(static_cast<float>(u)));
            gains.points.push_back({u, gain});
            levels.points.push_back({u, 20.0 * std::log10(gain)});
        }
        linear.series.push_back(std::move(gains));
        decibels.series.push_back(std::move(levels));
    }
    Figure figure;
    figure.title = "Gain curves";
    figure.subtitle = "From u-value to gain: linear, log (a mixer's fader) and power (constant power)";
    figure.charts = {std::move(linear), std::move(decibels)};
    figure.columns = 2;
    figure.chartWidth = 520.0;
    return figure;
}

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
        const auto gain = static_cast<double>(Curve<eMixerStyleLog>::mapUValueToMagnitude(node.uValue));
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

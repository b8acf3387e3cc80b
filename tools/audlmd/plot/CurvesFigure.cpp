#include "ole/Aud/GainCurves.hpp"
#include "tools/audlmd/plot/Figures.hpp"

#include <cmath>

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

} // namespace audlmd::command

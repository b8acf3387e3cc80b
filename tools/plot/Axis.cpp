#include "tools/plot/Axis.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <initializer_list>

namespace audlmd::plot {
namespace {

/// Longer times are labelled in minutes and seconds. In seconds.
constexpr double longestInSeconds = 120.0;

/// The fewest decimals that distinguish neighbours that are `step` apart.
int decimalsFor(double step) {
    return std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
}

std::string decimal(double value, double step) {
    char text[64];
    // Adding 0 turns a negative zero into a zero. The sign is a real minus, which is as wide as a digit.
    const double rounded = std::round(value / step) * step + 0.0;
    std::snprintf(text, sizeof text, "%s%.*f", rounded < 0.0 ? "\u2212" : "", decimalsFor(step),
                  std::abs(rounded));
    return text;
}

std::string frequency(double hertz) {
    char text[64];
    if (hertz >= 1000.0)
        std::snprintf(text, sizeof text, "%gk", hertz / 1000.0);
    else
        std::snprintf(text, sizeof text, "%g", hertz);
    return text;
}

std::string minutes(double seconds, double step) {
    const double minute = std::floor(seconds / 60.0 + 1e-9);
    const int decimals = decimalsFor(step);
    char text[64];
    std::snprintf(text, sizeof text, "%.0f:%0*.*f", minute, decimals == 0 ? 2 : 3 + decimals, decimals,
                  std::max(0.0, seconds - minute * 60.0));
    return text;
}

/// The smallest of 1, 2 and 5 times a power of ten that is at least `step`; `step` is above 0.
double roundStep(double step) {
    const double decade = std::pow(10.0, std::floor(std::log10(step)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (step <= factor * decade * (1.0 + 1e-9))
            return factor * decade;
    return 10.0 * decade;
}

/// The first candidate that is at least `step`. Beyond the last candidate: a round multiple of the last one.
double firstStepOf(std::initializer_list<double> candidates, double step) {
    for (const double candidate : candidates)
        if (step <= candidate)
            return candidate;
    const double last = *(candidates.end() - 1);
    return last * roundStep(step / last);
}

/// The distance between ticks that is round on the scale and at least `step`.
double stepOf(Scale scale, bool clock, double step) {
    if (clock && step > 10.0)
        return firstStepOf({15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 900.0, 1800.0, 3600.0}, step);
    if (scale == Scale::decibels && step > 1.0)
        return firstStepOf({3.0, 6.0, 12.0, 20.0}, step);
    return roundStep(step);
}

std::string labelOf(Scale scale, bool inMinutes, double value, double step) {
    if (scale == Scale::clock)
        return clockText(value, step);
    return inMinutes ? minutes(value, step) : decimal(value, step);
}

std::vector<Tick> logarithmicTicks(double from, double to) {
    std::vector<Tick> ticks;
    for (double decade = std::pow(10.0, std::floor(std::log10(from))); decade <= to; decade *= 10.0)
        for (int digit = 1; digit < 10; ++digit) {
            const double value = digit * decade;
            const bool labelled = digit == 1 || digit == 2 || digit == 5;
            if (value >= from * (1.0 - 1e-9) && value <= to * (1.0 + 1e-9))
                ticks.push_back({value, labelled ? frequency(value) : std::string()});
        }
    return ticks;
}

} // namespace

double Axis::position(double value) const {
    if (scale == Scale::logarithmic)
        return std::log(value / from) / std::log(to / from);
    return (value - from) / (to - from);
}

Axis timeAxis(double seconds) {
    return {seconds > longestInSeconds ? "Time (min:s)" : "Time (s)", 0.0, seconds, Scale::time};
}

std::vector<Tick> Axis::ticks(int count) const {
    if (scale == Scale::logarithmic)
        return logarithmicTicks(from, to);
    const bool inMinutes = scale == Scale::time && to > longestInSeconds;
    const double step = stepOf(scale, inMinutes || scale == Scale::clock, (to - from) / count);
    std::vector<Tick> ticks;
    const double first = std::ceil(from / step - 1e-9);
    const double last = std::floor(to / step + 1e-9);
    for (double index = first; index <= last; index += 1.0)
        ticks.push_back({index * step, labelOf(scale, inMinutes, index * step, step)});
    return ticks;
}

std::string clockText(double seconds, double step) {
    // Rounded first, so that no minute has 60 seconds.
    const double unit = std::pow(10.0, -decimalsFor(step));
    const double rounded = std::round(seconds / unit) * unit;
    const double hours = std::floor(rounded / 3600.0 + 1e-9);
    std::string rest = minutes(rounded - hours * 3600.0, step);
    if (hours == 0.0)
        return rest;
    char text[64];
    // The minutes take two digits after an hour.
    std::snprintf(text, sizeof text, "%.0f:%s%s", hours, rest[1] == ':' ? "0" : "", rest.c_str());
    return text;
}

} // namespace audlmd::plot

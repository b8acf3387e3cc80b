#include "bench/sound/Page.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace audlmd::sound {
namespace {

std::string formatted(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

/// Rounded to a tenth of a decibel. Adding 0 turns a negative zero into a zero.
std::string decibels(double value) {
    return formatted("%.1f dB", std::round(10.0 * value) / 10.0 + 0.0);
}

std::string signalToNoise(const ToneMeasurement& found) {
    if (!found.level)
        return "none, rest " + decibels(found.restLevel);
    return found.signalToNoise() > resolution ? formatted("> %.0f dB", resolution)
                                              : decibels(found.signalToNoise());
}

} // namespace

std::vector<Conversion> measuredConversions() {
    std::vector<Conversion> conversions;
    for (const Converter converter : {Converter::linear, Converter::filtering, Converter::best})
        for (const double speed : measuredSpeeds)
            for (const bool reverse : {false, true})
                conversions.push_back({converter, speed, reverse});
    return conversions;
}

std::string rowHead(const Conversion& conversion) {
    return std::string("| ") + nameOf(conversion.converter) + " | " + formatted("%g", conversion.speed) +
           " | " + (conversion.reverse ? "backwards" : "forwards") + " |";
}

std::string measuredTable() {
    std::string table =
        "| converter | speed | direction | S/N, 1 kHz | S/N, 6 kHz | S/N, 15 kHz | level, 15 kHz "
        "| rest, 23 kHz | frequency error |\n"
        "|---|---|---|---|---|---|---|---|---|\n";
    for (const Conversion& conversion : measuredConversions()) {
        table += rowHead(conversion);
        ToneMeasurement found;
        double frequencyError = 0.0;
        for (const double tone : measuredTones) {
            found = measureTone(conversion, tone);
            table += " " + signalToNoise(found) + " |";
            frequencyError = std::max(frequencyError, std::abs(found.frequencyError.value_or(0.0)));
        }
        table += " " + (found.level ? decibels(*found.level) : "none") + " |";
        table += " " + decibels(measureTone(conversion, highTone).restLevel) + " |";
        table += frequencyError < 1e-9 ? " < 1e-9 |\n" : formatted(" %.0e |\n", frequencyError);
    }
    return table;
}

} // namespace audlmd::sound

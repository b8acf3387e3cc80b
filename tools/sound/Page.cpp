#include "tools/sound/Page.hpp"

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

} // namespace

std::vector<Conversion> measuredConversions() {
    std::vector<Conversion> conversions;
    for (const Converter converter : {Converter::linear, Converter::filtering})
        for (const double speed : measuredSpeeds)
            for (const bool reverse : {false, true})
                conversions.push_back({converter, speed, reverse});
    return conversions;
}

std::string rowHead(const Conversion& conversion) {
    return std::string("| ") + nameOf(conversion.converter) + " | " + formatted("%g", conversion.speed) +
           " | " + (conversion.reverse ? "backwards" : "forwards") + " |";
}

std::string measuredTables() {
    std::string table =
        "| converter | speed | direction | S/N at 1 kHz | at 6 kHz | at 15 kHz | level at 15 kHz "
        "| rest at 23 kHz | frequency error |\n"
        "|---|---|---|---|---|---|---|---|---|\n";
    for (const Conversion& conversion : measuredConversions()) {
        table += rowHead(conversion);
        double frequencyError = 0.0;
        std::string levelOfLastTone;
        for (const double tone : measuredTones) {
            const ToneMeasurement found = measureTone(conversion, tone);
            table += found.level ? formatted(" %.1f dB |", found.signalToNoise())
                                 : formatted(" (rest %.1f dB) |", found.restLevel);
            frequencyError = std::max(frequencyError, std::abs(found.frequencyError.value_or(0.0)));
            levelOfLastTone = found.level ? formatted(" %+.1f dB |", *found.level) : std::string(" none |");
        }
        table += levelOfLastTone;
        table += formatted(" %.1f dB |", measureTone(conversion, highTone).restLevel);
        table += formatted(" %.1e |\n", frequencyError);
    }
    return table;
}

} // namespace audlmd::sound

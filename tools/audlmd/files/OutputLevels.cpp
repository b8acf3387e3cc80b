#include "tools/audlmd/files/OutputLevels.hpp"

#include "host/words/Numbers.hpp"

#include <nlohmann/json.hpp>

#include <cmath>
#include <utility>

namespace audlmd::command {
namespace {

using Json = nlohmann::json;

Json levelJson(const std::optional<double>& level) {
    return level && std::isfinite(*level) ? Json(*level) : Json(nullptr);
}

} // namespace

std::string levelsLine(const OutputLevels& output) {
    const ProgrammeLevels& levels = output.levels;
    const std::pair<std::optional<double>, std::pair<const char*, const char*>> all[]{
        {levels.integrated, {"loudness ", " LUFS"}},
        {levels.range, {"range ", " LU"}},
        {levels.highestMomentary, {"highest momentary ", " LUFS"}},
        {levels.highestShortTerm, {"highest short-term ", " LUFS"}},
        {levels.truePeak, {"true peak ", " dBTP"}},
        {levels.samplePeak, {"highest sample ", " dB"}}};
    std::string line = "levels: ";
    for (const auto& [level, words] : all)
        if (level)
            line += words.first + words::fixedText(*level, 1) + words.second + ", ";
    return line + "by a gain of " + words::signedText(output.gain, 2) + " dB";
}

Json levelsJson(const ProgrammeLevels& levels) {
    return {{"integrated", levelJson(levels.integrated)},
            {"range", levelJson(levels.range)},
            {"highestMomentary", levelJson(levels.highestMomentary)},
            {"highestShortTerm", levelJson(levels.highestShortTerm)},
            {"truePeak", levelJson(levels.truePeak)},
            {"samplePeak", levelJson(levels.samplePeak)}};
}

Json levelsJson(const OutputLevels& output) {
    Json json = levelsJson(output.levels);
    json["gain"] = output.gain;
    return json;
}

} // namespace audlmd::command

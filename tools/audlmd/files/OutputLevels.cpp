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

Json levelsJson(const OutputLevels& output) {
    return {{"gain", output.gain},
            {"integrated", levelJson(output.levels.integrated)},
            {"range", levelJson(output.levels.range)},
            {"highestMomentary", levelJson(output.levels.highestMomentary)},
            {"highestShortTerm", levelJson(output.levels.highestShortTerm)},
            {"truePeak", levelJson(output.levels.truePeak)},
            {"samplePeak", levelJson(output.levels.samplePeak)}};
}

} // namespace audlmd::command

#include "tools/audlmd/options/LevelOptions.hpp"

#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

#include <stdexcept>

namespace audlmd::command {
namespace {

double levelIn(std::string_view text, std::string_view option, std::string_view unit, double least,
               double most) {
    std::optional<double> level;
    for (const std::string_view known : {unit, std::string_view("dB")})
        if (!level)
            level = words::numberIn(words::withoutUnit(text, known));
    if (level && *level >= least && *level <= most)
        return *level;
    throw CommandError(std::string(option) + ": " + words::quoted(text) + " is not a level from " +
                       words::numberText(least) + " to " + words::numberText(most) + " " + std::string(unit));
}

double parseLoudness(std::string_view text, std::string_view option) {
    return levelIn(text, option, "LUFS", -50.0, 0.0);
}

double parseTruePeak(std::string_view text, std::string_view option) {
    return levelIn(text, option, "dBTP", -60.0, 20.0);
}

double parseSamplePeak(std::string_view text, std::string_view option) {
    return levelIn(text, option, "dBFS", -100.0, 20.0);
}

} // namespace

void LevelOptions::declare(CLI::App& app) {
    constexpr const char* group = "Levels";
    addParsed(app, "--loudness", loudness, &parseLoudness,
              "Bring the whole to this loudness (EBU R 128), by one gain, such as -23")
        ->option_text("LUFS")
        ->group(group);
    addParsed(app, "--true-peak", truePeak, &parseTruePeak,
              "With --loudness: write nothing where true peaks would be higher, such as -1")
        ->option_text("DBTP")
        ->group(group);
    app.add_flag("--loudness-or-peak", loudnessOrPeak,
                 "With --loudness: take less than that where peaks would be too high")
        ->group(group);
    addParsed(app, "--normalise", normalise, &parseSamplePeak,
              "Bring the highest sample of all channels to this level, by one gain, such as -1dB")
        ->option_text("DB")
        ->group(group);
}

void LevelOptions::requireCompatible(bool hasOutput) const {
    if (loudness && normalise)
        throw CommandError("--loudness and --normalise cannot stand together: each says the gain");
    if (!loudness && truePeak)
        throw CommandError("--true-peak needs --loudness");
    if (!loudness && loudnessOrPeak)
        throw CommandError("--loudness-or-peak needs --loudness");
    if (areGiven() && !hasOutput)
        throw CommandError(name() + std::string(" is for an output: name the file to write with -o"));
}

DeliveryTarget LevelOptions::target(bool clips) const {
    return {.loudness = loudness,
            .samplePeak = normalise,
            .mostTruePeak = truePeak,
            .mostSamplePeak = clips ? std::optional(0.0) : std::nullopt};
}

} // namespace audlmd::command

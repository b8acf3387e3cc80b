#include "tools/audlmd/options/StripOptions.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

#include <string>

namespace audlmd::command {

void StripOptions::declareRange(CLI::App& app) {
    app.add_flag("--reverse", reverse, "Play the range from its last sample to its first")->group("Range");
    addParsed(app, "--from", from, &TimeValue::parse, "Start of the range in the input (default: its start)")
        ->option_text("TIME")
        ->group("Range");
    addParsed(app, "--to", to, &TimeValue::parse, "End of the range, exclusive (default: the end)")
        ->option_text("TIME")
        ->group("Range");
    addParsed(app, "--duration", duration, &TimeValue::parse, "Length of the range, instead of --to")
        ->option_text("TIME")
        ->group("Range");
}

void StripOptions::declareSound(CLI::App& app) {
    addParsed(app, "--eq", equaliser, &parseBand,
              "Equaliser band such as peak:1k:+3:0.7, up to five times, in this order")
        ->option_text("BAND")
        ->allow_extra_args(false)
        ->group("Sound");
    addParsed(app, "--fade-in", fadeIn, &parseFade,
              "Fade in over the first TIME; curve linear (the default), log or power")
        ->option_text("TIME[:CURVE]")
        ->group("Sound");
    addParsed(app, "--fade-out", fadeOut, &parseFade, "Fade out over the last TIME")
        ->option_text("TIME[:CURVE]")
        ->group("Sound");
    addParsed(app, "--gain", gain, &parseLevel, "Middle level, at most +10; -inf is silence")
        ->option_text("DB")
        ->group("Sound");
    addParsed(app, "--level", level, &parseLevel, "Outer level, at most +10; not with --automation")
        ->option_text("DB")
        ->group("Sound");
    app.add_option("--automation", automation,
                   "Outer level that moves along the lines (time,decibels) of a CSV file")
        ->option_text("FILE")
        ->group("Sound");
    app.add_flag("--automation-reverse", automationReverse,
                 "Walk the automation backwards: its times count from the output's end")
        ->group("Sound");
    addParsed(app, "--speed", speed, &parseSpeed, "Play so many times as fast, the pitch with it")
        ->option_text("S")
        ->group("Sound");
    addParsed(app, "--converter", converter, &parseConverter,
              "filtering (band-limited, the default) or linear (cheap, any speed)")
        ->option_text("NAME")
        ->group("Sound");
}

/// Checks what no parser of one option can see. Every message says what to use instead, or why.
void StripOptions::requireCompatible() const {
    if (to && duration)
        throw CommandError("--to and --duration cannot stand together: each says where the range ends");
    if (level && automation)
        throw CommandError(
            "--level and --automation cannot stand together: both are the outer level; a fixed "
            "level beside an automation is --gain");
    if (automationReverse && !automation)
        throw CommandError("--automation-reverse needs --automation");
    if (converter && !speed)
        throw CommandError("--converter needs --speed: without it nothing is converted");
    if (equaliser.size() > equaliserBandCount)
        throw CommandError("--eq: " + std::to_string(equaliser.size()) + " bands, but the equaliser has " +
                           std::to_string(equaliserBandCount));
}

} // namespace audlmd::command

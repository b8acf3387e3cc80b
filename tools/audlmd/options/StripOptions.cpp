#include "tools/audlmd/options/StripOptions.hpp"

#include "host/mix/ConvertedSources.hpp"
#include "host/signal/BestConverter.hpp"
#include "host/signal/GainLaws.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/AutomationFile.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace audlmd::command {
namespace {

/// What is needed to resolve times: those of the range are the input's, those of fades and automations are as
/// heard.
struct Rates {
    /// Of the input and of the output, in samples per second.
    int sampleRate;
    /// In source samples per output sample.
    double speed;
};

/// The length of a fade in source samples.
std::uint64_t fadeSamples(const TimeValue& time, const Rates& rates) {
    const double length = std::round(static_cast<double>(time.samples(rates.sampleRate)) * rates.speed);
    if (length < 1.0)
        throw CommandError(time.option() + ": " + time.text() + " is shorter than one sample");
    if (!(length < 0x1p62))
        throw CommandError(time.option() + ": " + time.text() + " is longer than the range");
    return static_cast<std::uint64_t>(length);
}

/// Rounding can make the fades exceed the range by up to speed + 1 samples; shortens the longer one.
void fitIntoRange(FadePlan& fade, std::uint64_t range, double speed) {
    const std::uint64_t total = fade.fadeInSamples + fade.fadeOutSamples;
    if (total <= range || static_cast<double>(total - range) > speed + 1.0)
        return;
    std::uint64_t& longer =
        fade.fadeInSamples > fade.fadeOutSamples ? fade.fadeInSamples : fade.fadeOutSamples;
    longer -= total - range;
}

/// Only with a speed can rounding make two fades too long; without one, fades that do not fit are the user's.
void resolveFades(const StripOptions& options, const Rates& rates, StripSettings& settings) {
    FadePlan& fade = settings.fade;
    if (options.fadeIn) {
        fade.fadeInSamples = fadeSamples(options.fadeIn->length, rates);
        fade.fadeInCurve = options.fadeIn->curve;
    }
    if (options.fadeOut) {
        fade.fadeOutSamples = fadeSamples(options.fadeOut->length, rates);
        fade.fadeOutCurve = options.fadeOut->curve;
    }
    if (settings.converter != Converter::none)
        fitIntoRange(fade, static_cast<std::uint64_t>(settings.to - settings.from), rates.speed);
}

} // namespace

void StripOptions::declareRange(CLI::App& app) {
    app.add_flag("--reverse", reverse, "Play the range from its last sample to its first")->group("Range");
    range.declare(app, "Range", "the input");
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
    addParsed(app, "--gain", gain, &parseGain, "Gain of the sound, at most +60; -inf is silence")
        ->option_text("DB")
        ->group("Sound");
    addParsed(app, "--level", level, &parseLevel, "A second gain, at most +10, which --automation replaces")
        ->option_text("DB")
        ->group("Sound");
    app.add_option("--automation", automation,
                   "A gain that moves along the lines (time,decibels) of a CSV file")
        ->option_text("FILE")
        ->group("Sound");
    app.add_flag("--automation-reverse", automationReverse,
                 "Walk the automation backwards: its times count from the output's end")
        ->group("Sound");
    addParsed(app, "--speed", speed, &parseSpeed, "Play so many times as fast, the pitch with it")
        ->option_text("S")
        ->group("Sound");
    addParsed(app, "--converter", converter, &parseConverter,
              "best (free of aliases, the default of render), filtering (band-limited, the default of play) "
              "or linear "
              "(cheap, any speed)")
        ->option_text("NAME")
        ->group("Sound");
}

/// Checks what no parser of one option can see. Every message says what to use instead, or why.
void StripOptions::requireCompatible() const {
    range.requireCompatible();
    if (level && automation)
        throw CommandError(
            "--level and --automation cannot stand together: an automation replaces that gain; a fixed "
            "gain beside an automation is --gain");
    if (automationReverse && !automation)
        throw CommandError("--automation-reverse needs --automation");
    if (converter && !speed)
        throw CommandError("--converter needs --speed: without it nothing is converted");
    if (equaliser.size() > equaliserBandCount)
        throw CommandError("--eq: " + std::to_string(equaliser.size()) + " bands, but the equaliser has " +
                           std::to_string(equaliserBandCount));
}

bool StripOptions::changesNoSample() const {
    return equaliser.empty() && !fadeIn && !fadeOut && !gain && !level && !automation && !speed;
}

int StripOptions::doublings() const {
    return amplifiedLevelOf(gain.value_or(0.0)).doublings;
}

Media StripOptions::amplified(Media input) const {
    if (doublings() != 0)
        for (std::shared_ptr<SampleSource>& channel : input.channels)
            channel = std::make_shared<ScaledSource>(std::move(channel), doublings());
    return input;
}

ResolvedStrip StripOptions::settingsFor(const StripInput& input) const {
    StripSettings settings;
    settings.sampleRate = input.sampleRate;
    settings.equaliser = equaliser;
    if (gain)
        settings.middleLevel = amplifiedLevelOf(*gain).uValue;
    settings.outerLevel = level;
    if (speed) {
        settings.speed = speed->factor;
        settings.converter =
            converter.value_or(settings.speed == 1.0 ? Converter::filtering : Converter::best);
    }
    const ResolvedRange part = range.in({.name = words::quoted(input.path.string()),
                                         .length = input.frames,
                                         .sampleRate = input.sampleRate,
                                         .markers = input.markers});
    settings.from = part.from;
    settings.to = part.to;
    settings.reverse = reverse;
    const Rates rates{input.sampleRate, settings.speed};
    resolveFades(*this, rates, settings);
    if (automation)
        settings.automation = AutomationWalk{
            Automation(levelNodes(readAutomationFile(*automation), rates.sampleRate, rates.speed)),
            automationReverse ? DynamicLevelDirection::reverse : DynamicLevelDirection::forwards};
    std::vector<std::string> notes{part.note};
    if (settings.converter == Converter::best)
        if (const std::optional<std::string> reason = whyNotBest(settings)) {
            settings.converter = Converter::filtering;
            notes.push_back("note: " + *reason + "; the filtering one is used");
        }
    return {std::move(settings), std::move(notes)};
}

} // namespace audlmd::command

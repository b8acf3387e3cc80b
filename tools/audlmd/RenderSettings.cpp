#include "tools/audlmd/RenderSettings.hpp"

#include "standalone/signal/Speed.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/SettingsText.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

namespace audlmd::command {
namespace {

void readRange(const RenderOptions& options, const SoundFile& input, StripSettings& settings) {
    const std::int64_t frames = input.frames();
    const auto position = [&](const std::optional<std::string>& text, const char* option,
                              std::int64_t otherwise) {
        return text ? TimeValue::parse(*text, option).samples(input.sampleRate()) : otherwise;
    };
    const auto requireInside = [&](const char* what, std::int64_t sample) {
        if (sample > frames)
            throw CommandError(std::string(what) + " is at sample " + std::to_string(sample) + ", outside '" +
                               input.path().string() + "', which ends at sample " + std::to_string(frames));
    };
    settings.from = position(options.from, "--from", 0);
    requireInside("--from", settings.from);
    if (options.duration) {
        const std::int64_t length = position(options.duration, "--duration", 0);
        // Also keeps the sum from overflowing.
        requireInside("the end of --duration",
                      std::max(length, length <= frames ? settings.from + length : 0));
        settings.to = settings.from + length;
    } else {
        settings.to = position(options.to, "--to", frames);
        requireInside("--to", settings.to);
    }
    if (settings.from >= settings.to)
        throw CommandError("the range from sample " + std::to_string(settings.from) + " to " +
                           std::to_string(settings.to) + " holds nothing to render");
    settings.reverse = options.reverse;
}

void readSpeed(const RenderOptions& options, StripSettings& settings) {
    if (!options.speed)
        return;
    const std::string name = options.converter.value_or("filtering");
    if (name != "filtering" && name != "linear")
        throw CommandError("--converter: '" + name + "' is not a converter; use filtering or linear");
    settings.converter = name == "linear" ? Converter::linear : Converter::filtering;
    settings.speed = parseNumber(*options.speed, "--speed");
    if (!std::isfinite(settings.speed) || settings.speed <= 0.0)
        throw CommandError("--speed: " + *options.speed +
                           " is not a finite number above 0; --reverse plays backwards");
    requireSpeed(settings.speed);
}

/// Times are as heard, so that a fade lasts as long as it says at any speed.
std::uint64_t readFade(const std::optional<std::string>& text, const char* option, int sampleRate,
                       double speed, FadeCurve& curve) {
    if (!text)
        return 0;
    const FadeText fade = parseFade(*text, option);
    curve = fade.curve;
    const double length = std::round(static_cast<double>(fade.length.samples(sampleRate)) * speed);
    if (length < 1.0)
        throw CommandError(std::string(option) + ": " + fade.length.text() + " is shorter than one sample");
    if (!(length < 0x1p62))
        throw CommandError(std::string(option) + ": " + fade.length.text() + " is longer than the range");
    return static_cast<std::uint64_t>(length);
}

/// The output's last sample may stand for less than a whole step through the source, and each fade is
/// rounded. So fades that fill the output may come out longer than the range, by less than they may be
/// shortened here unheard.
void fitIntoRange(FadePlan& fade, std::uint64_t range, double speed) {
    const std::uint64_t total = fade.fadeInSamples + fade.fadeOutSamples;
    if (total <= range || static_cast<double>(total - range) > speed + 1.0)
        return;
    std::uint64_t& longer =
        fade.fadeInSamples > fade.fadeOutSamples ? fade.fadeInSamples : fade.fadeOutSamples;
    longer -= total - range;
}

} // namespace

StripSettings readSettings(const RenderOptions& options, const SoundFile& input) {
    StripSettings settings;
    settings.sampleRate = input.sampleRate();
    readRange(options, input, settings);
    readSpeed(options, settings);
    const double speed =
        settings.converter == Converter::filtering ? filteringSpeedInForce(settings.speed) : settings.speed;
    for (const std::string& band : options.equaliser)
        settings.equaliser.push_back(parseBand(band, "--eq"));
    FadePlan& fade = settings.fade;
    fade.fadeInSamples = readFade(options.fadeIn, "--fade-in", input.sampleRate(), speed, fade.fadeInCurve);
    fade.fadeOutSamples =
        readFade(options.fadeOut, "--fade-out", input.sampleRate(), speed, fade.fadeOutCurve);
    if (settings.converter != Converter::none)
        fitIntoRange(fade, static_cast<std::uint64_t>(settings.to - settings.from), speed);
    if (options.gain)
        settings.middleLevel = parseLevel(*options.gain, "--gain");
    if (options.level)
        settings.outerLevel = parseLevel(*options.level, "--level");
    if (options.automation)
        settings.automation = AutomationWalk{
            Automation(levelNodes(readAutomationFile(*options.automation), input.sampleRate(), speed)),
            options.automationReverse ? DynamicLevelDirection::reverse : DynamicLevelDirection::forwards};
    return settings;
}

} // namespace audlmd::command

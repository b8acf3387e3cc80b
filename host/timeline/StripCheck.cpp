#include "host/timeline/StripCheck.hpp"

#include "host/signal/BestConverter.hpp"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <span>
#include <sstream>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

/// Ranges are rounded once for each end and once for the file's rate.
constexpr std::int64_t tolerance = 2;

} // namespace

std::string settleConverter(StripSettings& settings) {
    std::string note;
    if (settings.converter == Converter::best)
        if (const std::optional<std::string> reason = whyNotBest(settings)) {
            settings.converter = Converter::filtering;
            note = *reason + "; the filtering one is used";
        }
    if (settings.converter == Converter::filtering && !isFilteringSpeed(settings.speed)) {
        settings.converter = Converter::linear;
        note = "the speed is beyond the limits of the filtering converter; the linear one is used";
    }
    return note;
}

void requireBands(const std::vector<EqualiserBand>& bands, const Reading& reading) {
    if (bands.size() > equaliserBandCount)
        reading.fail("the equaliser has " + std::to_string(bands.size()) + " bands; five is the most");
    try {
        for (const EqualiserBand& band : bands)
            sectionOf(band, reading.timeline.sampleRate);
    } catch (const std::invalid_argument& error) {
        reading.fail(std::string("equaliser: ") + error.what());
    }
}

MaterialSpan heardOf(const TimelineStrip& strip) {
    const StripSettings& settings = strip.settings;
    const auto skipped = std::llround(static_cast<double>(strip.skip.number()) * settings.speed);
    const auto played = std::llround(static_cast<double>(strip.length) * settings.speed);
    const std::int64_t range = settings.to - settings.from;
    const std::int64_t begin = std::min<std::int64_t>(range, skipped);
    const std::int64_t end = std::min<std::int64_t>(range, skipped + played);
    if (settings.reverse)
        return {settings.to - end, settings.to - begin};
    return {settings.from + begin, settings.from + end};
}

std::string inSeconds(std::int64_t samples, int sampleRate) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(3) << static_cast<double>(samples) / sampleRate << " s";
    return text.str();
}

void noteSilentEnds(const TimelineStrip& strip, std::optional<std::int64_t> length, std::int64_t rounding,
                    bool emptyStart, const Reading& reading) {
    const MaterialSpan heard = heardOf(strip);
    const auto note = [&](std::int64_t samples, const char* end, bool isMeant) {
        if (samples > tolerance)
            reading.note("plays " + inSeconds(samples, reading.timeline.sampleRate) + end, strip.at,
                         !isMeant && samples > rounding);
    };
    note(std::min<MaterialSample>(heard.to, 0) - heard.from, " before the start of its file; silence there",
         emptyStart);
    if (length)
        note(heard.to - std::max<MaterialSample>(*length, heard.from),
             " beyond the end of its file; silence there", false);
}

void noteOutsideAutomation(const TimelineStrip& strip, const Reading& reading) {
    const StripSettings& settings = strip.settings;
    if (!settings.automation)
        return;
    const std::span<const LevelNode> nodes = settings.automation->automation.nodes();
    const auto note = [&](std::int64_t samples, const char* end) {
        if (samples <= tolerance)
            return;
        const auto heard = static_cast<std::int64_t>(static_cast<double>(samples) / settings.speed);
        reading.note("the automation has points up to " + inSeconds(heard, reading.timeline.sampleRate) + end,
                     strip.at);
    };
    note(-nodes.front().position, " before the clip");
    note(nodes.back().position - (settings.to - settings.from), " beyond the clip");
}

} // namespace audlmd::timeline

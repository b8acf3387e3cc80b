#include "host/timeline/MediaRange.hpp"

#include <algorithm>
#include <cmath>
#include <exception>
#include <iomanip>
#include <span>
#include <sstream>

namespace audlmd::timeline {
namespace {

/// Ranges are rounded once for each end and once for the file's rate.
constexpr std::int64_t tolerance = 2;

} // namespace

const MediaAnswers::Answer& MediaAnswers::of(const std::string& media) {
    const auto [entry, isNew] = answers_.try_emplace(media);
    Answer& answer = entry->second;
    if (!isNew || !options_.media)
        return answer;
    try {
        answer.facts = options_.media(media);
        if (answer.facts && answer.facts->sampleRate <= 0)
            answer = {std::nullopt, "it has no sample rate"};
    } catch (const std::exception& error) {
        answer.problem = printable(error.what(), std::string_view::npos);
    }
    return answer;
}

std::int64_t lengthAt(int sampleRate, const MediaFacts& facts) {
    const double scale = static_cast<double>(sampleRate) / facts.sampleRate;
    return std::llround(
        std::min(static_cast<double>(facts.length) * scale, static_cast<double>(farthestPosition)));
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
                    bool emptyStart, const Where& where, Timeline& timeline) {
    const MaterialSpan heard = heardOf(strip);
    const auto note = [&](std::int64_t samples, const char* end, bool isMeant) {
        if (samples > tolerance)
            timeline.notes.push_back({.where = where.text(),
                                      .text = "plays " + inSeconds(samples, timeline.sampleRate) + end,
                                      .at = strip.at,
                                      .silences = !isMeant && samples > rounding});
    };
    note(std::min<MaterialSample>(heard.to, 0) - heard.from, " before the start of its file; silence there",
         emptyStart);
    if (length)
        note(heard.to - std::max<MaterialSample>(*length, heard.from),
             " beyond the end of its file; silence there", false);
}

void noteOutsideAutomation(const TimelineStrip& strip, const Where& where, Timeline& timeline) {
    const StripSettings& settings = strip.settings;
    if (!settings.automation)
        return;
    const std::span<const LevelNode> nodes = settings.automation->automation.nodes();
    const auto note = [&](std::int64_t samples, const char* end) {
        if (samples <= tolerance)
            return;
        const auto heard = static_cast<std::int64_t>(static_cast<double>(samples) / settings.speed);
        timeline.notes.push_back(
            {.where = where.text(),
             .text = "the automation has points up to " + inSeconds(heard, timeline.sampleRate) + end,
             .at = strip.at});
    };
    note(-nodes.front().position, " before the clip");
    note(nodes.back().position - (settings.to - settings.from), " beyond the clip");
}

} // namespace audlmd::timeline

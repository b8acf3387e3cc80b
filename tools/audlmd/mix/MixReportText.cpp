#include "tools/audlmd/mix/MixReportText.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/timeline/List.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/mix/TrackChoice.hpp"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <unordered_map>
#include <utility>

namespace audlmd::command {
namespace {

constexpr std::size_t mostLines = 12;

std::string nameOf(const Timeline& timeline, std::size_t track, std::size_t strip) {
    return timeline::whereIs(timeline, track, strip).text();
}

std::string clockAt(const Timeline& timeline, std::int64_t sample) {
    return words::clock(sample, timeline.sampleRate);
}

/// Appends a dozen lines, and how many more there are.
void appendShortened(std::vector<std::string>& text, const std::vector<std::string>& lines) {
    const auto shown = static_cast<std::ptrdiff_t>(std::min(lines.size(), mostLines));
    text.insert(text.end(), lines.begin(), lines.begin() + shown);
    if (lines.size() > mostLines)
        text.push_back("and " + std::to_string(lines.size() - mostLines) + " more; --report lists all");
}

/// Those by which something is silent come first, so that they are not among those left out.
std::vector<std::string> notes(const Timeline& timeline) {
    std::vector<TimelineNote> ordered = timeline.notes;
    std::stable_partition(ordered.begin(), ordered.end(),
                          [](const TimelineNote& note) { return note.silences; });
    return timeline::noteLines(ordered, timeline.sampleRate);
}

/// One line for all strips with one reason, such as a medium that is not there.
std::vector<std::string> silences(const MixReport& report, const Timeline& timeline) {
    struct Silence {
        std::string firstPlace;
        std::size_t strips = 0;
    };
    std::unordered_map<std::string, std::size_t> numberOf;
    std::vector<std::pair<const std::string*, Silence>> found;
    for (const StripReport& strip : report.strips) {
        if (strip.failure.empty())
            continue;
        const auto [known, isNew] = numberOf.try_emplace(strip.failure, found.size());
        if (isNew) {
            std::string place = nameOf(timeline, strip.track, strip.strip);
            if (!strip.silent.empty())
                place += ", first at " + clockAt(timeline, strip.silent.front().from.number());
            found.emplace_back(&known->first, Silence{std::move(place), 0});
        }
        ++found[known->second].second.strips;
    }
    std::vector<std::string> lines;
    for (const auto& [failure, silence] : found) {
        const std::string count =
            silence.strips == 1 ? "" : " (" + std::to_string(silence.strips) + " clips)";
        lines.push_back("silent: " + silence.firstPlace + ": " +
                        words::printable(*failure, std::string::npos) + count);
    }
    return lines;
}

std::string namesOf(const std::vector<WrittenSound>& outputs) {
    std::string names;
    for (const WrittenSound& output : outputs)
        names += (names.empty()                ? "'"
                  : &output == &outputs.back() ? " and '"
                                               : ", '") +
                 words::printable(output.path) + "'";
    return names;
}

void appendStems(std::vector<std::string>& text, const MixReport& report, const MixRun& run) {
    std::vector<std::string> lines;
    for (std::size_t stem = 0; stem < std::min(run.stems.size(), report.stems.size()); ++stem) {
        float peak = 0.0F;
        for (const Overload& channel : report.stems[stem])
            peak = std::max(peak, channel.peak);
        std::ostringstream line;
        line << "stem " << words::quoted(run.stems[stem].path) << ": " << std::fixed << std::setprecision(2);
        if (peak > 0.0F)
            line << "peak " << decibelsOfGain(static_cast<double>(peak)) << " dB";
        else
            line << "silent";
        if (run.levels && run.levels->stems[stem].integrated &&
            std::isfinite(*run.levels->stems[stem].integrated))
            line << ", loudness " << words::fixedText(*run.levels->stems[stem].integrated, 1) << " LUFS";
        lines.push_back(line.str());
    }
    appendShortened(text, lines);
}

void appendSummary(std::vector<std::string>& lines, const MixReport& report, const Timeline& timeline,
                   const MixRun& run) {
    const double length = static_cast<double>(run.span.length()) / timeline.sampleRate;
    std::ostringstream text;
    text << std::fixed << std::setprecision(3) << "mixed " << run.span.length() << " samples on "
         << words::counted(outputLayout(timeline).size(), "channel") << " (" << length << " s) of '"
         << words::printable(run.timeline) << "' into " << namesOf(run.outputs) << " in " << run.seconds
         << " s: " << std::setprecision(1)
         << timesRealTime(run.span.length(), timeline.sampleRate, run.seconds) << " times real time";
    lines.push_back(text.str());
    if (run.levels)
        lines.push_back(levelsLine(*run.levels));
    if (!run.muted.empty())
        lines.push_back(mutedLine(run.muted));
    appendStems(lines, report, run);
    if (const TimelineSample end = endOfSound(timeline); end.number() < timeline.length && end <= run.span.to)
        lines.push_back("the last sound ends at " + clockAt(timeline, end.number()) + ", the programme at " +
                        clockAt(timeline, timeline.length));
    if (report.slowest.seconds > 0.0) {
        std::ostringstream slowest;
        slowest << "slowest: " << nameOf(timeline, report.slowest.track, report.slowest.strip) << ", "
                << std::fixed << std::setprecision(3) << report.slowest.seconds << " s of the processor";
        lines.push_back(slowest.str());
    }
}

} // namespace

std::vector<std::string> overloadWordsOf(const std::vector<WrittenSound>& outputs) {
    const auto namesOf = [&](bool clips) {
        std::string names;
        for (const WrittenSound& output : outputs)
            if (output.clips == clips)
                names += (names.empty() ? "" : ", ") + words::quoted(output.path);
        return names;
    };
    const std::string clipped = namesOf(true);
    const std::string whole = namesOf(false);
    if (clipped.empty() || whole.empty())
        return {overloadWords(whole.empty())};
    return {overloadWords(true) + (" in " + clipped), overloadWords(false) + (" in " + whole)};
}

std::string overloadText(const Overload& overload, int sampleRate) {
    std::ostringstream text;
    text << words::counted(overload.samples, "sample");
    if (overload.peak > 0.0F)
        text << ", by up to " << std::fixed << std::setprecision(2)
             << decibelsOfGain(static_cast<double>(overload.peak)) << " dB";
    text << ", first at " << words::clock(overload.firstAt.number(), sampleRate);
    return text.str();
}

std::string channelOverloadLine(const std::string& what, std::size_t channel, const Overload& overload,
                                int sampleRate) {
    if (overload.samples == 0)
        return {};
    return what + (": channel " + std::to_string(channel + 1)) + ": " + overloadText(overload, sampleRate);
}

std::vector<std::string> reportLines(const MixReport& report, const Timeline& timeline, const MixRun& run) {
    std::vector<std::string> late;
    std::vector<std::string> loud;
    std::vector<std::string> clipped;
    for (const StripReport& strip : report.strips) {
        std::ostringstream place;
        place << nameOf(timeline, strip.track, strip.strip);
        if (!strip.silent.empty())
            place << ", first at " << clockAt(timeline, strip.silent.front().from.number());
        if (strip.failure.empty() && strip.underrunSamples != 0)
            late.push_back("late: " + place.str() + ": " + std::to_string(strip.underrunSamples) +
                           " samples, " + std::to_string(strip.underrunEpisodes) + " times");
        if (strip.overload.samples != 0)
            loud.push_back("beyond full scale by itself: " + nameOf(timeline, strip.track, strip.strip) +
                           ": " + overloadText(strip.overload, timeline.sampleRate));
    }
    const auto addOverloads = [&](const std::string& what, const std::vector<Overload>& channels) {
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
            if (std::string line = channelOverloadLine(what, channel, channels[channel], timeline.sampleRate);
                !line.empty())
                clipped.push_back(std::move(line));
    };
    for (const std::string& words : overloadWordsOf(run.outputs))
        addOverloads(words, report.channels);
    for (std::size_t stem = 0; stem < std::min(run.stems.size(), report.stems.size()); ++stem)
        addOverloads(overloadWords(run.stems[stem].clips) + (" in " + words::quoted(run.stems[stem].path)),
                     report.stems[stem]);
    std::vector<std::string> lines;
    for (const std::vector<std::string>& kind :
         {notes(timeline), silences(report, timeline), late, loud, clipped})
        appendShortened(lines, kind);
    if (run.levels && !run.levels->shortfall.empty())
        lines.push_back(run.levels->shortfall);
    if (!run.quiet)
        appendSummary(lines, report, timeline, run);
    return lines;
}

} // namespace audlmd::command

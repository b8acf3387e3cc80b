#include "tools/audlmd/mix/page/Problems.hpp"

#include "host/timeline/TimelineError.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/mix/MixReportText.hpp"

#include <algorithm>
#include <map>
#include <utility>

namespace audlmd::command {
namespace {

std::string whole(const std::string& text) {
    return words::printable(text, std::string::npos);
}

/// Equal notes on one place are one, with their number.
void addNotes(const Timeline& timeline, std::vector<Problem>& problems) {
    std::map<std::pair<std::string, std::string>, std::size_t> numberOf;
    std::vector<std::size_t> counts(problems.size(), 1);
    for (const TimelineNote& note : timeline.notes) {
        const auto [known, isNew] = numberOf.try_emplace({note.where, note.text}, problems.size());
        if (isNew) {
            problems.push_back({.kind = note.silences ? "silent" : "note",
                                .isFault = note.silences,
                                .where = whole(note.where),
                                .text = whole(note.text)});
            counts.push_back(0);
        }
        ++counts[known->second];
        if (note.at)
            problems[known->second].places.push_back({*note.at, *note.at});
    }
    for (std::size_t n = 0; n < problems.size(); ++n)
        if (counts[n] > 1)
            problems[n].text += " (" + std::to_string(counts[n]) + " times)";
}

void addStrip(const Timeline& timeline, const StripReport& told, std::vector<Problem>& problems) {
    const TimelineStrip& strip = timeline.tracks[told.track].strips[told.strip];
    const auto add = [&](const char* kind, std::string text, const std::vector<TimelineSpan>& places) {
        problems.push_back({.kind = kind,
                            .where = whole(timeline::whereIs(timeline, told.track, told.strip).text()),
                            .text = std::move(text),
                            .places = places,
                            .strip = told});
        if (places.empty())
            problems.back().places.push_back({strip.at, strip.at + strip.length});
    };
    if (!told.failure.empty())
        add("silent", whole(told.failure), told.silent);
    else if (told.underrunSamples != 0)
        add("late",
            words::counted(told.underrunSamples, "sample") + ", " +
                words::counted(told.underrunEpisodes, "time"),
            told.silent);
    if (told.overload.samples != 0)
        add("beyond full scale by itself", overloadText(told.overload, timeline.sampleRate),
            told.overload.spans);
}

} // namespace

std::vector<Problem> problemsOf(const Timeline& timeline, const MixReport& report, bool clips) {
    std::vector<Problem> problems;
    addNotes(timeline, problems);
    for (const StripReport& strip : report.strips)
        addStrip(timeline, strip, problems);
    for (std::size_t channel = 0; channel < report.channels.size(); ++channel)
        if (const Overload& overload = report.channels[channel]; overload.samples != 0)
            problems.push_back({.kind = overloadWords(clips),
                                .where = "channel " + std::to_string(channel + 1),
                                .text = overloadText(overload, timeline.sampleRate),
                                .places = overload.spans});
    std::ranges::stable_sort(problems, {}, [](const Problem& problem) {
        return problem.places.empty() ? TimelineSample() : problem.places.front().from;
    });
    return problems;
}

} // namespace audlmd::command

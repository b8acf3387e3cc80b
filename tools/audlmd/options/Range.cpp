#include "tools/audlmd/options/Range.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Hint.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

#include <algorithm>
#include <set>

namespace audlmd::command {
namespace {

/// Why a name is no moment, with the names that would be, those that are alike first.
std::string whyNoMarker(const std::string& name, const RangeOf& whole) {
    constexpr std::size_t most = 5;
    std::set<std::string> all;
    for (const Marker& marker : whole.markers)
        all.insert(marker.name);
    all.erase("");
    std::vector<std::string> names(all.begin(), all.end());
    if (names.empty())
        return ", and " + whole.name + " has no markers with names; write " + words::timeSyntax;
    sortByLikeness(names, name);
    std::string text;
    for (std::size_t n = 0; n < std::min(names.size(), most); ++n)
        text += (n == 0 ? " " : ", ") + words::quoted(words::printable(names[n]));
    return ", and no marker of " + whole.name + ", which has" + text +
           (names.size() > most ? " and " + std::to_string(names.size() - most) + " more" : "");
}

std::int64_t samplesOf(const TimeValue& moment, const RangeOf& whole) {
    if (!moment.isName())
        return moment.samples(whole.sampleRate);
    const auto marker = std::ranges::find(whole.markers, moment.text(), &Marker::name);
    if (marker == whole.markers.end())
        throw CommandError(moment.option() + ": " + words::quoted(moment.text()) + " is not a time" +
                           whyNoMarker(moment.text(), whole));
    return marker->position;
}

} // namespace

std::int64_t momentIn(const TimeValue& moment, const RangeOf& whole) {
    const std::int64_t samples = samplesOf(moment, whole);
    if (samples < 0 || samples > whole.length)
        throw CommandError(moment.option() + ": " + moment.text() + " is outside " + whole.name +
                           ", which is " + moment.inThisUnit(whole.length, whole.sampleRate) + " long");
    return moment.countsFromEnd() ? whole.length - samples : samples;
}

void RangeOptions::declare(CLI::App& app, const std::string& group, const std::string& whole) {
    addParsed(app, "--from", from, &TimeValue::parseMoment,
              "Start of the range in " + whole +
                  " (default: its start), also a marker's name; -5s counts from the end")
        ->option_text("TIME")
        ->group(group);
    addParsed(app, "--to", to, &TimeValue::parseMoment, "End of the range, exclusive (default: the end)")
        ->option_text("TIME")
        ->group(group);
    addParsed(app, "--duration", duration, &TimeValue::parse, "Length of the range, instead of --to")
        ->option_text("TIME")
        ->group(group);
}

void RangeOptions::requireCompatible() const {
    if (to && duration)
        throw CommandError("--to and --duration cannot stand together: each says where the range ends");
}

ResolvedRange RangeOptions::in(const RangeOf& whole) const {
    ResolvedRange range;
    range.from = from ? momentIn(*from, whole) : 0;
    range.to = to ? momentIn(*to, whole) : whole.length;
    if (duration) {
        const std::int64_t left = whole.length - range.from;
        const std::int64_t length = duration->samples(whole.sampleRate);
        if (length > left)
            range.note = "--duration: " + duration->text() + " is more than is left of " + whole.name +
                         "; the output ends there, after " + duration->inThisUnit(left, whole.sampleRate);
        else
            range.to = range.from + length;
    }
    if (range.from >= range.to)
        throw CommandError(whole.name + ": the range from sample " + std::to_string(range.from) + " to " +
                           std::to_string(range.to) + " holds nothing");
    return range;
}

} // namespace audlmd::command

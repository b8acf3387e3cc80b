#include "tools/audlmd/options/Range.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

namespace audlmd::command {

std::int64_t momentIn(const TimeValue& moment, const RangeOf& whole) {
    const std::int64_t samples = moment.samples(whole.sampleRate);
    if (samples > whole.length)
        throw CommandError(moment.option() + ": " + moment.text() + " is outside " + whole.name +
                           ", which is " + moment.inThisUnit(whole.length, whole.sampleRate) + " long");
    return moment.countsFromEnd() ? whole.length - samples : samples;
}

void RangeOptions::declare(CLI::App& app, const std::string& group, const std::string& whole) {
    addParsed(app, "--from", from, &TimeValue::parseMoment,
              "Start of the range in " + whole + " (default: its start); -5s counts from the end")
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

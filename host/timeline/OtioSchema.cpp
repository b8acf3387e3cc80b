#include "host/timeline/OtioSchema.hpp"

#include "host/timeline/Rational.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <string_view>

namespace audlmd::timeline {
namespace {

/// The schemas that the reader knows, and the newest version of each.
constexpr std::array<std::pair<std::string_view, char>, 20> newestVersions{{
    {"SerializableCollection", '1'},
    {"Timeline", '1'},
    {"Stack", '1'},
    {"Track", '1'},
    {"Sequence", '1'},
    {"Clip", '2'},
    {"Gap", '1'},
    {"Filler", '1'},
    {"Transition", '1'},
    {"RationalTime", '1'},
    {"TimeRange", '1'},
    {"ExternalReference", '1'},
    {"MissingReference", '1'},
    {"GeneratorReference", '1'},
    {"ImageSequenceReference", '1'},
    {"LinearTimeWarp", '1'},
    {"FreezeFrame", '1'},
    {"TimeEffect", '1'},
    {"Effect", '1'},
    {"Marker", '3'},
}};

/// `what` names the time in messages.
double numberIn(const Json& time, const char* key, const Where& where, const std::string& what) {
    const Json* number = member(time, key);
    if (number == nullptr || !number->is_number())
        where.fail(what + " has no number \"" + key + "\"");
    return number->get<double>();
}

} // namespace

std::string schemaOf(const Json& value, const Where& where) {
    const std::string schema = textIn(value, "OTIO_SCHEMA");
    // "Clip.2" is schema Clip in version 2. A text without a point has no version, which no known schema
    // allows.
    const std::size_t dot = schema.rfind('.');
    std::string name = schema.substr(0, dot);
    const auto* known = std::find_if(newestVersions.begin(), newestVersions.end(),
                                     [&](const auto& entry) { return entry.first == name; });
    if (known == newestVersions.end())
        return name;
    const std::string version = dot == std::string::npos ? "" : schema.substr(dot + 1);
    if (version.size() != 1 || version[0] < '1' || version[0] > known->second)
        where.fail("schema " + printable(schema) + " is not known; versions 1 to " + known->second + " of " +
                   name + " are");
    return name;
}

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

Rational differenceOf(const OtioTime& a, const OtioTime& b) {
    const auto isWhole = [](double count) { return count == std::round(count); };
    if (a.rate != b.rate || a.writtenRate == b.writtenRate || (isWhole(a.count) && isWhole(b.count)))
        return a.seconds - b.seconds;
    return secondsOf(a.count - b.count * (a.writtenRate / b.writtenRate), a.rate);
}

OtioTime timeIn(const Json& parent, const std::string& key, const Where& where, const std::string& what,
                Sign sign) {
    const Json* time = member(parent, key);
    if (time == nullptr)
        where.fail(what + " is missing");
    schemaOf(*time, where);
    const double count = numberIn(*time, "value", where, what);
    const double rate = numberIn(*time, "rate", where, what);
    if (count < 0.0 && sign == Sign::notNegative)
        where.fail(what + " is negative");
    try {
        // 0 frames last no time at any rate, and some exporters write them at none.
        const Rational exact = count == 0.0 && rate == 0.0 ? Rational(1) : exactRate(rate);
        return {secondsOf(count, exact), exact, count, rate};
    } catch (const std::overflow_error& error) {
        where.fail(what + ": " + error.what());
    }
}

std::optional<OtioRange> rangeIn(const Json& parent, const std::string& key, const Where& where) {
    const Json* range = member(parent, key);
    if (range == nullptr)
        return std::nullopt;
    schemaOf(*range, where);
    const OtioTime start = timeIn(*range, "start_time", where, "the start of " + key, Sign::any);
    const OtioTime duration = timeIn(*range, "duration", where, "the duration of " + key);
    return OtioRange{{start.seconds, duration.seconds}, duration.rate, start};
}

} // namespace audlmd::timeline

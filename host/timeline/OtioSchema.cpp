#include "host/timeline/OtioSchema.hpp"

#include "host/timeline/TimelineError.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"

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
double numberIn(const Json& time, const char* key, const Reading& reading, const std::string& what) {
    const Json* number = member(time, key);
    if (number == nullptr || !number->is_number())
        reading.fail(what + " has no number \"" + key + "\"");
    return number->get<double>();
}

} // namespace

std::string schemaOf(const Json& value, const Reading& reading) {
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
        reading.fail("schema " + words::printable(schema) + " is not known; versions 1 to " + known->second +
                     " of " + name + " are");
    return name;
}

Rational differenceOf(const OtioTime& a, const OtioTime& b) {
    const auto isWhole = [](double count) { return count == std::round(count); };
    if (a.rate != b.rate || a.writtenRate == b.writtenRate || (isWhole(a.count) && isWhole(b.count)))
        return a.seconds - b.seconds;
    return secondsOf(a.count - b.count * (a.writtenRate / b.writtenRate), a.rate);
}

OtioTime timeIn(const Json& parent, const std::string& key, const Reading& reading, const std::string& what,
                Sign sign) {
    const Json* time = member(parent, key);
    if (time == nullptr)
        reading.fail(what + " is missing");
    schemaOf(*time, reading);
    const double count = numberIn(*time, "value", reading, what);
    const double rate = numberIn(*time, "rate", reading, what);
    if (count < 0.0 && sign == Sign::notNegative)
        reading.fail(what + " is negative");
    try {
        // 0 frames last no time at any rate, and some exporters write them at none.
        const Rational exact = count == 0.0 && rate == 0.0 ? Rational(1) : exactRate(rate);
        return {secondsOf(count, exact), exact, count, rate};
    } catch (const std::overflow_error& error) {
        reading.fail(what + ": " + error.what());
    }
}

std::optional<OtioRange> rangeIn(const Json& parent, const std::string& key, const Reading& reading) {
    const Json* range = member(parent, key);
    if (range == nullptr)
        return std::nullopt;
    schemaOf(*range, reading);
    const OtioTime start = timeIn(*range, "start_time", reading, "the start of " + key, Sign::any);
    const OtioTime duration = timeIn(*range, "duration", reading, "the duration of " + key);
    return OtioRange{{start.seconds, duration.seconds}, duration.rate, start};
}

namespace {

/// After RFC 3986, section 2.1. A percent sign without two digits stays as it is.
std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::optional<unsigned int> byte = text[i] == '%' && i + 2 < text.size()
                                                     ? words::wholeIn<unsigned int>(text.substr(i + 1, 2), 16)
                                                     : std::nullopt;
        decoded += byte ? static_cast<char>(*byte) : text[i];
        i += byte ? 2 : 0;
    }
    return decoded;
}

/// The path that a target_url means. File URLs are decoded; relative paths start in ReadOptions::folder;
/// other URLs stay as they are. A text without "://" that starts with a slash is a path, with its percent
/// signs; any other is a relative URL, and decoded.
std::string pathOfUrl(const std::string& url, const Reading& reading) {
    constexpr std::string_view scheme = "file:";
    if (words::lowered(url.substr(0, scheme.size())) != scheme) {
        // A URL without a scheme is relative; what starts at the root is a path.
        const bool isWritten = url.starts_with('/') || isElsewhere(url);
        return reading.pathOf(isWritten ? url : percentDecoded(url));
    }
    std::string_view rest = std::string_view(url).substr(scheme.size());
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        // The host's name, which is empty or "localhost" for files of this machine.
        if (const std::size_t slash = rest.find('/'); slash != std::string_view::npos)
            rest.remove_prefix(slash);
    }
    std::string path = percentDecoded(rest);
    // Paths with a drive's letter have a slash more in a URL.
    if (path.size() > 3 && path[2] == ':' && isElsewhere(path.substr(1)))
        path.erase(0, 1);
    return reading.pathOf(path);
}

/// Clip.1 has one reference, Clip.2 several with a key for the active one. The key of a Clip.2 is
/// DEFAULT_MEDIA where the clip names none.
const Json* activeReference(const Json& clip) {
    if (const Json* references = member(clip, "media_references"))
        return member(*references, textIn(clip, "active_media_reference_key", "DEFAULT_MEDIA"));
    return member(clip, "media_reference");
}

bool meet(const Range& a, const Range& b) {
    return a.start < b.start + b.duration && b.start < a.start + a.duration;
}

/// A file that knows when it was recorded starts at that time, so that a clip's source_range in timecode
/// still fits. Other exporters count from 0 whatever the file knows.
std::optional<OtioRange> rangeOfFile(const std::optional<OtioRange>& shown, const Reading& reading,
                                     OtioItem& item) {
    const std::optional<MediaFacts>& facts = reading.media.of(item.media).facts;
    if (!facts)
        return std::nullopt;
    try {
        const Relabel& relabel = item.sound.relabel;
        const Rational rate = Rational::nearest(facts->sampleRate) * Rational(relabel.to, relabel.from);
        const auto samples = [&](std::int64_t count) {
            const auto number = static_cast<double>(count);
            return OtioTime{secondsOf(number, rate), rate, number, rate.value()};
        };
        const Rational length = samples(facts->length).seconds;
        OtioTime start = samples(facts->timeReference);
        if (shown && !meet(shown->range, {start.seconds, length}) &&
            meet(shown->range, {Rational(), length})) {
            item.note("its source_range lies outside of its file's own timecode; it is counted from the "
                      "start of the file");
            start = samples(0);
        }
        return OtioRange{{start.seconds, length}, rate, start};
    } catch (const std::overflow_error& error) {
        reading.fail("the file says of itself: " + std::string(error.what()));
    }
}

/// A clip without a reference to a file may still be known by its name. The reference may have one, too.
void lookForByName(const Json* reference, const Reading& reading, OtioItem& item) {
    const std::string ofReference = reference == nullptr ? "" : textIn(*reference, "name");
    const std::string& name = ofReference.empty() ? item.name : ofReference;
    if (name.empty())
        return item.beSilent("it refers to no file", true);
    item.media = reading.pathOf(name);
    item.note("it refers to no file; a file named '" + words::printable(name) + "' is looked for");
}

} // namespace

std::optional<OtioRange> readMedia(const Json& clip, const std::optional<OtioRange>& shown,
                                   const Reading& reading, OtioItem& item) {
    const Json* reference = activeReference(clip);
    const std::string schema = reference == nullptr ? "MissingReference" : schemaOf(*reference, reading);
    if (schema == "ExternalReference") {
        item.media = pathOfUrl(textIn(*reference, "target_url"), reading);
        if (item.media.empty())
            item.beSilent("its media reference has no target_url", true);
    } else if (schema == "MissingReference") {
        lookForByName(reference, reading, item);
    } else {
        item.beSilent("a " + words::printable(schema.empty() ? "reference without a schema" : schema) +
                          " is not a sound file",
                      true);
    }
    // The system would take the part before the byte for the whole name.
    if (item.media.find('\0') != std::string::npos) {
        item.beSilent("the name of its file '" + words::printable(item.media) + "' has a zero byte", true);
        item.media.clear();
    }
    std::optional<OtioRange> available;
    if (reference != nullptr)
        available = rangeIn(*reference, "available_range", reading);
    if (!available && !item.media.empty())
        available = rangeOfFile(shown, reading, item);
    return available;
}

} // namespace audlmd::timeline

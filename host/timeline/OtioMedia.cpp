#include "host/timeline/OtioMedia.hpp"

#include "host/timeline/JsonParts.hpp"
#include "host/timeline/Rational.hpp"

#include <charconv>
#include <stdexcept>
#include <string_view>

namespace audlmd::timeline {
namespace {

/// After RFC 3986, section 2.1. A percent sign without two digits stays as it is.
std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned int byte = 0;
        if (text[i] == '%' && i + 2 < text.size()) {
            const char* end = text.data() + i + 3;
            if (std::from_chars(text.data() + i + 1, end, byte, 16).ptr == end) {
                decoded += static_cast<char>(byte);
                i += 2;
                continue;
            }
        }
        decoded += text[i];
    }
    return decoded;
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
std::optional<OtioRange> rangeOfFile(const std::optional<OtioRange>& shown, const Where& where,
                                     const OtioContext& context, OtioItem& item) {
    const std::optional<MediaFacts>& facts = context.media.of(item.media).facts;
    if (!facts)
        return std::nullopt;
    try {
        const Rational rate = Rational::nearest(facts->sampleRate);
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
        where.fail("the file says of itself: " + std::string(error.what()));
    }
}

/// A clip without a reference to a file may still be known by its name. The reference may have one, too.
void lookForByName(const Json* reference, const OtioContext& context, OtioItem& item) {
    const std::string ofReference = reference == nullptr ? "" : textIn(*reference, "name");
    const std::string& name = ofReference.empty() ? item.name : ofReference;
    if (name.empty())
        return item.beSilent("it refers to no file", true);
    item.media = pathFrom(name, context.options);
    item.note("it refers to no file; a file named '" + printable(name) + "' is looked for");
}

} // namespace

std::string pathOfUrl(const std::string& url, const ReadOptions& options) {
    constexpr std::string_view scheme = "file:";
    if (lowered(url.substr(0, scheme.size())) != scheme) {
        if (url.find("://") != std::string::npos)
            return url;
        // A URL without a scheme is relative; what starts at the root is a path.
        return pathFrom(url.starts_with('/') ? url : percentDecoded(url), options);
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
    if (path.size() > 2 && path[0] == '/' && path[2] == ':')
        return path.substr(1);
    return pathFrom(path, options);
}

std::optional<OtioRange> readMedia(const Json& clip, const std::optional<OtioRange>& shown,
                                   const Where& where, const OtioContext& context, OtioItem& item) {
    const Json* reference = activeReference(clip);
    const std::string schema = reference == nullptr ? "MissingReference" : schemaOf(*reference, where);
    if (schema == "ExternalReference") {
        item.media = pathOfUrl(textIn(*reference, "target_url"), context.options);
        if (item.media.empty())
            item.beSilent("its media reference has no target_url", true);
    } else if (schema == "MissingReference") {
        lookForByName(reference, context, item);
    } else {
        item.beSilent("a " + printable(schema.empty() ? "reference without a schema" : schema) +
                          " is not a sound file",
                      true);
    }
    // The system would take the part before the byte for the whole name.
    if (item.media.find('\0') != std::string::npos) {
        item.beSilent("the name of its file '" + printable(item.media) + "' has a zero byte", true);
        item.media.clear();
    }
    std::optional<OtioRange> available;
    if (reference != nullptr)
        available = rangeIn(*reference, "available_range", where);
    if (!available && !item.media.empty())
        available = rangeOfFile(shown, where, context, item);
    return available;
}

} // namespace audlmd::timeline

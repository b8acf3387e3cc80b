#include "tools/timeline/OtioMedia.hpp"

#include "tools/timeline/JsonParts.hpp"
#include "tools/timeline/Rational.hpp"

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

/// A file that knows when it was recorded starts at that time, so that a clip's source_range in timecode
/// still fits.
std::optional<OtioRange> rangeOfFile(const std::string& media, const Where& where,
                                     const ReadOptions& options) {
    const std::optional<MediaFacts> facts = options.media ? options.media(media) : std::nullopt;
    if (!facts)
        return std::nullopt;
    try {
        const Rational rate = Rational::nearest(facts->sampleRate);
        const auto seconds = [&](std::int64_t samples) {
            return secondsOf(static_cast<double>(samples), rate);
        };
        return OtioRange{{seconds(facts->timeReference), seconds(facts->length)}, rate};
    } catch (const std::overflow_error& error) {
        where.fail("the file says of itself: " + std::string(error.what()));
    }
}

} // namespace

std::string pathOfUrl(const std::string& url, const ReadOptions& options) {
    constexpr std::string_view scheme = "file:";
    if (!url.starts_with(scheme))
        return url.find("://") == std::string::npos ? pathFrom(url, options) : url;
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

std::optional<OtioRange> readMedia(const Json& clip, const Where& where, const OtioContext& context,
                                   OtioItem& item) {
    const Json* reference = activeReference(clip);
    const std::string schema = reference == nullptr ? "MissingReference" : schemaOf(*reference, where);
    std::optional<OtioRange> available;
    if (reference != nullptr)
        available = rangeIn(*reference, "available_range", where);
    if (reference != nullptr && schema == "ExternalReference") {
        item.media = pathOfUrl(textIn(*reference, "target_url"), context.options);
        if (item.media.empty())
            item.sound.silence = "its media reference has no target_url";
        else if (!available)
            available = rangeOfFile(item.media, where, context.options);
    } else if (schema == "MissingReference") {
        item.sound.silence = "it refers to no file";
    } else {
        item.sound.silence =
            "a " + printable(schema.empty() ? "reference without a schema" : schema) + " is not a sound file";
    }
    return available;
}

} // namespace audlmd::timeline

#include "tools/audlmd/mix/page/Page.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/files/OpenOutput.hpp"
#include "tools/audlmd/mix/page/Base64.hpp"
#include "tools/audlmd/mix/page/PageText.hpp"
#include "tools/audlmd/mix/picture/TimelineFigure.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace audlmd::command {

using Json = nlohmann::json;

namespace {

/// Of sounds that browsers play. Empty for others.
std::string_view mediaTypeOf(const std::filesystem::path& path) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 7> types{
        {{".wav", "audio/wav"},
         {".flac", "audio/flac"},
         {".ogg", "audio/ogg"},
         {".oga", "audio/ogg"},
         {".opus", "audio/ogg"},
         {".mp3", "audio/mpeg"},
         {".m4a", "audio/mp4"}}};
    const std::string extension = words::lowered(path.extension().string());
    const auto found = std::ranges::find(types, extension, [](const auto& type) { return type.first; });
    return found == types.end() ? std::string_view() : found->second;
}

/// A path as a part of a URL (RFC 3986): all but letters, digits and a few marks is written as bytes.
std::string urlOf(const std::filesystem::path& relative) {
    constexpr std::string_view plain = "-._~/";
    constexpr std::string_view digits = "0123456789ABCDEF";
    // So no name passes for the scheme of a URL.
    std::string url = "./";
    for (const char c : relative.generic_string()) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isLetter = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        if (isLetter || plain.find(c) != std::string_view::npos)
            url += c;
        else
            url += {'%', digits[byte >> 4U], digits[byte & 15U]};
    }
    return url;
}

/// From the folder of the page; from the current one, where the page goes into a pipe.
std::filesystem::path relativeTo(const OutputPath& page, const std::filesystem::path& sound) {
    const std::filesystem::path folder =
        page.isStream ? std::filesystem::current_path() : std::filesystem::absolute(page.path).parent_path();
    return std::filesystem::proximate(std::filesystem::absolute(sound), folder);
}

std::string bytesIn(const std::filesystem::path& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return std::move(content).str();
}

Json soundJson(const OutputPath& page, const OutputTarget& sound) {
    Json json{{"name", words::printable(sound.path.filename().string(), std::string::npos)}};
    const std::string_view type = mediaTypeOf(sound.path);
    std::error_code unknown;
    if (const std::uintmax_t size = std::filesystem::file_size(sound.path, unknown);
        !unknown && size <= largestEmbedded && !type.empty())
        json["url"] = "data:" + std::string(type) + ";base64," + base64(bytesIn(sound.path));
    else
        json["url"] = urlOf(relativeTo(page, sound.path));
    return json;
}

/// Ends no element of the page, whatever the texts are: in JSON, such characters stand in texts alone.
std::string harmless(const Json& data) {
    const std::string json = data.dump(-1, ' ', true, Json::error_handler_t::replace);
    std::string text;
    text.reserve(json.size());
    for (const char c : json)
        switch (c) {
        case '<':
            text += "\\u003c";
            break;
        case '>':
            text += "\\u003e";
            break;
        case '&':
            text += "\\u0026";
            break;
        default:
            text += c;
        }
    return text;
}

} // namespace

void writePage(const OutputPath& page, const OutputTarget* sound, const PageSubject& subject,
               const OpenMedia& openMedia, const std::function<void(double share)>& progress) {
    TimelineSketch sketch =
        sketchTimeline(subject.timeline, subject.report, pageColumns(subject.timeline), subject.course);
    readPeaks(sketch, openMedia, progress);
    Json data = pageData(subject, sketch);
    if (sound != nullptr && !sound->isStream)
        data["sound"] = soundJson(page, *sound);
    OpenOutput output(page);
    output.write(pageBeforeData);
    output.write(harmless(data));
    output.write(pageAfterData);
    output.complete();
    output.commit();
}

} // namespace audlmd::command

#include "tools/audlmd/files/FileKind.hpp"

#include "tools/audlmd/CommandError.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>

namespace audlmd::command {
namespace {

/// The most bytes that a 32-bit length in a header can state, less 4096 bytes for the header itself.
constexpr std::uint64_t fourGibibytes = std::numeric_limits<std::uint32_t>::max() - 4096ULL;

constexpr std::array fileKinds{
    // A WAV beyond 4 GiB is written as RF64, which differs only in the header. So WAV has no limit.
    FileKind{"WAV", "wav", "wave", SF_FORMAT_WAV, true, 0},
    FileKind{"AIFF", "aiff", "aif", SF_FORMAT_AIFF, false, fourGibibytes},
    FileKind{"FLAC", "flac", "", SF_FORMAT_FLAC, false, 0},
    FileKind{"CAF", "caf", "", SF_FORMAT_CAF | SF_ENDIAN_LITTLE, true, 0},
    FileKind{"W64", "w64", "", SF_FORMAT_W64, true, 0},
    FileKind{"RF64", "rf64", "", SF_FORMAT_RF64, true, 0},
    FileKind{"AU", "au", "snd", SF_FORMAT_AU, false, fourGibibytes},
    FileKind{"Ogg Vorbis", "ogg", "oga", SF_FORMAT_OGG, false, 0, SF_FORMAT_VORBIS},
    FileKind{"Opus", "opus", "", SF_FORMAT_OGG, false, 0, SF_FORMAT_OPUS},
    FileKind{"MP3", "mp3", "", SF_FORMAT_MPEG, false, 0, SF_FORMAT_MPEG_LAYER_III},
    // The last one: see rawFileKind().
    FileKind{"RAW", "raw", "pcm", SF_FORMAT_RAW | SF_ENDIAN_LITTLE, true, 0},
};

/// Without the point; empty for a name without an extension.
std::string lowerCaseExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    if (!extension.empty())
        extension.erase(0, 1);
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return extension;
}

/// The extensions of the wanted kinds, for a message. Names the first extension of each kind.
template <class Wanted>
std::string joinExtensions(Wanted wanted) {
    std::string list;
    for (const FileKind& kind : fileKinds)
        if (wanted(kind))
            list += (list.empty() ? "." : ", .") + std::string(kind.extension);
    return list;
}

} // namespace

const FileKind* findFileKind(const std::filesystem::path& path) {
    const std::string extension = lowerCaseExtension(path);
    for (const FileKind& kind : fileKinds)
        if (!extension.empty() && (extension == kind.extension || extension == kind.otherExtension))
            return &kind;
    return nullptr;
}

const FileKind& fileKindOf(const std::filesystem::path& path) {
    if (const FileKind* found = findFileKind(path))
        return *found;
    throw CommandError("'" + path.string() + "': the extension names the kind of file to write; use one of " +
                       joinExtensions([](const FileKind&) { return true; }));
}

const FileKind* parseFileKind(std::string_view text, std::string_view option) {
    if (const FileKind* found = findFileKind("x." + std::string(text.substr(text.starts_with('.') ? 1 : 0))))
        return found;
    throw CommandError(std::string(option) + ": '" + std::string(text) +
                       "' is not a kind of file; use one of " +
                       joinExtensions([](const FileKind&) { return true; }));
}

const FileKind& rawFileKind() {
    return fileKinds.back();
}

std::optional<int> subtypeIn(const FileKind& kind, FormatId format) {
    const bool raw = (kind.type & SF_FORMAT_TYPEMASK) == SF_FORMAT_RAW;
    const int subtype = [&]() -> int {
        if (kind.lossy != 0)
            return format == FormatId::f32 ? kind.lossy : 0;
        switch (format) {
        case FormatId::f32:
            return SF_FORMAT_FLOAT;
        case FormatId::s16:
            return SF_FORMAT_PCM_16;
        case FormatId::s24:
            return SF_FORMAT_PCM_24;
        case FormatId::s8:
            return SF_FORMAT_PCM_S8;
        case FormatId::u8:
            return SF_FORMAT_PCM_U8;
        case FormatId::s24in32:
            // Without a header only: a header would call these bytes 32-bit samples, and readers would play
            // them 48 dB too soft.
            return raw ? SF_FORMAT_PCM_32 : 0;
        case FormatId::s32:
            return SF_FORMAT_PCM_32;
        }
        return 0;
    }();
    // libsndfile knows the formats of each kind; one channel at 48 kHz is possible in all of them.
    SF_INFO info{};
    info.channels = 1;
    info.samplerate = 48000;
    info.format = kind.type | subtype;
    if (subtype == 0 || sf_format_check(&info) == SF_FALSE)
        return std::nullopt;
    return subtype;
}

std::optional<FormatId> formatOf(int type) {
    switch (type & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_FLOAT:
        return FormatId::f32;
    case SF_FORMAT_PCM_16:
        return FormatId::s16;
    case SF_FORMAT_PCM_24:
        return FormatId::s24;
    case SF_FORMAT_PCM_S8:
        return FormatId::s8;
    case SF_FORMAT_PCM_U8:
        return FormatId::u8;
    case SF_FORMAT_PCM_32:
        return FormatId::s32;
    default:
        return std::nullopt;
    }
}

FormatId defaultFormatOf(const FileKind& kind) {
    return subtypeIn(kind, FormatId::f32) ? FormatId::f32 : FormatId::s24;
}

void requireHolds(const FileKind& kind, FormatId format, std::uint64_t dataBytes,
                  const std::filesystem::path& path) {
    if (!subtypeIn(kind, format))
        throw CommandError("'" + path.string() + "': a " + std::string(kind.name) + " file does not hold " +
                           std::string(outputFormat(format).name) +
                           " samples; these do: " + joinExtensions([format](const FileKind& other) {
                               return other.lossy == 0 && subtypeIn(other, format).has_value();
                           }));
    if (kind.maxDataBytes != 0 && dataBytes > kind.maxDataBytes)
        throw CommandError("'" + path.string() + "': " + std::string(kind.name) +
                           " files end at 4 GiB; use .wav, .caf, .w64, .rf64 or .raw");
}

} // namespace audlmd::command

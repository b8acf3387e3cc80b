#include "tools/audlmd/files/Container.hpp"

#include "tools/audlmd/CommandError.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>

namespace audlmd::command {
namespace {

/// What the 32-bit lengths of a header can state, less room for the header itself.
constexpr std::uint64_t fourGibibytes = std::numeric_limits<std::uint32_t>::max() - 4096ULL;

constexpr std::array containers{
    // A wav beyond four gibibytes is written as RF64, which differs in its header only.
    Container{"WAV", "wav", "wave", SF_FORMAT_WAV, true, 0},
    Container{"AIFF", "aiff", "aif", SF_FORMAT_AIFF, false, fourGibibytes},
    Container{"FLAC", "flac", "", SF_FORMAT_FLAC, false, 0},
    Container{"CAF", "caf", "", SF_FORMAT_CAF | SF_ENDIAN_LITTLE, true, 0},
    Container{"W64", "w64", "", SF_FORMAT_W64, true, 0},
    Container{"RF64", "rf64", "", SF_FORMAT_RF64, true, 0},
    Container{"AU", "au", "snd", SF_FORMAT_AU, false, fourGibibytes},
    Container{"RAW", "raw", "pcm", SF_FORMAT_RAW | SF_ENDIAN_LITTLE, true, 0},
};

std::string lowerCaseExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    if (!extension.empty())
        extension.erase(0, 1);
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return extension;
}

template <class Wanted>
std::string joinExtensions(Wanted wanted) {
    std::string list;
    for (const Container& container : containers)
        if (wanted(container))
            list += (list.empty() ? "." : ", .") + std::string(container.extension);
    return list;
}

} // namespace

const Container* findContainer(const std::filesystem::path& path) {
    const std::string extension = lowerCaseExtension(path);
    for (const Container& container : containers)
        if (!extension.empty() && (extension == container.extension || extension == container.otherExtension))
            return &container;
    return nullptr;
}

const Container& containerOf(const std::filesystem::path& path) {
    if (const Container* found = findContainer(path))
        return *found;
    throw CommandError("'" + path.string() + "': the extension names the kind of file to write; use one of " +
                       joinExtensions([](const Container&) { return true; }));
}

const Container& rawContainer() {
    return containers.back();
}

std::optional<int> subtypeIn(const Container& container, FormatId format) {
    const bool raw = (container.type & SF_FORMAT_TYPEMASK) == SF_FORMAT_RAW;
    const int subtype = [&]() -> int {
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
            // Only headerless data: a container would call these bytes 32-bit samples, 48 dB too soft.
            return raw ? SF_FORMAT_PCM_32 : 0;
        case FormatId::s32:
            return SF_FORMAT_PCM_32;
        }
        return 0;
    }();
    SF_INFO info{};
    info.channels = 1;
    info.samplerate = 48000;
    info.format = container.type | subtype;
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

std::string extensionsHolding(FormatId format) {
    return joinExtensions(
        [format](const Container& container) { return subtypeIn(container, format).has_value(); });
}

FormatId defaultFormatOf(const Container& container) {
    return subtypeIn(container, FormatId::f32) ? FormatId::f32 : FormatId::s24;
}

void requireHolds(const Container& container, FormatId format, std::uint64_t dataBytes,
                  const std::filesystem::path& path) {
    if (!subtypeIn(container, format))
        throw CommandError("'" + path.string() + "': a " + std::string(container.name) +
                           " file does not hold " + std::string(outputFormat(format).name) +
                           " samples; these do: " + extensionsHolding(format));
    if (container.maxDataBytes != 0 && dataBytes > container.maxDataBytes)
        throw CommandError("'" + path.string() + "': " + std::string(container.name) +
                           " files end at 4 GiB; use .wav, .caf, .w64, .rf64 or .raw");
}

} // namespace audlmd::command

#include "host/cache/StatedLayout.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <vector>

namespace audlmd {
namespace {

/// libsndfile keeps 2048 bytes of its log. Beyond this it may have left something out.
constexpr std::size_t wholeLog = 2000;

/// The number behind the colon of a line of the log.
int numberIn(std::string_view line, int base) {
    line.remove_prefix(std::min(line.find(':') + 1, line.size()));
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    int number = 0;
    std::from_chars(line.data(), line.data() + line.size(), number, base);
    return number;
}

/// Whether libsndfile holds a number for each channel of the file. It makes room for the channels that are
/// there when it reads the map, and hands over as many as there are at the end, from beyond that room if need
/// be. They differ where a header has its channels twice, or behind the map, or a map for other channels. The
/// log tells the order.
bool hasWholeMap(SNDFILE* file, const SF_INFO& info) {
    std::array<char, 4096> log{};
    sf_command(file, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    std::string_view text(log.data());
    const int kind = info.format & SF_FORMAT_TYPEMASK;
    // Of a WAV libsndfile reads the first format alone, which comes early in the log.
    if (text.size() > wholeLog && kind != SF_FORMAT_WAV && kind != SF_FORMAT_WAVEX)
        return false;
    int channels = 0;
    bool isWhole = false;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.starts_with("  Channels")) {
            channels = numberIn(line, 10);
            isWhole = false;
        } else if (line.starts_with("  Channel Mask  :")) {
            // Without a mask, the map of an earlier format stays.
            isWhole = line.find(": 0x0 ") == std::string_view::npos;
        } else if (line.starts_with("  Tag    :")) {
            isWhole = (numberIn(line, 16) & 0xFFFF) == channels;
        }
    }
    return isWhole && channels == info.channels;
}

} // namespace

ChannelLayout statedLayout(SNDFILE* file, const SF_INFO& info) {
    const auto channels = static_cast<std::size_t>(info.channels);
    const int coding = info.format & SF_FORMAT_SUBMASK;
    if (coding == SF_FORMAT_VORBIS || coding == SF_FORMAT_OPUS)
        return vorbisLayout(channels);
    if ((info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_FLAC)
        return usualLayout(channels);
    if (!hasWholeMap(file, info))
        return unknownLayout(channels);
    std::vector<int> map(channels);
    const auto bytes = static_cast<int>(map.size() * sizeof(int));
    return sf_command(file, SFC_GET_CHANNEL_MAP_INFO, map.data(), bytes) == SF_TRUE ? layoutOfMap(map)
                                                                                    : unknownLayout(channels);
}

} // namespace audlmd

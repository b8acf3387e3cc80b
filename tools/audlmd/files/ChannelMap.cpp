#include "tools/audlmd/files/ChannelMap.hpp"

#include "host/words/Text.hpp"

#include <algorithm>
#include <vector>

namespace audlmd::command {
namespace {

bool needsSaying(const ChannelLayout& layout) {
    return layout.size() > 2 && isKnown(layout);
}

/// Whether the speakers stand in the order of the bits of a mask.
bool isInOrderOfMask(const ChannelLayout& layout) {
    return std::ranges::is_sorted(layout);
}

bool isUsual(const ChannelLayout& layout) {
    return areAlike(layout, usualLayout(layout.size()));
}

/// Whether only the order can be another one than the usual.
bool hasUsualSpeakers(ChannelLayout layout) {
    ChannelLayout usual = usualLayout(layout.size());
    std::ranges::sort(layout);
    std::ranges::sort(usual);
    return areAlike(layout, usual);
}

/// CAF and AIFF files know one pair of surrounds, which libsndfile calls the rear ones.
ChannelLayout withRearSurrounds(ChannelLayout layout) {
    if (std::ranges::find(layout, Speaker::rearLeft) == layout.end()) {
        std::ranges::replace(layout, Speaker::sideLeft, Speaker::rearLeft);
        std::ranges::replace(layout, Speaker::sideRight, Speaker::rearRight);
    }
    return layout;
}

} // namespace

int typeFor(int type, const ChannelLayout& layout) {
    return type == SF_FORMAT_WAV && needsSaying(layout) && isInOrderOfMask(layout) ? SF_FORMAT_WAVEX : type;
}

std::string whyLayoutDoesNotFit(int type, const ChannelLayout& layout) {
    const int kind = type & SF_FORMAT_TYPEMASK;
    if (!needsSaying(layout) || (kind == SF_FORMAT_FLAC && (isUsual(layout) || !hasUsualSpeakers(layout))) ||
        (kind == SF_FORMAT_RF64 && isInOrderOfMask(layout)) ||
        (kind != SF_FORMAT_FLAC && kind != SF_FORMAT_RF64))
        return "";
    const ChannelLayout usual = usualLayout(layout.size());
    return "its readers would take the channels " + channelList(layout) + " for " + channelList(usual) +
           "; use --channels " + nameOf(usual) + ", or a .caf";
}

bool stateLayout(SNDFILE* file, int type, const ChannelLayout& layout) {
    const int kind = type & SF_FORMAT_TYPEMASK;
    if (!needsSaying(layout) || kind == SF_FORMAT_FLAC)
        return needsSaying(layout) && isUsual(layout);
    const bool isApple = kind == SF_FORMAT_CAF || kind == SF_FORMAT_AIFF;
    if (!isApple && kind != SF_FORMAT_WAVEX && kind != SF_FORMAT_RF64)
        return false;
    // libsndfile looks for the orders of more channels behind its table.
    if (isApple && layout.size() > 8)
        return false;
    std::vector<int> map = mapOf(isApple ? withRearSurrounds(layout) : layout);
    const auto bytes = static_cast<int>(map.size() * sizeof(int));
    return sf_command(file, SFC_SET_CHANNEL_MAP_INFO, map.data(), bytes) == SF_TRUE;
}

std::string layoutNote(const std::string& path, const ChannelLayout& layout, bool isStated) {
    if (isStated || !needsSaying(layout) || isUsual(layout))
        return "";
    return "note: " + words::quoted(path) + " does not say that its channels are " + channelList(layout);
}

} // namespace audlmd::command

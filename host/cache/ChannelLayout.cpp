#include "host/cache/ChannelLayout.hpp"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <utility>

namespace audlmd {
namespace {

using enum Speaker;

struct SpeakerNames {
    std::string_view name;
    /// libsndfile's number.
    int number;
};

/// By Speaker.
constexpr std::array<SpeakerNames, 18> speakerNames{{{"L", SF_CHANNEL_MAP_LEFT},
                                                     {"R", SF_CHANNEL_MAP_RIGHT},
                                                     {"C", SF_CHANNEL_MAP_CENTER},
                                                     {"LFE", SF_CHANNEL_MAP_LFE},
                                                     {"Lb", SF_CHANNEL_MAP_REAR_LEFT},
                                                     {"Rb", SF_CHANNEL_MAP_REAR_RIGHT},
                                                     {"Lc", SF_CHANNEL_MAP_FRONT_LEFT_OF_CENTER},
                                                     {"Rc", SF_CHANNEL_MAP_FRONT_RIGHT_OF_CENTER},
                                                     {"Cb", SF_CHANNEL_MAP_REAR_CENTER},
                                                     {"Ls", SF_CHANNEL_MAP_SIDE_LEFT},
                                                     {"Rs", SF_CHANNEL_MAP_SIDE_RIGHT},
                                                     {"Tc", SF_CHANNEL_MAP_TOP_CENTER},
                                                     {"Tfl", SF_CHANNEL_MAP_TOP_FRONT_LEFT},
                                                     {"Tfc", SF_CHANNEL_MAP_TOP_FRONT_CENTER},
                                                     {"Tfr", SF_CHANNEL_MAP_TOP_FRONT_RIGHT},
                                                     {"Tbl", SF_CHANNEL_MAP_TOP_REAR_LEFT},
                                                     {"Tbc", SF_CHANNEL_MAP_TOP_REAR_CENTER},
                                                     {"Tbr", SF_CHANNEL_MAP_TOP_REAR_RIGHT}}};

const SpeakerNames& namesOf(Speaker speaker) {
    return speakerNames.at(static_cast<std::size_t>(speaker));
}

using Named = std::pair<std::string_view, ChannelLayout>;

/// The usual layouts come first, by their number of channels.
const std::array<Named, 12>& namedLayouts() {
    static const std::array<Named, 12> table{
        {{"mono", {centre}},
         {"stereo", {left, right}},
         {"3.0", {left, right, centre}},
         {"quad", {left, right, rearLeft, rearRight}},
         {"5.0", {left, right, centre, rearLeft, rearRight}},
         {"5.1", {left, right, centre, lowFrequency, rearLeft, rearRight}},
         {"6.1", {left, right, centre, lowFrequency, rearCentre, sideLeft, sideRight}},
         {"7.1", {left, right, centre, lowFrequency, rearLeft, rearRight, sideLeft, sideRight}},
         {"5.1film", {left, centre, right, rearLeft, rearRight, lowFrequency}},
         {"5.1smpte", {left, right, centre, lowFrequency, rearLeft, rearRight}},
         {"7.1film", {left, centre, right, sideLeft, sideRight, rearLeft, rearRight, lowFrequency}},
         {"7.1smpte", {left, right, centre, lowFrequency, sideLeft, sideRight, rearLeft, rearRight}}}};
    return table;
}

constexpr std::size_t usualLayouts = 8;

/// With the only surrounds of the layout at the sides.
ChannelLayout withSides(ChannelLayout layout) {
    if (std::ranges::find(layout, sideLeft) == layout.end() &&
        std::ranges::find(layout, sideRight) == layout.end()) {
        std::ranges::replace(layout, rearLeft, sideLeft);
        std::ranges::replace(layout, rearRight, sideRight);
    }
    return layout;
}

} // namespace

ChannelLayout unknownLayout(std::size_t channels) {
    return ChannelLayout(channels, unknown);
}

bool isKnown(const ChannelLayout& layout) {
    return std::ranges::find(layout, unknown) == layout.end();
}

ChannelLayout usualLayout(std::size_t channels) {
    return channels >= 1 && channels <= usualLayouts ? namedLayouts().at(channels - 1).second
                                                     : unknownLayout(channels);
}

ChannelLayout vorbisLayout(std::size_t channels) {
    switch (channels) {
    case 3:
        return {left, centre, right};
    case 5:
        return {left, centre, right, rearLeft, rearRight};
    case 6:
        return {left, centre, right, rearLeft, rearRight, lowFrequency};
    case 7:
        return {left, centre, right, sideLeft, sideRight, rearCentre, lowFrequency};
    case 8:
        return {left, centre, right, sideLeft, sideRight, rearLeft, rearRight, lowFrequency};
    default:
        return usualLayout(channels);
    }
}

bool areAlike(const ChannelLayout& a, const ChannelLayout& b) {
    return (a.size() == 1 && b.size() == 1) || withSides(a) == withSides(b);
}

std::optional<ChannelLayout> layoutNamed(std::string_view name) {
    const auto* const found = std::ranges::find(namedLayouts(), name, &Named::first);
    return found != namedLayouts().end() ? std::optional(found->second) : std::nullopt;
}

std::string layoutNames() {
    std::string names;
    for (const auto& [name, layout] : namedLayouts())
        names += (names.empty() ? "" : ", ") + std::string(name);
    return names;
}

std::string nameOf(const ChannelLayout& layout) {
    if (!isKnown(layout))
        return std::to_string(layout.size()) + " channels";
    for (const auto& [name, named] : namedLayouts())
        if (areAlike(named, layout))
            return std::string(name);
    return channelList(layout);
}

std::vector<std::string> channelNames(const ChannelLayout& layout) {
    std::vector<std::string> names;
    for (const Speaker speaker : withSides(layout))
        names.emplace_back(speaker == unknown ? std::to_string(names.size() + 1)
                                              : std::string(namesOf(speaker).name));
    return names;
}

std::string channelList(const ChannelLayout& layout, std::string_view separator) {
    std::string list;
    for (const std::string& name : channelNames(layout)) {
        list += list.empty() ? "" : separator;
        list += name;
    }
    return list;
}

ChannelLayout layoutOfMap(std::span<const int> map) {
    ChannelLayout layout;
    for (const int number : map) {
        // Some formats of libsndfile know a mono channel, which it tells from a centre.
        const int speaker = number == SF_CHANNEL_MAP_MONO ? SF_CHANNEL_MAP_CENTER : number;
        const auto* const found = std::ranges::find(speakerNames, speaker, &SpeakerNames::number);
        const auto mapped = static_cast<Speaker>(found - speakerNames.begin());
        if (found == speakerNames.end() || std::ranges::find(layout, mapped) != layout.end())
            return unknownLayout(map.size());
        layout.push_back(mapped);
    }
    return layout;
}

std::vector<int> mapOf(const ChannelLayout& layout) {
    std::vector<int> map;
    for (const Speaker speaker : layout)
        map.push_back(namesOf(speaker).number);
    return map;
}

} // namespace audlmd

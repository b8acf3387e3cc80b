#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace audlmd {

/// What a channel is heard from. In the order of the bits of a WAV's channel mask.
enum class Speaker : std::uint8_t {
    left,
    right,
    centre,
    lowFrequency,
    rearLeft,
    rearRight,
    leftOfCentre,
    rightOfCentre,
    rearCentre,
    sideLeft,
    sideRight,
    topCentre,
    topFrontLeft,
    topFrontCentre,
    topFrontRight,
    topRearLeft,
    topRearCentre,
    topRearRight,
    unknown
};

/// The speaker of each channel, in the order of the channels. All are unknown, or none is. A single channel
/// is mono, whatever its speaker.
/// \snippet cache.cpp layout
using ChannelLayout = std::vector<Speaker>;

/// So many channels of which nobody says what they are.
ChannelLayout unknownLayout(std::size_t channels);
bool isKnown(const ChannelLayout& layout);

/// What so many channels are where nobody says it: those of a WAV and a FLAC, which SMPTE has too (1 mono,
/// 2 stereo, 3 L R C, 4 L R Ls Rs, 5 L R C Ls Rs, 6 L R C LFE Ls Rs, 7 L R C LFE Cb Ls Rs,
/// 8 L R C LFE Lb Rb Ls Rs). Unknown beyond 8 channels.
ChannelLayout usualLayout(std::size_t channels);
/// The channels of Vorbis and Opus, 1 to 8, which libsndfile leaves in their own order: that of films.
ChannelLayout vorbisLayout(std::size_t channels);

/// Whether two layouts are one to a listener: the only surrounds of a layout may be rear or side speakers.
bool areAlike(const ChannelLayout& a, const ChannelLayout& b);

/// The layout of a name of layoutNames(); nothing for other words.
std::optional<ChannelLayout> layoutNamed(std::string_view name);
/// All names, for messages.
std::string layoutNames();
/// The name of a layout, such as "5.1", else the names of its channels.
std::string nameOf(const ChannelLayout& layout);
/// A name for each channel, such as L, R, C, LFE, Ls and Rs; the numbers from 1 on where the speakers are
/// unknown.
std::vector<std::string> channelNames(const ChannelLayout& layout);
/// The same in one text.
std::string channelList(const ChannelLayout& layout, std::string_view separator = " ");

/// The layout that libsndfile's numbers (SF_CHANNEL_MAP_LEFT and so on) mean. Unknown where one of them is no
/// speaker, or two are the same.
ChannelLayout layoutOfMap(std::span<const int> map);
/// libsndfile's numbers for a known layout.
std::vector<int> mapOf(const ChannelLayout& layout);

} // namespace audlmd

#pragma once

#include "host/cache/ChannelLayout.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace audlmd {

/// How channels are summed into others: rows[o][m] is the linear gain of channel m in the sum o.
struct Routing {
    std::vector<std::vector<float>> rows;
};

/// Other channels of the same sound.
struct FoldDown {
    Routing routing;
    /// Of the sums: one speaker for each row.
    ChannelLayout layout;
};

/// The routing of one layout into another by their speakers; where one of them is unknown, its usual layout
/// counts. A speaker that the target has gets its channel at full level. Other channels go, in steps as far
/// as needed, where docs/sound.md says: the centre and the surrounds to left and right at -3 dB, as ITU-R
/// BS.775 has it, two pairs of surrounds into one at -3 dB, the low-frequency channel nowhere; into mono goes
/// half the sum of what would go into stereo. One channel goes to left and right at full level (other
/// programs lower it by 3 dB there).
///
/// Where both are unknown and the target has enough channels, the channels go one to one, and one channel to
/// the first two. Throws std::invalid_argument where channels are too many and nobody knows their speakers.
/// \snippet timeline.cpp routing
Routing defaultRouting(const ChannelLayout& from, const ChannelLayout& to);

/// The sums that the channels of these numbers, counted from 0, are. Each must be below `channels`.
Routing pickedChannels(const std::vector<std::size_t>& numbers, std::size_t channels);

/// First one routing, then another of its sums. The widths must fit.
/// \snippet timeline.cpp routing
Routing combined(const Routing& first, const Routing& second);

/// Lowers what goes to one side: at -100 nothing goes to right, at 100 nothing to left, at 0 all is as it
/// was. In between the sides are as 100 - pan to 100 + pan, and the louder one keeps its level. Speakers
/// other than left and right keep theirs, and a layout without both is as it was. Throws
/// std::invalid_argument for other pans.
Routing panned(Routing routing, double pan, const ChannelLayout& to);

/// What becomes of a layout in another one, in words: "5.1 is folded down to stereo, without LFE".
/// \snippet timeline.cpp routing
std::string foldDownText(const ChannelLayout& from, const ChannelLayout& to);

} // namespace audlmd

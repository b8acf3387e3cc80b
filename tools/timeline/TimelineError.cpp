#include "tools/timeline/TimelineError.hpp"

namespace audlmd::timeline {

std::string printable(std::string_view text) {
    constexpr std::size_t longest = 80;
    std::string shown;
    std::size_t characters = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        // In UTF-8 all bytes of a character but the first begin with the bits 10, so a character is never cut
        // in two.
        const bool continuesCharacter = (byte & 0xC0U) == 0x80U;
        if (!continuesCharacter && ++characters > longest)
            return shown + "...";
        shown += byte < 0x20U || byte == 0x7FU ? '?' : c;
    }
    return shown;
}

std::string Where::text() const {
    std::string place;
    if (!track.empty())
        place = "track '" + printable(track) + "'";
    if (!clip.empty())
        place += (place.empty() ? "" : ", ") + ("clip '" + printable(clip) + "'");
    return place.empty() ? "timeline" : place;
}

void Where::fail(const std::string& sentence) const {
    throw TimelineError(text() + ": " + sentence);
}

} // namespace audlmd::timeline

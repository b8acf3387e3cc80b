#include "host/timeline/TimelineError.hpp"

#include "host/words/Text.hpp"

namespace audlmd::timeline {

std::string Where::text() const {
    std::string text;
    if (!track.empty())
        text = "track '" + words::printable(track) + "'";
    if (!clip.empty())
        text += (text.empty() ? "" : ", ") + ("clip '" + words::printable(clip) + "'");
    return text.empty() ? "timeline" : text;
}

Where whereIs(const Timeline& timeline, std::size_t track, std::size_t strip) {
    const auto named = [](const std::string& name, std::size_t number) {
        return name.empty() ? "#" + std::to_string(number + 1) : name;
    };
    return {.track = named(timeline.tracks[track].name, track),
            .clip = named(timeline.tracks[track].strips[strip].name, strip)};
}

} // namespace audlmd::timeline

#include "fuzz/Fuzzing.hpp"
#include "fuzz/SameTimeline.hpp"
#include "host/mix/OpenStrip.hpp"
#include "host/timeline/List.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/timeline/TimelineFiles.hpp"

#include <algorithm>
#include <optional>

namespace audlmd::fuzz {
namespace {

using namespace timeline;

/// What a medium says depends on the capital letters of its name, which no conversion of the name changes.
std::optional<MediaFacts> factsOf(const std::string& media) {
    switch (std::ranges::count_if(media, [](char c) { return c >= 'A' && c <= 'Z'; }) % 6) {
    case 1:
        return std::nullopt;
    case 2:
        throw std::runtime_error("broken");
    case 3:
        return MediaFacts{farthestPosition, 768000, farthestPosition};
    case 4:
        return MediaFacts{1, 1000, -1};
    case 5:
        return MediaFacts{0, 0, 0};
    default:
        return MediaFacts{1'764'000, 44100, 44100};
    }
}

ReadOptions options() {
    ReadOptions how;
    how.folder = "/media";
    how.media = &factsOf;
    return how;
}

/// Notes may change at the first writing: equal ones become one, and reading finds those of the media once
/// more.
void requireRoundTrip(const Timeline& read) {
    const std::string text = writeJson(read);
    const Timeline again = readTimeline(text, options());
    require(areSame(read, again), "what is written reads to the same timeline:\n" + text);
    const std::string textAgain = writeJson(again);
    require(writeJson(readTimeline(textAgain, options())) == textAgain,
            "notes stay as they are from the second writing on:\n" + textAgain);
}

void requireList(const Timeline& read) {
    const std::string text = list(read, [](const std::string& media) { return media; });
    require(std::ranges::none_of(text, [](char c) { return c >= 0 && c < ' ' && c != '\n'; }),
            "a list gives no orders to a terminal");
}

/// Else a user would learn of a strip without the track and the key that are wrong.
void requireMixable(const Timeline& read) {
    for (const TimelineTrack& track : read.tracks)
        for (const TimelineStrip& strip : track.strips)
            try {
                soundingSpan(strip, read.sampleRate);
            } catch (const std::invalid_argument& error) {
                require(false, std::string("a mixer takes what was read: ") + error.what());
            }
}

/// Timelines in OpenTimelineIO and in our own JSON. A text is read, or refused with one line. What was read
/// has a list that a terminal can show, strips that a mixer takes, and is written to a text that reads to the
/// same timeline.
void read(std::string_view text) {
    try {
        const Timeline read = readTimeline(text, options());
        requireList(read);
        requireMixable(read);
        requireRoundTrip(read);
    } catch (const TimelineError& error) {
        requireOneLine(error.what());
    }
}

} // namespace
} // namespace audlmd::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    audlmd::fuzz::read({reinterpret_cast<const char*>(bytes), size});
    return 0;
}

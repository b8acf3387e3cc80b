#include "tools/audlmd/mix/TrackChoice.hpp"

#include "host/timeline/TimelineError.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Hint.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>

namespace audlmd::command {
namespace {

/// Marks all tracks of one of the names; a name that is none may be a number.
std::vector<bool> chosenBy(const std::vector<std::string>& words, const Timeline& timeline,
                           const std::string& option) {
    const std::vector<TimelineTrack>& tracks = timeline.tracks;
    std::vector<bool> chosen(tracks.size());
    for (const std::string& word : words) {
        bool isName = false;
        for (std::size_t track = 0; track < tracks.size(); ++track)
            if (tracks[track].name == word)
                chosen[track] = isName = true;
        if (isName)
            continue;
        const std::optional<std::int64_t> number = words::wholeIn<std::int64_t>(word);
        if (number && *number >= 1 && *number <= std::ssize(tracks)) {
            chosen[static_cast<std::size_t>(*number - 1)] = true;
            continue;
        }
        std::vector<std::string> names;
        for (const TimelineTrack& track : tracks)
            names.push_back(track.name);
        const std::string meant = nearest(word, names);
        throw CommandError(option + ": there is no track " + words::quoted(word) +
                           (meant.empty() ? ", and no number of one: there are " +
                                                words::counted(tracks.size(), "track") + ", see --list"
                                          : "; did you mean " + words::quoted(meant) + "?"));
    }
    return chosen;
}

std::string nameOf(const Timeline& timeline, std::size_t track) {
    const std::string& name = timeline.tracks[track].name;
    return name.empty() ? "#" + std::to_string(track + 1) : name;
}

} // namespace

void TrackChoice::declare(CLI::App& app, const std::string& group) {
    app.add_option("--only", only, "Hear these tracks only, by name or number")
        ->option_text("TRACK ...")
        ->group(group);
    app.add_option("--mute", mute, "Do not hear these tracks")->option_text("TRACK ...")->group(group);
}

std::vector<std::string> TrackChoice::applyTo(Timeline& timeline) const {
    const std::vector<bool> kept = chosenBy(only, timeline, "--only");
    const std::vector<bool> dropped = chosenBy(mute, timeline, "--mute");
    std::vector<std::string> muted;
    std::set<std::string> silent;
    std::set<std::string> heard;
    for (std::size_t track = 0; track < timeline.tracks.size(); ++track) {
        const bool isHeard = (only.empty() || kept[track]) && !dropped[track];
        std::set<std::string>& places = isHeard ? heard : silent;
        places.insert(timeline::Where{.track = timeline.tracks[track].name, .clip = ""}.text());
        for (std::size_t strip = 0; strip < timeline.tracks[track].strips.size(); ++strip)
            places.insert(timeline::whereIs(timeline, track, strip).text());
        if (isHeard)
            continue;
        muted.push_back(nameOf(timeline, track));
        for (TimelineStrip& strip : timeline.tracks[track].strips)
            if (strip.silence.empty())
                strip.silence = "its track is muted";
    }
    for (TimelineNote& note : timeline.notes)
        note.silences &= !silent.contains(note.where) || heard.contains(note.where);
    return muted;
}

std::string mutedLine(const std::vector<std::string>& tracks) {
    constexpr std::size_t most = 12;
    std::string line;
    for (std::size_t n = 0; n < std::min(tracks.size(), most); ++n)
        line += (line.empty() ? "muted: " : ", ") + words::quoted(tracks[n]);
    return tracks.size() > most ? line + " and " + std::to_string(tracks.size() - most) + " more" : line;
}

} // namespace audlmd::command

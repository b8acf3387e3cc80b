#pragma once

#include "host/mix/Relabel.hpp"
#include "host/mix/Routing.hpp"
#include "host/signal/StripPlayer.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace audlmd {

/// A part of media, placed on the output.
struct TimelineStrip {
    /// For the list and the report.
    std::string name;
    /// Names the media for whoever opens it: a path, or a key of the program's own.
    std::string media;
    /// Why the strip is silent. Empty: it sounds. A strip with a reason keeps its place for lists and
    /// pictures; a mixer passes over it and does not open its media.
    std::string silence;
    /// The first sample that is heard.
    TimelineSample at;
    /// How long the strip lasts. Where the range gives fewer, the rest is silent; more are cut
    /// off.
    Distance<OutputRate> length;
    /// What of the strip is heard first: what lies before is left out, as by StripPlayer::seek(). Fades
    /// and automation stay where the whole range has them: this is how a strip is cut in the middle of a
    /// fade.
    OutputSample skip;
    /// What the channels of the media are. Empty: what the media say.
    ChannelLayout layout = {};
    /// The rate at which the media are taken. Not for reversal or speed, which `settings` have.
    Relabel relabel = {};
    /// Range, direction, speed, fades, equaliser and automation. Samples are the media's, as relabelled, at
    /// the timeline's sample rate. Cookie, sample rate, levels and waiting are set by the mixer.
    StripSettings settings;
    /// Fixed gain of the whole strip, in decibels: minus infinity up to +60, which is more than one level
    /// stage gives.
    double gainDb = 0.0;
    /// Into the channels of the timeline. Not set: defaultRouting().
    std::optional<Routing> routing;
    /// After the routing, see panned(): -100 is left, 0 the middle, 100 right.
    double pan = 0.0;
};

/// Strips that a user sees as one row. A track changes nothing of the sound but the order in which strips are
/// summed, see Mixer.
struct TimelineTrack {
    std::string name;
    std::vector<TimelineStrip> strips;
};

/// A named time.
struct TimelineMarker {
    std::string name;
    TimelineSample at;
};

/// Something of the timeline that is not played as it was written, in words for the user.
struct TimelineNote {
    /// The track and the clip.
    std::string where;
    std::string text;
    /// Nothing where it has no one place.
    std::optional<TimelineSample> at = std::nullopt;
    /// Whether something is silent because of it that the file meant to be heard, or is heard at another
    /// time or without its fade. Counts as a failure.
    bool silences = false;
};

/// What a mixer plays.
/// \snippet timeline.cpp timeline
struct Timeline {
    std::string name;
    int sampleRate = 48000;
    /// What strips are routed into.
    std::size_t channels = 2;
    /// What the channels are. Empty: unknown.
    ChannelLayout layout = {};
    /// What a mixer gives of the channels. Not set: the channels themselves.
    std::optional<FoldDown> foldDown = std::nullopt;
    /// As long as the programme, pictures included: the sound may end earlier, see endOfSound().
    Distance<OutputRate> length;
    /// The time of the first output sample on the user's clock, such as 1:00:00:00.
    std::int64_t timeReference = 0;
    /// In frames of pictures per second, for showing times: a whole number, or such a number times 1000/1001.
    /// 0 where it is not known.
    double frameRate = 0.0;
    std::vector<TimelineTrack> tracks;
    std::vector<TimelineMarker> markers;
    std::vector<TimelineNote> notes;
};

/// What the channels are that strips are routed into, of which there are as many.
ChannelLayout layoutOf(const Timeline& timeline);
/// What the channels are that a mixer gives, of which there are as many.
ChannelLayout outputLayout(const Timeline& timeline);

/// Where the last strip ends that is not silent. 0 without strips.
TimelineSample endOfSound(const Timeline& timeline);

} // namespace audlmd

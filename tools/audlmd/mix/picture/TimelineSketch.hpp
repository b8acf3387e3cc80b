#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"
#include "tools/audlmd/mix/OutputCourse.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace audlmd::command {

/// The time of a picture, from output sample 0 on, cut into columns of equal width.
struct TimeColumns {
    /// In output samples, at least 1.
    std::int64_t length = 1;
    std::size_t count = 1;

    /// Where an output sample lies, in columns from the left edge of the picture.
    double columnAt(double sample) const {
        return sample * static_cast<double>(count) / static_cast<double>(length);
    }
    /// The inverse.
    double sampleAt(double column) const {
        return column * static_cast<double>(length) / static_cast<double>(count);
    }
};

/// The lowest and the highest u-value of the mixer-style curve in one column.
struct LevelRange {
    float lowest = 0.0F;
    float highest = 0.0F;
};

/// A part of the material, from `from` to `to`. In samples at the timeline's sample rate, with a fraction.
struct MaterialPart {
    double from = 0.0;
    double to = 0.0;
};

/// One strip as a picture shows the strip. A column below is counted from the strip's first one.
struct StripSketch {
    /// The samples of the material that sound in a column. In reverse the first column has the last samples.
    MaterialPart materialIn(std::size_t column) const;
    std::size_t columnCount() const { return peaks.size(); }

    /// Which strip of the track, from 0.
    std::size_t number = 0;
    std::string name;
    /// Names the material for OpenMedia.
    std::string media;
    Relabel relabel;
    /// What changes the sound, in a few words.
    std::string note;
    /// Why there is no waveform, in a word or two. Empty: nothing failed.
    std::string failure;
    /// Whether the timeline has a reason for silence, which is the note. There is no waveform then.
    bool isSilent = false;

    /// Where the strip sounds, inside the picture.
    TimelineSpan sounds;
    /// The box's place among strips of the track at the same time: row 0 is the uppermost of `rows`.
    std::size_t row = 0;
    std::size_t rows = 1;

    /// The borders of the columns, in output samples: one more than there are columns. The first and the last
    /// are those of `sounds`, the others lie between columns of the picture.
    std::vector<double> borders;
    /// The largest magnitude of all channels of the material, for each column. 1.0 is full scale.
    std::vector<float> peaks;
    /// The fades' gain as a u-value of the mixer-style curve, for each border. Empty without fades.
    std::vector<float> fade;
    /// Automation and fixed gain together, for each column. Empty where both change nothing.
    std::vector<LevelRange> levels;

    std::vector<TimelineSpan> silent;
    std::vector<TimelineSpan> overloads;

    MaterialSpan range;
    bool reverse = false;
    /// Source samples per output sample.
    double speed = 1.0;
    /// The output sample at which the whole range would begin.
    TimelineSample rangeAt;
};

struct TrackSketch {
    std::string name;
    std::vector<StripSketch> strips;
};

/// What a picture of a timeline shows, before there are points and colours.
struct TimelineSketch {
    TimeColumns columns;
    int sampleRate = 48000;
    std::vector<TrackSketch> tracks;
    /// How many tracks more there are than lanes.
    std::size_t tracksLeftOut = 0;
    std::vector<TimelineMarker> markers;
    /// One for each channel.
    std::vector<Overload> output;
    /// One for each column of the output. Empty where nothing is mixed.
    std::vector<WaveRange> wave;
};

/// The most tracks that a picture has lanes for.
inline constexpr std::size_t mostLanes = 700;

/// Everything but the waveforms of strips: all peaks are 0. `course` is null where nothing was mixed. Tracks
/// after the first `mostLanes` are left out, and strips outside the output. A strip that a player refuses has
/// the failure "not playable".
TimelineSketch sketchTimeline(const Timeline& timeline, const MixReport& report, std::size_t columns,
                              const OutputCourse* course = nullptr);

} // namespace audlmd::command

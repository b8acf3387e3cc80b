#pragma once

#include "host/cache/ChannelLayout.hpp"
#include "host/deliver/Loudness.hpp"
#include "host/signal/Clocks.hpp"
#include "tools/audlmd/files/OutputLevels.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace audlmd::command {

/// The lowest and the highest sample of a stretch, of all channels together. 1.0 is full scale.
struct WaveRange {
    float lowest = 0.0F;
    float highest = 0.0F;

    float peak() const { return highest > -lowest ? highest : -lowest; }
};

/// How an output runs, for whoever draws it: its waveform and its loudness. Takes the samples in order while
/// they are mixed, before they are rounded and clipped.
class OutputCourse {
public:
    enum class Loudness { measured, leftOut };

    /// `span` is what the output has of its timeline. Loudness that cannot be measured at this rate, or of
    /// these channels, is left out, and loudnessFailure() says why.
    OutputCourse(TimelineSpan span, const ChannelLayout& layout, int sampleRate, Loudness loudness);

    /// Takes the next samples: a span for each channel, all of one length. Further spans are passed over. A
    /// NaN counts as silence.
    void add(std::span<const std::span<float>> channels);

    /// Has all samples so much louder as the output was made, once all of them are added. What is known of
    /// the output's levels is taken: it was measured where the gate of loudness counts all of it in.
    void amplify(const OutputLevels& levels);

    const TimelineSpan& span() const { return span_; }
    /// In samples: how long each range of wave() is, but for the last.
    std::int64_t step() const { return step_; }
    const std::vector<WaveRange>& wave() const { return wave_; }
    /// What lies between two output samples of the timeline, and perhaps a step around. Silence outside.
    WaveRange between(double from, double to) const;

    /// Whether its loudness is measured.
    bool hasLoudness() const { return loudness_ != nullptr; }
    /// Of the whole, without peaks. Where it has loudness.
    ProgrammeLevels programme() const;
    /// As LoudnessMeter::course(). Where it has loudness.
    std::vector<double> loudnessOver(LoudnessMeter::Window window) const;
    const std::string& loudnessFailure() const { return loudnessFailure_; }

private:
    TimelineSpan span_;
    std::size_t channels_;
    std::int64_t step_;
    std::int64_t added_ = 0;
    std::vector<WaveRange> wave_;
    std::unique_ptr<LoudnessMeter> loudness_;
    /// What was measured of it, and the gain that made it of what was added.
    OutputLevels levels_;
    std::string loudnessFailure_;
};

} // namespace audlmd::command

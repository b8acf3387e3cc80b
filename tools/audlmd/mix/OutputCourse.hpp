#pragma once

#include "host/cache/ChannelLayout.hpp"
#include "host/deliver/Loudness.hpp"
#include "host/signal/Clocks.hpp"

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

    /// Has all samples so much louder, in decibels: those that were added, once all of them are.
    void amplify(double decibels);

    const TimelineSpan& span() const { return span_; }
    /// In samples: how long each range of wave() is, but for the last.
    std::int64_t step() const { return step_; }
    const std::vector<WaveRange>& wave() const { return wave_; }
    /// What lies between two output samples of the timeline, and perhaps a step around. Silence outside.
    WaveRange between(double from, double to) const;

    /// Of the samples as they were added, see amplification(). Null where it is not measured.
    const LoudnessMeter* loudness() const { return loudness_.get(); }
    /// In decibels.
    double amplification() const { return amplification_; }
    const std::string& loudnessFailure() const { return loudnessFailure_; }

private:
    TimelineSpan span_;
    std::size_t channels_;
    std::int64_t step_;
    std::int64_t added_ = 0;
    std::vector<WaveRange> wave_;
    std::unique_ptr<LoudnessMeter> loudness_;
    double amplification_ = 0.0;
    std::string loudnessFailure_;
};

} // namespace audlmd::command

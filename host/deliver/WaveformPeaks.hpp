#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace audlmd {

/// The lowest and the highest sample of every stretch of a sound, in the layouts that audiowaveform writes
/// and players in web pages read, version 2. In one pass: use it on what is written.
/// \snippet deliver.cpp peaks
class WaveformPeaks {
public:
    /// Stretches of so many samples, of which the last may be shorter. `bits` is 8 or 16: full scale is 128
    /// or 32768 steps. Throws std::invalid_argument for other bits, and where there are no channels, rate or
    /// samples.
    WaveformPeaks(std::size_t channels, int sampleRate, int samplesPerPixel, int bits);

    /// Takes the next samples: a span for each channel, all of one length. Any lengths give the same. What is
    /// beyond full scale counts as full scale, a NaN as silence.
    void add(std::span<const std::span<const float>> channels);

    /// Little-endian: 24 bytes of header, then lowest and highest of each channel, stretch by stretch.
    std::string binary() const;
    /// The same numbers as text.
    std::string json() const;

private:
    struct Range {
        float lowest;
        float highest;
    };

    std::size_t pixels() const { return ranges_.size() / channels_; }
    int step(float sample) const;

    std::size_t channels_;
    int sampleRate_;
    std::size_t samplesPerPixel_;
    int bits_;
    /// In the last stretch; it is full at first, so that a sample begins another one.
    std::size_t samples_;
    /// Of each stretch, of each channel.
    std::vector<Range> ranges_;
};

} // namespace audlmd

#pragma once

#include "host/cache/ChannelLayout.hpp"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace audlmd {

/// Measures how loud a programme is, as ITU-R BS.1770-4, EBU R 128 and EBU Tech 3342 say, by libebur128. In
/// one pass: use it on what is read, or beside a mix.
///
/// A channel counts by what it is heard from: the surrounds 1.5 dB more than the front, the LFE not at all.
/// Rear speakers are the surrounds of a layout without side ones. Channels of which nobody says what they are
/// count as front ones. A mono programme counts once: two speakers play it 3 LU louder.
///
/// Loudness is in LUFS, loudness units below full scale; minus infinity is silence. Nothing stands for what a
/// programme is too short for. Samples that are no finite numbers count as silence.
/// \snippet deliver.cpp loudness
class LoudnessMeter {
public:
    enum class TruePeak { measured, leftOut };

    /// True peaks take three quarters of the time. Throws std::invalid_argument, whose text says why "it"
    /// is not measured, for more than 64 channels, and for rates below 8,000 Hz, for which the standard's
    /// filter cannot be made.
    LoudnessMeter(const ChannelLayout& layout, int sampleRate, TruePeak truePeak = TruePeak::measured);
    ~LoudnessMeter();
    LoudnessMeter(const LoudnessMeter&) = delete;
    LoudnessMeter& operator=(const LoudnessMeter&) = delete;

    /// Takes the next samples: a span for each channel, all of one length. Any lengths measure the same.
    void add(std::span<const std::span<const float>> channels);

    /// The gated loudness of the whole. Needs 0.4 s.
    std::optional<double> integrated() const;
    /// How far soft and loud passages are apart, in LU. Needs 4 s.
    std::optional<double> range() const;

    /// What is measured over a sliding window; the number is its length in tenths of a second.
    enum class Window : std::size_t { momentary = 4, shortTerm = 30 };
    /// The loudness of each window that ends on a whole tenth of a second, from the first whole window on.
    std::vector<double> course(Window window) const;
    /// The highest of them.
    std::optional<double> highest(Window window) const;

    /// The highest level of a channel between and on its samples, linear. At 192 kHz and more it is that of
    /// the samples.
    double truePeak(std::size_t channel) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace audlmd

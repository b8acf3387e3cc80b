#pragma once

#include "host/deliver/Loudness.hpp"

#include <limits>
#include <optional>

namespace audlmd {

/// How loud a programme is, see LoudnessMeter. Nothing stands for what was not measured, or is not defined.
struct ProgrammeLevels {
    /// In LUFS.
    std::optional<double> integrated;
    /// In LU.
    std::optional<double> range;
    /// In LUFS.
    std::optional<double> highestMomentary;
    std::optional<double> highestShortTerm;
    /// Of the loudest channel, in decibels over full scale; silence is minus infinity.
    std::optional<double> truePeak;
    double samplePeak = -std::numeric_limits<double>::infinity();

    /// Of the same programme, so many decibels louder.
    ProgrammeLevels louderBy(double decibels) const;
};

/// Measures all levels of a programme, in one pass.
/// \snippet deliver.cpp programme
class ProgrammeMeter {
public:
    enum class Loudness { measured, leftOut };

    /// Without loudness, sample peaks alone are measured, of any channels at any rate; with loudness this
    /// throws what LoudnessMeter throws.
    ProgrammeMeter(const ChannelLayout& layout, int sampleRate, Loudness loudness);

    /// Takes the next samples, see LoudnessMeter::add().
    void add(std::span<const std::span<const float>> channels);

    /// Of all that was added.
    ProgrammeLevels levels() const;

private:
    std::size_t channels_;
    std::optional<LoudnessMeter> loudness_;
    /// Linear.
    float samplePeak_ = 0.0F;
};

} // namespace audlmd

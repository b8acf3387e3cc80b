#include "tools/audlmd/mix/OutputCourse.hpp"

#include "host/signal/GainLaws.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace audlmd::command {
namespace {

/// More than a screen has pixels, ten times over.
constexpr std::int64_t mostRanges = 65536;
constexpr std::int64_t shortestStep = 32;

} // namespace

OutputCourse::OutputCourse(TimelineSpan span, const ChannelLayout& layout, int sampleRate, Loudness loudness)

    : span_(span), channels_(layout.size()),
      step_(std::max(shortestStep, (span.length() + mostRanges - 1) / mostRanges)),
      wave_(static_cast<std::size_t>((span.length() + step_ - 1) / step_)) {
    if (loudness == Loudness::leftOut)
        return;
    try {
        loudness_ = std::make_unique<LoudnessMeter>(layout, sampleRate, LoudnessMeter::TruePeak::leftOut);
    } catch (const std::invalid_argument& error) {
        loudnessFailure_ = std::string("the loudness is not shown: ") + error.what();
    }
}

void OutputCourse::add(std::span<const std::span<float>> all) {
    const std::span<const std::span<float>> channels = all.first(channels_);
    const std::int64_t end = std::min<std::int64_t>(added_ + std::ssize(channels.front()), span_.length());
    for (const std::span<float>& channel : channels)
        for (std::int64_t from = added_; from < end;) {
            const std::int64_t to = std::min(end, (from / step_ + 1) * step_);
            WaveRange range = wave_[static_cast<std::size_t>(from / step_)];
            // A NaN is on neither side of a comparison.
            for (std::int64_t n = from - added_; n < to - added_; ++n) {
                const float sample = channel[static_cast<std::size_t>(n)];
                range.lowest = sample < range.lowest ? sample : range.lowest;
                range.highest = sample > range.highest ? sample : range.highest;
            }
            wave_[static_cast<std::size_t>(from / step_)] = range;
            from = to;
        }
    added_ = end;
    if (loudness_) {
        const std::vector<std::span<const float>> read(channels.begin(), channels.end());
        loudness_->add(read);
    }
}

void OutputCourse::amplify(const OutputLevels& levels) {
    levels_ = levels;
    const auto gain = static_cast<float>(gainOfDecibels(levels.gain));
    for (WaveRange& range : wave_)
        range = {range.lowest * gain, range.highest * gain};
}

ProgrammeLevels OutputCourse::programme() const {
    if (levels_.levels.integrated)
        return levels_.levels;
    using Window = LoudnessMeter::Window;
    ProgrammeLevels levels;
    levels.integrated = loudness_->integrated();
    levels.range = loudness_->range();
    levels.highestMomentary = loudness_->highest(Window::momentary);
    levels.highestShortTerm = loudness_->highest(Window::shortTerm);
    return levels.louderBy(levels_.gain);
}

std::vector<double> OutputCourse::loudnessOver(LoudnessMeter::Window window) const {
    std::vector<double> course = loudness_->course(window);
    for (double& loudness : course)
        loudness += levels_.gain;
    return course;
}

WaveRange OutputCourse::between(double from, double to) const {
    const auto rangeAt = [this](double sample) {
        const double offset = sample - static_cast<double>(span_.from.number());
        return std::clamp<std::int64_t>(std::llround(std::floor(offset / static_cast<double>(step_))), -1,
                                        std::ssize(wave_));
    };
    WaveRange sum;
    const std::int64_t last = std::max(rangeAt(from), rangeAt(std::nextafter(to, from)));
    for (std::int64_t n = rangeAt(from); n <= last; ++n)
        if (n >= 0 && n < std::ssize(wave_)) {
            const WaveRange& range = wave_[static_cast<std::size_t>(n)];
            sum = {std::min(sum.lowest, range.lowest), std::max(sum.highest, range.highest)};
        }
    return sum;
}

} // namespace audlmd::command

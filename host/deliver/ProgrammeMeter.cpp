#include "host/deliver/ProgrammeMeter.hpp"

#include "host/signal/BlockLoops.hpp"
#include "host/signal/GainLaws.hpp"

#include <algorithm>

namespace audlmd {

ProgrammeLevels ProgrammeLevels::louderBy(double decibels) const {
    ProgrammeLevels louder = *this;
    for (std::optional<double>* const level :
         {&louder.integrated, &louder.highestMomentary, &louder.highestShortTerm, &louder.truePeak})
        if (*level)
            **level += decibels;
    louder.samplePeak += decibels;
    return louder;
}

ProgrammeMeter::ProgrammeMeter(const ChannelLayout& layout, int sampleRate, Loudness loudness)
    : channels_(layout.size()) {
    if (loudness == Loudness::measured)
        loudness_.emplace(layout, sampleRate);
}

void ProgrammeMeter::add(std::span<const std::span<const float>> channels) {
    for (const std::span<const float> channel : channels)
        samplePeak_ = std::max(samplePeak_, peakOf(channel));
    if (loudness_)
        loudness_->add(channels);
}

ProgrammeLevels ProgrammeMeter::levels() const {
    ProgrammeLevels levels;
    levels.samplePeak = decibelsOfGain(static_cast<double>(samplePeak_));
    if (!loudness_)
        return levels;
    levels.integrated = loudness_->integrated();
    levels.range = loudness_->range();
    levels.highestMomentary = loudness_->highest(LoudnessMeter::Window::momentary);
    levels.highestShortTerm = loudness_->highest(LoudnessMeter::Window::shortTerm);
    double truePeak = 0.0;
    for (std::size_t channel = 0; channel < channels_; ++channel)
        truePeak = std::max(truePeak, loudness_->truePeak(channel));
    levels.truePeak = decibelsOfGain(truePeak);
    return levels;
}

} // namespace audlmd

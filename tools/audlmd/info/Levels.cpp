#include "tools/audlmd/info/Levels.hpp"

#include "host/deliver/Loudness.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace audlmd::command {
namespace {

/// Measures the samples of one channel.
class SampleMeter {
public:
    SampleMeter(float fullScale, ChannelLevels& levels) : fullScale_(fullScale), levels_(levels) {}

    void measure(std::span<const float> samples, std::int64_t from) {
        for (const float sample : samples) {
            const float level = std::abs(sample);
            if (!std::isfinite(sample))
                ++levels_.notNumbers;
            else
                peak_ = std::max(peak_, level);
            const int side = level >= fullScale_ ? (sample < 0.0F ? -1 : 1) : 0;
            if (side != 0 || side_ != 0)
                goOn(side, from);
            ++from;
        }
        levels_.peak = static_cast<double>(peak_);
    }

private:
    /// The sample at `at` lies at full scale on a side, or has followed one that does.
    void goOn(int side, std::int64_t at) {
        length_ = side == side_ ? length_ + 1 : 1;
        side_ = side;
        ClippedRuns& runs = levels_.clipped;
        if (side == 0 || length_ < 2)
            return;
        if (length_ == 2 && runs.count++ == 0)
            runs.first = at - 1;
        runs.longest = std::max(runs.longest, length_);
    }

    float fullScale_;
    ChannelLevels& levels_;
    float peak_ = 0.0F;
    /// Of the samples at full scale that came last: 1 above, -1 below, 0 where there are none.
    int side_ = 0;
    std::int64_t length_ = 0;
};

} // namespace

Levels measureLevels(SoundFile& file, const ChannelLayout& layout, float fullScale,
                     const std::function<void(std::int64_t frames)>& done) {
    Levels levels;
    levels.channels.resize(layout.size());
    std::vector<SampleMeter> meters;
    for (ChannelLevels& channel : levels.channels)
        meters.emplace_back(fullScale, channel);
    std::optional<LoudnessMeter> loudness;
    try {
        loudness.emplace(layout, file.sampleRate());
    } catch (const std::invalid_argument& error) {
        levels.whyNoLoudness = error.what();
    }
    readThrough(file, [&](std::int64_t from, ChannelBlock block) {
        for (std::size_t channel = 0; channel < block.size(); ++channel)
            meters[channel].measure(block[channel], from);
        if (loudness)
            loudness->add(block);
        done(from + std::ssize(block.front()));
    });
    if (!loudness)
        return levels;
    for (std::size_t channel = 0; channel < layout.size(); ++channel)
        levels.channels[channel].truePeak = loudness->truePeak(channel);
    levels.integrated = loudness->integrated();
    levels.range = loudness->range();
    levels.highestMomentary = loudness->highest(LoudnessMeter::Window::momentary);
    levels.highestShortTerm = loudness->highest(LoudnessMeter::Window::shortTerm);
    return levels;
}

} // namespace audlmd::command

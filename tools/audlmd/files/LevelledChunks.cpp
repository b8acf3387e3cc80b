#include "tools/audlmd/files/LevelledChunks.hpp"

#include "host/signal/BlockLoops.hpp"
#include "host/signal/GainLaws.hpp"
#include "host/words/Numbers.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <thread>

namespace audlmd::command {
namespace {

/// Below this loudness, the relative gate of the range, 20 LU lower, may lie below the absolute one of
/// -70 LUFS.
constexpr double leastSureLoudness = -49.0;

using Floats = std::vector<std::span<const float>>;

bool isSoft(const ProgrammeLevels& levels) {
    return levels.integrated.value_or(0.0) < leastSureLoudness;
}

/// So many meters, which cannot be moved.
std::deque<ProgrammeMeter> metersFor(const LevelOptions& options, const OutputLayout& layout,
                                     std::size_t count) {
    std::deque<ProgrammeMeter> meters;
    try {
        while (meters.size() < count)
            meters.emplace_back(layout.speakers, layout.sampleRate,
                                options.loudness ? ProgrammeMeter::Loudness::measured
                                                 : ProgrammeMeter::Loudness::leftOut);
        return meters;
    } catch (const std::invalid_argument& error) {
        throw CommandError(options.name() + std::string(": the output has no loudness: ") + error.what());
    }
}

/// Rounded down, so that asking for it will do.
std::string possibleText(double level) {
    return words::fixedText(std::floor(level * 10.0 + 1e-6) / 10.0, 1);
}

std::string decibelText(double decibels) {
    return words::signedText(decibels, 2) + " dB";
}

/// "--loudness -23 takes a gain of +8.20 dB, which would bring the true peak to +2.30 dB, ..."
std::string limitText(const LevelOptions& options, const DeliveryGain& gain, const ProgrammeLevels& programme,
                      std::optional<FormatId> clipping) {
    const bool isTruePeak = gain.limit == DeliveryGain::Limit::truePeak;
    return options.name() + (" " + words::numberText(options.loudness.value_or(*options.normalise))) +
           " takes a gain of " + decibelText(gain.wanted) + ", which would bring " +
           (isTruePeak ? "the true peak to " + decibelText(*programme.truePeak + gain.wanted) +
                             ", above the " + words::numberText(*options.truePeak) + " of --true-peak"
                       : "the highest sample to " + decibelText(programme.samplePeak + gain.wanted) +
                             ", where " + std::string(outputFormat(*clipping).name) + " clips");
}

OutputLayout floatsOf(const std::vector<SoundOutput>& outputs) {
    OutputLayout layout{.sampleRate = outputs.front().layout.sampleRate,
                        .frames = outputs.front().layout.frames,
                        .speakers = outputs.front().layout.speakers};
    for (const SoundOutput& output : outputs)
        layout.channels =
            std::max(layout.channels, static_cast<int>(output.firstChannel) + output.layout.channels);
    return layout;
}

/// Of an output that holds the measured channels.
std::optional<FormatId> clippingIn(const std::vector<SoundOutput>& outputs) {
    for (const SoundOutput& output : outputs)
        if (output.firstChannel == 0 && clips(output.layout.format, output.rounding))
            return output.layout.format;
    return std::nullopt;
}

} // namespace

LevelledChunks::LevelledChunks(const LevelOptions& options, const std::vector<SoundOutput>& outputs,
                               TimelineSample from, std::size_t threads)
    : options_(options), layout_(floatsOf(outputs)), clipping_(clippingIn(outputs)), from_(from),
      spool_(outputs.front().target, static_cast<std::size_t>(layout_.channels), layout_.frames),
      meters_(metersFor(options, layout_, static_cast<std::size_t>(layout_.channels) / measured())),
      overloads_(static_cast<std::size_t>(layout_.channels), OverloadMeter(mostSpansOfAStrip)) {
    for (const SoundOutput& output : outputs)
        requireHolds(*output.target.kind, output.layout.format, output.layout.dataBytes(),
                     output.target.path);
    parts_ = std::min(threads != 0 ? threads : std::max(1U, std::thread::hardware_concurrency()),
                      overloads_.size());
}

void LevelledChunks::measure(ChunkProducer& floats, std::size_t block,
                             const std::function<void(std::int64_t)>& done) {
    ChunkWriter(floats, layout_, block)
        .run(
            [this](const Chunk& chunk) {
                Floats samples;
                for (const std::vector<std::byte>& channel : chunk.channels)
                    samples.emplace_back(reinterpret_cast<const float*>(channel.data()), chunk.frames);
                for (std::size_t channel = 0; channel < samples.size(); ++channel)
                    spool_.write(channel, chunk.from, samples[channel]);
                for (std::size_t n = 0; n < meters_.size(); ++n)
                    meters_[n].add(std::span(samples).subspan(n * measured(), measured()));
            },
            done);
    const ProgrammeLevels programme = meters_.front().levels();
    const double scale = -programme.samplePeak;
    choose(isSoft(programme) && std::isfinite(scale) ? measuredLouder(0, scale).louderBy(-scale) : programme);
    for (std::size_t n = 1; n < meters_.size(); ++n) {
        const ProgrammeLevels stem = meters_[n].levels();
        levels_.stems.push_back(isSoft(stem) ? measuredLouder(n, levels_.gain) : stem.louderBy(levels_.gain));
    }
}

ProgrammeLevels LevelledChunks::measuredLouder(std::size_t programme, double decibels) const {
    constexpr std::int64_t most = 65536;
    std::deque<ProgrammeMeter> meters = metersFor(options_, layout_, 1);
    ProgrammeMeter& meter = meters.front();
    std::vector<std::vector<float>> samples(measured());
    for (std::int64_t from = 0; from < layout_.frames; from += most) {
        for (std::size_t channel = 0; channel < samples.size(); ++channel) {
            samples[channel].resize(static_cast<std::size_t>(std::min(most, layout_.frames - from)));
            spool_.read(programme * measured() + channel, from, samples[channel]);
            multiply(samples[channel], static_cast<float>(gainOfDecibels(decibels)));
        }
        meter.add(Floats(samples.begin(), samples.end()));
    }
    return meter.levels();
}

void LevelledChunks::choose(const ProgrammeLevels& programme) {
    DeliveryGain gain;
    try {
        gain = deliveryGain(programme, options_.target(clipping_.has_value()));
    } catch (const std::invalid_argument& error) {
        throw CommandError(options_.name() + std::string(": no gain brings the output there: ") +
                               error.what() + "; nothing is written",
                           ExitStatus::input);
    }
    levels_ = {.levels = programme.louderBy(gain.possible), .stems = {}, .gain = gain.possible};
    if (gain.limit != DeliveryGain::Limit::none) {
        const std::string why = limitText(options_, gain, programme, clipping_);
        const std::string possible = decibelText(gain.possible);
        if (options_.loudnessOrPeak)
            levels_.shortfall = "less loud than asked: " + why + "; " + possible + " is taken, for " +
                                words::fixedText(*levels_.levels.integrated, 1) + " LUFS";
        else if (options_.loudness)
            throw CommandError(why + "; nothing is written. " + possible +
                               " is possible: ask for --loudness " +
                               possibleText(*levels_.levels.integrated) + ", or add --loudness-or-peak");
        else
            throw CommandError(why + "; nothing is written. Ask for --normalise 0, or for --format f32");
    }
    gain_ = static_cast<float>(gainOfDecibels(gain.possible));
    // What is to reach full scale must not be beyond it by rounding.
    const auto peak = static_cast<float>(gainOfDecibels(programme.samplePeak));
    while (levels_.levels.samplePeak < 1e-9 && peak * gain_ > 1.0F)
        gain_ = std::nextafter(gain_, 0.0F);
}

void LevelledChunks::setFormat(FormatId format, Rounding rounding) {
    format_ = format;
    rounding_ = rounding;
}

std::vector<SoundOutput> LevelledChunks::told(std::vector<SoundOutput> outputs) const {
    for (SoundOutput& output : outputs)
        output.layout.levels =
            output.firstChannel == 0 ? levels_.levels : levels_.stems[output.firstChannel / measured() - 1];
    return outputs;
}

void LevelledChunks::take(std::size_t channel, std::int64_t from, std::span<float> samples) const {
    if (channel >= measured() || spool_.channels() == measured()) {
        spool_.read(channel, from, samples);
        return multiply(samples, gain_);
    }
    std::ranges::fill(samples, 0.0F);
    std::vector<float> term(samples.size());
    for (std::size_t behind = channel + measured(); behind < spool_.channels(); behind += measured()) {
        spool_.read(behind, from, term);
        addTo(samples, term, gain_);
    }
}

/// Part 0 of three fills channels 0, 3, 6 and so on.
void LevelledChunks::fill(std::size_t part, Chunk& chunk) {
    std::vector<float> samples(chunk.frames);
    for (std::size_t channel = part; channel < chunk.channels.size(); channel += parts_) {
        take(channel, chunk.from, samples);
        const TimelineSample at = from_ + chunk.from;
        overloads_[channel].measure(samples, 1.0F, at);
        store(format_, rounding_, {channel, at.number()}, samples, chunk.channels[channel].data());
    }
}

std::vector<Overload> LevelledChunks::overloads() const {
    std::vector<Overload> overloads;
    for (const OverloadMeter& meter : overloads_)
        overloads.push_back(meter.overload());
    return overloads;
}

} // namespace audlmd::command

#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/signal/GainLaws.hpp"
#include "model/StripModel.hpp"
#include "tests/host/mix/TestTimeline.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <initializer_list>
#include <limits>
#include <random>

namespace audlmd::test {
namespace {

// Every strip of a random timeline lies inside.
constexpr std::int64_t mixStart = -3500;
constexpr std::size_t mixLength = 22000;

/// The settings of random strips. `exact`: only such settings as round nothing.
enum class Kinds { exact, all };

/// A timeline and its media, drawn from a seed. Media range from 60 dB below full scale to 30 dB above.
struct RandomTimeline {
    RandomTimeline(unsigned int seed, Kinds kinds) : random(seed) {
        const int rate = timeline.sampleRate = pick({48000, 48000, 44100, 96000});
        timeline.channels = static_cast<std::size_t>(whole(1, 4));
        timeline.tracks.resize(static_cast<std::size_t>(whole(1, 6)));
        addMedium("mono", 1, 1.0F, rate);
        addMedium("stereo", 2, 1.0F, rate);
        addMedium("four", 4, 1.0F, rate);
        addMedium("loud", 1, 32.0F, rate);
        if (kinds == Kinds::all) {
            addMedium("quiet", 1, 0x1p-10F, rate);
            addMedium("of another rate", 2, 1.0F, pick({32000, 44100, 48000, 44056, 96000}));
        }
        for (std::int64_t count = whole(1, 30); count > 0; --count) {
            TimelineTrack& track =
                *std::next(timeline.tracks.begin(), whole(1, std::ssize(timeline.tracks)) - 1);
            track.strips.push_back(drawStrip(kinds));
        }
    }

    std::int64_t whole(std::int64_t least, std::int64_t most) {
        return std::uniform_int_distribution(least, most)(random);
    }
    double real(double least, double most) { return std::uniform_real_distribution(least, most)(random); }
    bool oneIn(int count) { return whole(1, count) == 1; }
    template <class Choice>
    Choice pick(std::initializer_list<Choice> choices) {
        return choices.begin()[whole(0, std::ssize(choices) - 1)];
    }

    /// Samples of twelve bits: the sum of thirty strips fits into a float.
    void addMedium(const std::string& name, int channels, float peak, int sampleRate) {
        model::Medium& medium = media[name] = {.channels = {}, .sampleRate = sampleRate};
        for (int channel = 0; channel < channels; ++channel) {
            medium.channels.push_back(soundNumber(static_cast<int>(media.size()) * 4 + channel, 20000));
            for (float& sample : medium.channels.back())
                sample = std::round(sample * 2048.0F) / 2048.0F * peak;
        }
        opened.add(name, medium.channels, sampleRate);
    }

    TimelineStrip drawStrip(Kinds kinds) {
        const auto& [name, medium] = *std::next(media.begin(), whole(0, std::ssize(media) - 1));
        TimelineStrip strip = stripOf(name, 0, 0);
        strip.at = whole(-3000, 10000);
        strip.length = whole(0, 8000);
        strip.skip = oneIn(2) ? whole(0, 3000) : 0;
        strip.settings.from = whole(-2000, 19000);
        strip.settings.to = strip.settings.from + whole(1, 7000);
        strip.settings.reverse = oneIn(3);
        if (medium.channels.size() > timeline.channels || oneIn(2)) {
            const std::vector<float> silent(medium.channels.size());
            strip.routing = Routing{std::vector(timeline.channels, silent)};
            for (std::vector<float>& row : strip.routing->rows)
                for (float& gain : row)
                    gain = static_cast<float>(kinds == Kinds::exact ? std::round(real(-2.0, 2.0))
                                                                    : real(-1.5, 1.5));
        }
        // So that the rate stays whole.
        if (name == "of another rate" && std::int64_t{strip.length} % 2 == 0)
            strip.relabel = {.from = 4, .to = 5};
        if (kinds == Kinds::all)
            drawLaws(strip);
        return strip;
    }

    void drawLaws(TimelineStrip& strip) {
        StripSettings& settings = strip.settings;
        const std::int64_t range = settings.to - settings.from;
        if (oneIn(2))
            strip.gainDb = oneIn(8) ? -std::numeric_limits<double>::infinity() : real(-40.0, 60.0);
        settings.converter =
            pick({Converter::none, Converter::none, Converter::linear, Converter::filtering});
        if (settings.converter != Converter::none)
            settings.speed =
                oneIn(3) ? pick({0.5, 0.7, 0.75, 1.0, 1.4, 2.0, 2.75, 4.0}) : std::exp(real(-1.5, 1.7));
        for (std::int64_t bands = oneIn(3) ? whole(1, 5) : 0; bands > 0; --bands)
            settings.equaliser.push_back({static_cast<BandKind>(whole(0, 4)), std::exp(real(4.0, 9.8)),
                                          real(-12.0, 12.0), real(0.4, 3.0)});
        if (oneIn(3)) {
            const std::int64_t fadeIn = oneIn(4) ? 0 : whole(0, range);
            const std::int64_t fadeOut = oneIn(4) ? range - fadeIn : whole(0, range - fadeIn);
            const auto curve = [&] { return pick({FadeCurve::linear, FadeCurve::log, FadeCurve::power}); };
            settings.fade = {static_cast<std::uint64_t>(fadeIn), static_cast<std::uint64_t>(fadeOut), curve(),
                             curve()};
            // A linear fade-out runs on below silence in what the filter reads beyond the range.
            if (settings.converter == Converter::filtering)
                settings.fade.fadeOutCurve = FadeCurve::power;
        }
        if (oneIn(3)) {
            std::vector<LevelNode> nodes;
            for (std::int64_t position = whole(-500, range); nodes.empty() || !oneIn(4);
                 position += oneIn(3) ? 0 : whole(1, 2000)) // 0 is a jump
                nodes.push_back({position, static_cast<float>(real(0.0, 1.5))});
            settings.automation = {Automation(nodes),
                                   pick({DynamicLevelDirection::forwards, DynamicLevelDirection::reverse})};
        }
    }

    std::mt19937 random;
    Timeline timeline;
    std::map<std::string, model::Medium> media;
    /// The same media for a mixer.
    TestMedia opened;
};

/// How far a strip may be from the model, for a routing gain of 1. Each bound lies just above the largest
/// deviation in 700 to 3000 random strips with that law alone.
double largestError(const TimelineStrip& strip, const model::Medium& medium) {
    const StripSettings& settings = strip.settings;
    const FadePlan& fade = settings.fade;
    const double gain = gainOfDecibels(strip.gainDb);
    if (gain == 0.0)
        return 0.0;
    // The table of the strip's gain takes 8e-7, single precision the rest.
    double error = 1e-6 * std::max(gain, 1.0);
    // The pieces of a fade leave the straight line by up to 2e-5; the mixer-style law is steep at full level,
    // and the table of constant power coarse.
    const auto ofFade = [](std::uint64_t length, FadeCurve curve) {
        return length == 0 ? 0.0
                           : std::map<FadeCurve, double>{{FadeCurve::linear, 1.6e-5},
                                                         {FadeCurve::log, 3.4e-5},
                                                         {FadeCurve::power, 4e-5}}
                                 .at(curve);
    };
    error += gain * std::max(ofFade(fade.fadeInSamples, fade.fadeInCurve),
                             ofFade(fade.fadeOutSamples, fade.fadeOutCurve));
    float peak = 0.0F;
    for (const std::vector<float>& channel : medium.channels)
        peak = std::max({peak, std::ranges::max(channel), -std::ranges::min(channel)});
    double loudest = static_cast<double>(peak);
    for (const EqualiserBand& band : settings.equaliser)
        loudest *= std::max(1.0, gainOfDecibels(band.gainDb)) * std::max(1.0, band.q);
    if (settings.automation) {
        // The pieces of an automation leave the straight line by up to 2e-6.
        error += gain * 4.5e-6;
        const auto nodes = settings.automation->automation.nodes();
        const float highest = std::ranges::max(nodes, {}, &LevelNode::uValue).uValue;
        loudest *= std::max(1.0, mixerStyleGain(static_cast<double>(highest)));
    }
    return error * loudest;
}

/// What the model makes of a timeline, and how far a mixer may be from the model at each sample.
struct Expected {
    model::Output samples;
    model::Output errors;
};

Expected expectedOf(const RandomTimeline& random) {
    const model::Output silence(random.timeline.channels, std::vector<double>(mixLength));
    Expected expected{silence, silence};
    for (const TimelineTrack& track : random.timeline.tracks)
        for (const TimelineStrip& strip : track.strips) {
            model::Medium medium = random.media.at(strip.media);
            medium.sampleRate = static_cast<int>(strip.relabel.rateOf(medium.sampleRate));
            const TimelineSpan span =
                model::addStrip(strip, medium, random.timeline.sampleRate, mixStart, expected.samples);
            const Routing routing = strip.routing ? *strip.routing
                                                  : defaultRouting(unknownLayout(medium.channels.size()),
                                                                   layoutOf(random.timeline));
            const double error = largestError(strip, medium);
            for (std::size_t channel = 0; channel < silence.size(); ++channel)
                for (const float gain : routing.rows[channel])
                    for (std::int64_t n = (span.from - mixStart).number(); n < span.to.number() - mixStart;
                         ++n)
                        expected.errors[channel][static_cast<std::size_t>(n)] +=
                            error * static_cast<double>(std::fabs(gain));
        }
    return expected;
}

/// Renders stretches that go on, jump or overlap, and compares them with a mix of the whole.
void expectSameBitsInStretches(RandomTimeline& random, const Channels& whole) {
    const MixerOptions options{.threads = static_cast<std::size_t>(random.whole(1, 4)),
                               .block = random.pick<std::size_t>({13, 256, 1000, 4096, 65536}),
                               .openAhead = 0.01,
                               .inlined = random.oneIn(2) ? &inlinedRenderFunction : nullptr};
    Mixer mixer(random.timeline, random.opened.opener(), options);
    std::size_t from = 0;
    for (int stretch = 0; stretch < 8; ++stretch) {
        if (random.oneIn(2))
            from = static_cast<std::size_t>(random.whole(0, mixLength));
        const std::size_t length =
            std::min(static_cast<std::size_t>(random.whole(0, 5000)), mixLength - from);
        const Channels part = mixed(mixer, mixStart + static_cast<std::int64_t>(from), length);
        for (std::size_t channel = 0; channel < whole.size(); ++channel)
            ASSERT_TRUE(std::ranges::equal(part[channel], std::span(whole[channel]).subspan(from, length)))
                << length << " samples from " << mixStart + static_cast<std::int64_t>(from)
                << " on, in blocks of " << options.block << " by " << options.threads << " threads";
        from += length;
    }
}

/// The stems are rendered in stretches, the mix at once and without them.
void expectSumOfStems(RandomTimeline& random, const Channels& whole) {
    Mixer mixer(random.timeline, random.opened.opener(),
                {.threads = 2, .block = random.pick<std::size_t>({256, 5000}), .stems = true});
    const std::size_t length = mixLength / 4;
    for (std::size_t from = 0; from < mixLength; from += length) {
        const Channels part = mixed(mixer, mixStart + static_cast<std::int64_t>(from), length, true);
        for (std::size_t channel = 0; channel < whole.size(); ++channel)
            for (std::size_t n = 0; n < length; ++n) {
                float sum = 0.0F;
                for (std::size_t stem = whole.size() + channel; stem < part.size(); stem += whole.size())
                    sum += part[stem][n];
                ASSERT_EQ(std::bit_cast<std::uint32_t>(sum),
                          std::bit_cast<std::uint32_t>(whole[channel][from + n]))
                    << "output sample " << mixStart + static_cast<std::int64_t>(from + n) << ", channel "
                    << channel;
            }
    }
    const MixReport report = mixer.report();
    ASSERT_EQ(report.stems.size(), random.timeline.tracks.size());
    ASSERT_EQ(report.stems.front().size(), whole.size());
}

void compareWithModel(Kinds kinds, unsigned int seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomTimeline random(seed, kinds);
    Mixer mixer(random.timeline, random.opened.opener());
    const Channels whole = mixed(mixer, mixStart, mixLength);
    const Expected expected = expectedOf(random);
    for (std::size_t channel = 0; channel < whole.size(); ++channel)
        for (std::size_t n = 0; n < mixLength; ++n)
            ASSERT_NEAR(static_cast<double>(whole[channel][n]), expected.samples[channel][n],
                        kinds == Kinds::exact ? 0.0 : expected.errors[channel][n])
                << "output sample " << mixStart + static_cast<std::int64_t>(n) << ", channel " << channel;
    for (const StripReport& strip : mixer.report().strips)
        EXPECT_EQ(strip.failure, "");
    expectSameBitsInStretches(random, whole);
    expectSumOfStems(random, whole);
}

TEST(RandomTimeline, IsTheModelsToTheLastBitWhereNothingIsRounded) {
    for (unsigned int seed = 1; seed <= 60 && !HasFailure(); ++seed)
        compareWithModel(Kinds::exact, seed);
}

TEST(RandomTimeline, IsTheModelsToWithinTheTablesAndStepsOfItsLaws) {
    for (unsigned int seed = 1; seed <= 60 && !HasFailure(); ++seed)
        compareWithModel(Kinds::all, seed);
}

} // namespace
} // namespace audlmd::test

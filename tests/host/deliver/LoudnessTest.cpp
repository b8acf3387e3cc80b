// The signals of EBU Tech 3341 and 3342 that are made by formula, within the tolerances of these documents.

#include "host/deliver/Loudness.hpp"

#include "host/deliver/DeliveryGain.hpp"
#include "host/deliver/WaveformPeaks.hpp"
#include "host/signal/GainLaws.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <stdexcept>
#include <string>
#include <tuple>

namespace audlmd::test {
namespace {

constexpr int rate = 48000;
using Window = LoudnessMeter::Window;

/// A sine of 1 kHz at so many decibels, for so long.
struct Tone {
    double decibels;
    double seconds;
};

/// Measures the tones one behind the other, in every channel so many decibels louder.
void play(LoudnessMeter& meter, const std::vector<Tone>& tones, int times,
          const std::vector<double>& channels) {
    std::int64_t at = 0;
    for (int turn = 0; turn < times; ++turn)
        for (const Tone& tone : tones) {
            std::vector<std::vector<float>> samples(channels.size());
            for (const auto end = at + std::llround(tone.seconds * rate); at < end; ++at) {
                const double wave = std::sin(2.0 * std::numbers::pi * static_cast<double>(at % 48) / 48.0);
                for (std::size_t n = 0; n < channels.size(); ++n)
                    samples[n].push_back(
                        static_cast<float>(wave * gainOfDecibels(tone.decibels + channels[n])));
            }
            meter.add(std::vector<std::span<const float>>(samples.begin(), samples.end()));
        }
}

TEST(Loudness, IsThatOfTech3341AndTech3342) {
    enum class What { integrated, range, momentary, shortTerm };
    struct Case {
        std::string name;
        std::vector<Tone> tones;
        std::map<What, double> levels;
        int times = 1;
        ChannelLayout layout = usualLayout(2);
        std::vector<double> channels = {0.0, 0.0};
    };
    using enum What;
    for (const Case& signal : std::vector<Case>{
             {"3341-1", {{-23, 20}}, {{integrated, -23}, {momentary, -23}, {shortTerm, -23}}},
             {"3341-2", {{-33, 20}}, {{integrated, -33}, {momentary, -33}, {shortTerm, -33}}},
             {"3341-3", {{-36, 10}, {-23, 60}, {-36, 10}}, {{integrated, -23}}},
             {"3341-4", {{-72, 10}, {-36, 10}, {-23, 60}, {-36, 10}, {-72, 10}}, {{integrated, -23}}},
             {"3341-5", {{-26, 20}, {-20, 20.1}, {-26, 20}}, {{integrated, -23}}},
             {"3341-6", {{0, 20}}, {{integrated, -23}}, 1, usualLayout(5), {-28, -28, -24, -30, -30}},
             {"with LFE", {{0, 20}}, {{integrated, -23}}, 1, usualLayout(6), {-28, -28, -24, -3, -30, -30}},
             {"of films",
              {{0, 20}},
              {{integrated, -23}},
              1,
              *layoutNamed("5.1film"),
              {-28, -24, -28, -30, -30, -3}},
             {"3341-9", {{-20, 1.34}, {-30, 1.66}}, {{shortTerm, -23}}, 5},
             {"3341-12", {{-20, 0.18}, {-30, 0.22}}, {{momentary, -23}}, 25},
             {"3342-1", {{-20, 20}, {-30, 20}}, {{range, 10}}},
             {"3342-2", {{-20, 20}, {-15, 20}}, {{range, 5}}},
             {"3342-3", {{-40, 20}, {-20, 20}}, {{range, 20}}},
             {"3342-4", {{-50, 20}, {-35, 20}, {-20, 20}, {-35, 20}, {-50, 20}}, {{range, 15}}}}) {
        LoudnessMeter meter(signal.layout, rate, LoudnessMeter::TruePeak::leftOut);
        play(meter, signal.tones, signal.times, signal.channels);
        for (const auto& [what, level] : signal.levels)
            if (what == integrated)
                EXPECT_NEAR(meter.integrated().value(), level, 0.1) << signal.name;
            else if (what == range)
                EXPECT_NEAR(meter.range().value(), level, 1.0) << signal.name;
            else {
                // Constant once the window is full.
                const std::vector<double> course =
                    meter.course(what == momentary ? Window::momentary : Window::shortTerm);
                ASSERT_GT(course.size(), 90U) << signal.name;
                for (const double loudness : course)
                    ASSERT_NEAR(loudness, level, 0.1) << signal.name;
            }
    }
}

TEST(Loudness, IsDefinedFrom400MillisecondsAnd8000HertzOn) {
    for (const std::size_t frames : {3199U, 3200U}) {
        LoudnessMeter meter(usualLayout(1), 8000);
        const std::vector<float> samples(frames, 0.5F);
        meter.add(std::vector<std::span<const float>>{samples});
        EXPECT_EQ(meter.integrated().has_value(), frames == 3200);
    }
    EXPECT_THROW(LoudnessMeter(usualLayout(1), 7999), std::invalid_argument);
    for (const std::size_t channels : {0U, 65U})
        EXPECT_THROW(LoudnessMeter(unknownLayout(channels), rate), std::invalid_argument) << channels;
}

TEST(DeliveryGain, IsRefusedWhereThereIsNoLevel) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    DeliveryTarget target;
    target.loudness = -23.0;
    for (const auto& [samplePeak, integrated, reason] :
         {std::tuple{-infinity, -infinity, "it is silent"},
          {infinity, 0.0, "it holds samples that are infinite"},
          {-3.0, -infinity, "it is silent but for less than 0.4 s"}}) {
        ProgrammeLevels programme;
        programme.samplePeak = samplePeak;
        programme.integrated = integrated;
        try {
            deliveryGain(programme, target);
            ADD_FAILURE() << reason;
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), reason);
        }
    }
}

TEST(WaveformPeaks, AreBytesOrWordsOfStretchesOfSamples) {
    for (const auto& [channels, sampleRate, stretch, bits] :
         {std::tuple{0U, rate, 1, 8}, {1U, 0, 1, 8}, {1U, rate, 0, 8}, {1U, rate, 1, 12}})
        EXPECT_THROW(WaveformPeaks(channels, sampleRate, stretch, bits), std::invalid_argument) << bits;
    EXPECT_NO_THROW(WaveformPeaks(1, 1, 1, 16));
    WaveformPeaks peaks(1, rate, 2, 8);
    const std::vector<float> samples{0.5F, std::nanf(""), -1.0F};
    peaks.add(std::vector<std::span<const float>>{samples});
    // Behind the version, the bits, the rate, the stretch, and how many there are. NaN is heard as silence.
    EXPECT_EQ(peaks.binary().substr(4, 4), std::string("\1\0\0\0", 4));
    EXPECT_EQ(peaks.binary().substr(24), std::string("\x00\x40\x80\x80", 4));
}

TEST(Loudness, KnowsTheTruePeaksOfTech3341) {
    struct Case {
        int number;
        /// Of the rate.
        int part;
        double degrees;
        double amplitude;
        double decibels;
    };
    for (const Case& signal :
         {Case{15, 4, 0.0, 0.5, -6.0}, Case{16, 4, 45.0, 0.5, -6.0}, Case{17, 6, 60.0, 0.5, -6.0},
          Case{18, 8, 67.5, 0.5, -6.0}, Case{19, 4, 45.0, 1.41, 3.0}}) {
        std::vector<float> samples;
        // Faded in: a sine that begins at once is higher between its first samples.
        for (int n = 0; n < rate; ++n)
            samples.push_back(static_cast<float>(
                signal.amplitude * std::min(n / 480.0, 1.0) *
                std::sin(2.0 * std::numbers::pi *
                         (static_cast<double>(n) / signal.part + signal.degrees / 360.0))));
        LoudnessMeter meter(usualLayout(2), rate);
        meter.add(std::vector<std::span<const float>>{samples, samples});
        for (const std::size_t channel : {0U, 1U}) {
            const double peak = decibelsOfGain(meter.truePeak(channel));
            EXPECT_LE(peak, signal.decibels + 0.2) << signal.number;
            EXPECT_GE(peak, signal.decibels - 0.4) << signal.number;
        }
    }
}

} // namespace
} // namespace audlmd::test

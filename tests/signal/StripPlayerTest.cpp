#include "loop_modes/OutputTypes.hpp"
#include "standalone/signal/GainLaws.hpp"
#include "tests/signal/TestStrip.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace audlmd {
namespace {

using test::TestStrip;

std::vector<float> noise(std::size_t length) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> sample(-0.2F, 0.2F);
    std::vector<float> samples(length);
    std::generate(samples.begin(), samples.end(), [&] { return sample(random); });
    return samples;
}

std::vector<float> backwards(std::vector<float> samples) {
    std::reverse(samples.begin(), samples.end());
    return samples;
}

const Automation automation({{0, 0.9F}, {700, 1.1F}, {700, 0.4F}, {1500, 0.4F}, {2800, 1.0F}});

/// Every combination of stages, with numbers drawn anew for each.
template <class Use>
void forEveryCombination(const StripSettings& plain, Use use) {
    std::mt19937 random(7);
    const auto length = static_cast<std::uint64_t>(plain.to - plain.from);
    const auto upTo = [&](std::uint64_t most) {
        return std::uniform_int_distribution<std::uint64_t>(1, most)(random);
    };
    const auto uValue = [&] { return std::uniform_real_distribution<float>(0.3F, 1.1F)(random); };
    const auto curve = [&] { return static_cast<FadeCurve>(upTo(3)); };
    for (const Converter converter : {Converter::none, Converter::linear, Converter::filtering})
        for (int stages = 0; stages < 2 * 6 * 4 * 2 * 2; ++stages) {
            StripSettings settings = plain;
            settings.converter = converter;
            if (converter != Converter::none)
                settings.speed = std::exp(std::uniform_real_distribution<double>(-1.5, 1.8)(random));
            settings.reverse = stages % 2 != 0;
            const std::uint64_t in = upTo(length / 2);
            const std::uint64_t out = upTo(length / 2);
            const FadePlan fades[] = {{},
                                      {.fadeInSamples = in, .fadeInCurve = curve()},
                                      {.fadeOutSamples = out, .fadeOutCurve = curve()},
                                      {in, out, curve(), curve()},
                                      {.fadeInSamples = length, .fadeInCurve = FadeCurve::log},
                                      {.fadeOutSamples = length, .fadeOutCurve = FadeCurve::power}};
            settings.fade = fades[stages / 2 % 6];
            const int level = stages / 12 % 4;
            if (level == 1)
                settings.outerLevel = uValue();
            if (level >= 2)
                settings.automation = {automation,
                                       level == 2 ? WalkDirection::forwards : WalkDirection::backwards};
            if (stages / 48 % 2 != 0)
                settings.middleLevel = uValue();
            if (stages / 96 != 0)
                settings.equaliser = {{BandKind::lowShelf, 200.0, -3.0},
                                      {BandKind::peak, 3000.0, 6.0, 2.0},
                                      {BandKind::lowPass, 15000.0}};
            use(settings);
        }
}

std::string describe(StripPlayer& player, const StripSettings& settings) {
    return "mode " + std::to_string(player.modeCode()) + ", speed " + std::to_string(settings.speed);
}

TEST(StripPlayer, RendersTheSameBytesInBlocksOfAnySize) {
    TestStrip strip(noise(2600));
    StripSettings plain = strip.settings();
    plain.from = -100;
    plain.to = 2700;
    std::set<unsigned long> modes;
    forEveryCombination(plain, [&](const StripSettings& settings) {
        StripPlayer whole(strip.cache(), settings);
        modes.insert(whole.modeCode());
        const std::vector<float> expected = TestStrip::render(whole);
        ASSERT_EQ(expected.size(), whole.outputLength());
        for (const std::uint64_t block : {1u, 7u, 64u, 1000u})
            ASSERT_EQ(strip.render(settings, block), expected) << describe(whole, settings) << ", " << block;
    });
    EXPECT_EQ(modes.size(), 576u) << "all chains there are";
}

/// The gain of all levels at a source sample, from the laws.
double gainAt(const StripSettings& settings, std::int64_t sample) {
    const std::int64_t length = settings.to - settings.from;
    double gain = FadeEnvelope(settings.fade, static_cast<std::uint64_t>(length)).gainAt(sample);
    gain *= mixerStyleGain(static_cast<double>(settings.middleLevel.value_or(1.0F)));
    gain *= mixerStyleGain(static_cast<double>(settings.outerLevel.value_or(1.0F)));
    if (settings.automation) {
        const bool forwards = settings.automation->direction == WalkDirection::forwards;
        const float u = settings.automation->automation.uValueAt(forwards ? sample : length - 1 - sample);
        gain *= mixerStyleGain(static_cast<double>(u));
    }
    return gain;
}

TEST(StripPlayer, AppliesEqualiserAndLevelsAtTheSourceRateInTheOrderOfDelivery) {
    const std::vector<float> samples = noise(2600);
    TestStrip strip(samples);
    StripSettings plain = strip.settings();
    plain.from = 11;
    forEveryCombination(plain, [&](const StripSettings& settings) {
        if (settings.converter == Converter::filtering)
            return;
        Aud::Filter::MultiBandBiquad<5u> equaliser;
        setBands(equaliser, settings.equaliser, settings.sampleRate);
        std::vector<float> delivered;
        for (std::int64_t i = 0; i < settings.to - settings.from; ++i) {
            const std::int64_t position = settings.reverse ? settings.to - 1 - i : settings.from + i;
            float sample = samples[static_cast<std::size_t>(position)];
            for (unsigned int band = 0; band < settings.equaliser.size(); ++band)
                sample = equaliser.band(band).processSample(sample);
            delivered.push_back(static_cast<float>(static_cast<double>(sample) * gainAt(settings, i)));
        }
        StripPlayer player(strip.cache(), settings);
        const std::vector<float> out = TestStrip::render(player, 300);
        for (std::size_t n = 0; n < out.size(); ++n) {
            const double position = static_cast<double>(n) * player.speedInForce();
            const auto left = static_cast<std::size_t>(position + 1e-9);
            const std::size_t right = std::min(left + 1, delivered.size() - 1);
            const double weight = right > left ? std::max(0.0, position - static_cast<double>(left)) : 0.0;
            const double expected = (1.0 - weight) * static_cast<double>(delivered[left]) +
                                    weight * static_cast<double>(delivered[right]);
            // Beyond the last sample the interpolation reads on in the material.
            if (left + 1 == delivered.size())
                continue;
            ASSERT_NEAR(out[n], expected, 2e-5) << describe(player, settings) << ", output " << n;
        }
    });
}

TEST(StripPlayer, IsTransparentWithoutStagesAndReversedIsForwardBackwards) {
    const std::vector<float> samples = noise(3000);
    TestStrip strip(samples);
    StripSettings settings = strip.settings();
    EXPECT_EQ(strip.render(settings), samples);
    for (const Converter converter : {Converter::none, Converter::linear}) {
        settings = strip.settings();
        settings.converter = converter;
        settings.automation = {automation, WalkDirection::forwards};
        const std::vector<float> forwards = strip.render(settings);
        settings.reverse = true;
        settings.automation->direction = WalkDirection::backwards;
        EXPECT_EQ(strip.render(settings), backwards(forwards));
    }
    settings = strip.settings();
    settings.converter = Converter::linear;
    EXPECT_EQ(strip.render(settings), samples) << "no lag at speed 1";
    settings.speed = 3.0;
    const std::vector<float> everyThird = strip.render(settings, 10);
    ASSERT_EQ(everyThird.size(), 1000u);
    for (std::size_t n = 0; n < everyThird.size(); ++n)
        ASSERT_EQ(everyThird[n], samples[3 * n]);
}

TEST(StripPlayer, FilteringIsAlignedFromItsFirstSampleToItsLast) {
    constexpr std::int64_t length = 20000;
    constexpr double radians = 0.02 * std::numbers::pi;
    std::vector<float> samples;
    for (std::int64_t n = 0; n < length; ++n)
        samples.push_back(static_cast<float>(0.5 * std::cos(radians * static_cast<double>(n))));
    TestStrip strip(samples);
    for (const bool reverse : {false, true})
        for (const double speed : {0.1, 0.5, 0.77, 1.0, 1.5, 2.2, 6.0}) {
            StripSettings settings = strip.settings();
            // Whole periods, so that either direction begins with a crest.
            settings.from = 1000;
            settings.to = length - 999;
            settings.converter = Converter::filtering;
            settings.speed = speed;
            settings.reverse = reverse;
            const std::vector<float> out = strip.render(settings);
            EXPECT_EQ(out.size(), std::ceil(static_cast<double>(settings.to - settings.from) / speed));
            // At the edge itself the filter has put out half of it, and half of its centre.
            EXPECT_GT(out.front(), 0.25) << speed;
            for (std::size_t n = 0; n < out.size(); ++n) {
                const double into = static_cast<double>(n) * speed;
                if (into > 60.0) {
                    ASSERT_NEAR(out[n], 0.5 * std::cos(radians * into), 2e-3) << speed << ", output " << n;
                }
            }
        }
}

TEST(StripPlayer, ContinuesAfterAJumpAsIfItHadPlayedThere) {
    TestStrip strip(noise(2800));
    forEveryCombination(strip.settings(), [&](const StripSettings& settings) {
        StripPlayer player(strip.cache(), settings);
        const std::vector<float> whole = TestStrip::render(player);
        const auto middle = whole.size() / 3;
        player.seek(middle);
        const std::vector<float> rest = TestStrip::render(player, 50);
        ASSERT_EQ(rest.size(), whole.size() - middle);
        const std::vector<float> expected(whole.begin() + static_cast<std::ptrdiff_t>(middle), whole.end());
        if (settings.equaliser.empty() && settings.converter != Converter::filtering) {
            ASSERT_EQ(rest, expected) << describe(player, settings);
        }
        player.seek(0);
        ASSERT_EQ(TestStrip::render(player, 99), whole) << describe(player, settings);
    });
    StripPlayer player(strip.cache(), strip.settings());
    EXPECT_THROW(player.seek(2801), std::out_of_range);
}

TEST(StripPlayer, FiltersTheFirstSampleAfterAJumpToo) {
    const std::vector<float> samples = noise(500);
    TestStrip strip(samples);
    StripSettings settings = strip.settings();
    settings.equaliser = {{BandKind::lowPass, 5000.0}};
    settings.reverse = true;
    const auto b0 = static_cast<float>(sectionOf(settings.equaliser[0], settings.sampleRate).b0);
    StripPlayer player(strip.cache(), settings);
    EXPECT_FLOAT_EQ(TestStrip::render(player)[0], b0 * samples[499]);
    player.seek(100);
    EXPECT_FLOAT_EQ(TestStrip::render(player)[0], b0 * samples[399]);
}

TEST(StripPlayer, StandsWhereItStoodAfterAFailure) {
    TestStrip strip(noise(500));
    StripSettings settings = strip.settings();
    settings.cookie.channel = 1;
    StripPlayer player(strip.cache(), settings);
    std::vector<Aud::SampleF32> out(500);
    Aud::SampleF32* position = out.data();
    EXPECT_THROW(player.render(position, 10), UnknownMaterial);
    EXPECT_EQ(player.position(), 0u);
}

TEST(StripPlayer, RendersNoMoreThanTheRangeToAnyOutputType) {
    TestStrip strip(std::vector<float>(100, 0.5F));
    StripPlayer player(strip.cache(), strip.settings());
    std::vector<Aud::SampleS16> out(100, Aud::SampleS16{{0, 0x20}});
    Aud::Render::Summing<Aud::SampleS16*> position(out.data());
    EXPECT_EQ(player.render(position, 60), 60u);
    EXPECT_EQ(player.render(position, 60), 40u);
    EXPECT_EQ(player.render(position, 60), 0u);
    EXPECT_EQ(position.position(), out.data() + 100);
    EXPECT_EQ(out[99].bytes[1], 0x60) << "a quarter plus a half of full scale";
}

TEST(StripPlayer, ExplainsTheNumbersOfItsRecord) {
    TestStrip strip(noise(1000));
    StripSettings settings = strip.settings();
    settings.reverse = true;
    settings.converter = Converter::filtering;
    settings.speed = 20.0;
    settings.fade = {.fadeInSamples = 512};
    settings.outerLevel = 1.5F;
    const StripPlayer player(strip.cache(), settings);
    EXPECT_TRUE(player.speedIsLimited());
    std::set<std::string> lines;
    for (const RecordNumber& number : player.recordNumbers())
        lines.insert(number.name + " = " + number.value);
    for (const char* line :
         {"reverseFilteringStartPosition = 1000", "envelope.type = 4 (ramp-hold)", "envelope.length = 512",
          "envelope.step = 0.001953125", "outerLevelUValue = 1.5 (+10.00 dB)", "speed = 20",
          "srcState.factor = 0.166666667", "requestFlag = true (waits)"})
        EXPECT_TRUE(lines.contains(line)) << line;
}

TEST(StripPlayer, RefusesSettingsThatCannotBe) {
    TestStrip strip(noise(100));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const std::vector<std::function<void(StripSettings&)>> changes{
        [](auto& s) { s.to = s.from; },
        [](auto& s) { s.from = std::numeric_limits<std::int64_t>::min(); },
        [](auto& s) { s.fade = {.fadeInSamples = 60, .fadeOutSamples = 60}; },
        [](auto& s) { s.speed = 2.0; },
        [&](auto& s) { s.converter = Converter::filtering, s.speed = nan; },
        [&](auto& s) { s.converter = Converter::linear, s.speed = infinity; },
        [&](auto& s) { s.middleLevel = static_cast<float>(nan); },
        [](auto& s) { s.equaliser.resize(6); },
        [](auto& s) {
            s.outerLevel = 1.0F, s.automation = {automation, WalkDirection::forwards};
        }};
    for (std::size_t i = 0; i < changes.size(); ++i) {
        StripSettings settings = strip.settings();
        changes[i](settings);
        EXPECT_THROW(StripPlayer(strip.cache(), settings), std::invalid_argument) << "change " << i;
    }
}

} // namespace
} // namespace audlmd

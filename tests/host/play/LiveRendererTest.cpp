#include "host/mix/ConvertedSources.hpp"
#include "host/play/MixedTimeline.hpp"
#include "host/signal/BestConverter.hpp"
#include "tests/host/mix/TestTimeline.hpp"
#include "tests/host/play/LiveDeck.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <tuple>

namespace audlmd::test {
namespace {

constexpr std::size_t soundLength = 30000;

std::vector<std::shared_ptr<SampleSource>> twoChannels() {
    return {std::make_shared<MemorySource>(soundNumber(1, soundLength)),
            std::make_shared<MemorySource>(soundNumber(2, soundLength))};
}

/// From one output sample of the player to the end of the strip.
std::vector<float> playedAlone(const StripSettings& settings, std::uint64_t from) {
    MaterialCache cache;
    cache.add(settings.cookie,
              materialAtNormalSpeed(std::make_shared<MemorySource>(soundNumber(1, soundLength)), settings));
    StripPlayer player(cache, atNormalSpeed(settings));
    player.seek(from);
    std::vector<float> played(player.outputLength() - from);
    player.render(played);
    return played;
}

std::vector<float> channelOf(const std::vector<float>& interleaved, std::size_t channel) {
    std::vector<float> samples;
    for (std::size_t at = channel; at < interleaved.size(); at += 2)
        samples.push_back(interleaved[at]);
    return samples;
}

float largestStep(const std::vector<float>& samples, float before) {
    float largest = 0.0F;
    for (const float sample : samples)
        largest = std::max(largest, std::fabs(sample - std::exchange(before, sample)));
    return largest;
}

/// Played live at a speed of the transport, a strip must sound like `alone`.
void expectBytes(const StripSettings& strip, double speed, std::int64_t from, const StripSettings& alone) {
    SCOPED_TRACE(testing::Message() << "speed " << speed << " from " << from);
    const std::int64_t start = speed < 0.0 ? static_cast<std::int64_t>(soundLength) - from : from;
    const std::vector<float> expected =
        playedAlone(alone, static_cast<std::uint64_t>(static_cast<double>(start) / alone.speed));
    LiveDeck deck(twoChannels(), strip);
    deck.seek(from);
    deck.play(speed);
    // The last sample fades out.
    const std::vector<float> heard = channelOf(deck.pull(expected.size() + 2 * LiveDeck::fadeFrames), 0);
    EXPECT_TRUE(std::equal(expected.begin() + LiveDeck::fadeFrames, expected.end(),
                           heard.begin() + LiveDeck::fadeFrames));
    EXPECT_EQ(heard.back(), 0.0F);
    EXPECT_TRUE(deck.output.hasEnded(deck.order.generation));
    EXPECT_NEAR(deck.output.position(), speed < 0.0 ? 0.0 : static_cast<double>(soundLength),
                alone.speed - 0.5);
    EXPECT_EQ(deck.output.starvedFrames(), 0U);
    EXPECT_EQ(deck.content.totals().lateSamples, 0U);
}

TEST(LiveRenderer, DeliversTheBytesOfAStripPlayerAtAnySteadySpeed) {
    struct Case {
        double speed;
        std::int64_t from;
        bool reverse;
        double stripSpeed;
        Converter converter;
    };
    const Case cases[] = {
        {1.0, 0, false, 1.0, Converter::none},      {1.0, 7777, false, 1.0, Converter::none},
        {-1.0, 20001, false, 1.0, Converter::none}, {1.0, 123, true, 1.0, Converter::none},
        {1.1, 0, false, 1.0, Converter::filtering}, {-0.5, 30000, false, 1.0, Converter::filtering},
        {8.0, 0, false, 1.0, Converter::linear},    {-1.0, 30000, false, 1.5, Converter::linear},
        {2.0, 0, true, 1.25, Converter::filtering}, {1.0, 7500, false, 1.25, Converter::best},
        {-1.0, 22500, false, 1.25, Converter::best}};
    for (const auto& [speed, from, reverse, stripSpeed, converter] : cases) {
        StripSettings strip = wholeStrip(soundLength);
        strip.reverse = reverse;
        strip.speed = stripSpeed;
        strip.converter = stripSpeed == 1.0 ? Converter::none : converter;
        StripSettings alone = strip;
        alone.reverse = reverse != (speed < 0.0);
        alone.speed = std::fabs(speed) * stripSpeed;
        alone.converter = converter;
        expectBytes(strip, speed, from, alone);
    }
}

TEST(LiveRenderer, DeliversTheBytesOfAMixerForwardsAndBackwards) {
    TestMedia media;
    media.add("sound", {soundNumber(1, soundLength), soundNumber(2, soundLength)});
    Timeline timeline =
        timelineOf({stripOf("sound", 0, 20000), stripOf("sound", 9000, 30000), stripOf("gone", 0, 9)}, 2);
    timeline.length = 36000;
    Mixer mixer(timeline, media.opener());
    const Channels expected = mixed(mixer, 0, 36000);
    const auto live = std::make_shared<MixedTimeline>(timeline, media.opener(), MixerOptions{.threads = 2});
    for (const double speed : {1.0, -1.0}) {
        LiveDeck deck(MixedTimeline::sources(live), wholeStrip(36000));
        deck.seek(speed < 0.0 ? 36000 : 0);
        deck.play(speed);
        const std::vector<float> heard = deck.pull(36000);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            std::vector<float> samples = channelOf(heard, channel);
            if (speed < 0.0)
                std::ranges::reverse(samples);
            const std::ptrdiff_t fade = LiveDeck::fadeFrames;
            EXPECT_TRUE(
                std::equal(samples.begin() + fade, samples.end() - fade, expected[channel].begin() + fade));
        }
    }
    ASSERT_EQ(live->report().strips.size(), 1U);
    EXPECT_EQ(live->report().strips.front().failure, "no medium 'gone'");
}

/// Does something to the transport that is heard as a seam. Returns the speed from then on.
double disturb(LiveDeck& deck, std::mt19937& random, double speed) {
    constexpr double speeds[] = {1.0, -1.0, 1.0, -1.0, 1.1, -2.0, 4.0, -8.0};
    switch (random() % 6) {
    case 0:
        deck.stop();
        return speed;
    case 1:
        deck.seek(static_cast<std::int64_t>(random() % 400000));
        return speed;
    case 2:
        deck.output.setGain(random() % 2 == 0 ? 0.5F : 1.0F);
        return speed;
    case 3:
        deck.order.loop.reset();
        if (random() % 2 == 0)
            deck.order.loop = {.from = 150000, .to = 153000 + static_cast<std::int64_t>(random() % 9000)};
        return speed;
    default:
        speed = speeds[random() % 8];
        deck.play(speed);
        return speed;
    }
}

TEST(LiveRenderer, NeverClicks) {
    const double steady = 0.5 * 2.0 * std::sin(std::numbers::pi * 440.0 / 48000.0);
    for (const unsigned int seed : {1U, 2U, 3U}) {
        std::mt19937 random(seed);
        LiveDeck deck({sineSource(440.0, 400000)}, wholeStrip(400000));
        double before = 1.0;
        float last = 0.0F;
        deck.seek(200000);
        for (int change = 0; change < 400; ++change) {
            const double speed = disturb(deck, random, before);
            // Now and then the device asks for frames while nothing is rendered.
            const bool renders = random() % 4 != 0;
            const std::vector<float> heard = deck.pull(1 + random() % (renders ? 2000 : 900), renders);
            const double fastest = std::max(std::fabs(before), std::fabs(speed));
            ASSERT_LE(largestStep(heard, last), 1.2 * steady * fastest) << "seed " << seed << ", " << change;
            last = heard.back();
            // The fade-out of this change may still be heard at the next one.
            before = renders && heard.size() > 2 * LiveDeck::fadeFrames ? speed : fastest;
        }
    }
}

TEST(LiveRenderer, LooksForTheNextOrderBehindEveryBlock) {
    // A device that takes blocks as fast as they are rendered would never let the ring get full.
    LiveDeck deck(twoChannels(), wholeStrip(soundLength));
    deck.play(1.0);
    deck.pull(64);
    deck.pull(300, false);
    const std::uint64_t before = deck.ring.pushed();
    EXPECT_TRUE(deck.renderer.follow(deck.order, deck.output.position()));
    EXPECT_EQ(deck.ring.pushed(), before + 1);
}

TEST(LiveRenderer, PlaysALoopInBothDirections) {
    std::vector<float> ramp(20000);
    for (std::size_t n = 0; n < ramp.size(); ++n)
        ramp[n] = static_cast<float>(n) * 0x1p-16F;
    // What begins behind the loop fades out before it enters.
    for (const auto& [speed, from, lap] :
         {std::tuple{1.0, 6000, 2000U}, {-1.0, 6000, 1000U}, {1.0, 9000, 240U}, {-1.0, 4000, 240U}}) {
        LiveDeck deck({std::make_shared<MemorySource>(ramp)}, wholeStrip(20000));
        deck.order.loop = RangeSpan{.from = 5000, .to = 8000};
        deck.seek(from);
        deck.play(speed);
        const std::vector<float> heard = deck.pull(12000);
        for (std::size_t frame = LiveDeck::fadeFrames; frame < heard.size(); ++frame) {
            const std::size_t sinceSeam = (frame + 3000 - lap) % 3000;
            if (sinceSeam < LiveDeck::fadeFrames || sinceSeam > 3000 - LiveDeck::fadeFrames)
                continue;
            ASSERT_EQ(heard[frame], ramp[speed < 0.0 ? 7999 - sinceSeam : 5000 + sinceSeam]) << frame;
        }
    }
}

TEST(LiveRenderer, RendersAheadInEighthsOfTheLatency) {
    for (const auto& [latency, fade, rate, block, ahead, fadeFrames] :
         {std::tuple{0.005, 0.001, 48'000, 30U, 8U, 48U},
          {2.0, 0.1, 48'000, 4096U, 23U, 4800U},
          {0.005, 0.001, 8000, 16U, 2U, 8U},
          {0.005, 0.001, 100, 16U, 2U, 1U}}) {
        const LiveRenderer::Sizes sizes = LiveRenderer::sizesFor({.latency = latency, .fade = fade}, rate);
        EXPECT_EQ(sizes.blockFrames, block) << latency;
        EXPECT_EQ(sizes.blocksAhead, ahead) << latency;
        EXPECT_EQ(sizes.fadeFrames, fadeFrames) << fade;
    }
}

} // namespace
} // namespace audlmd::test

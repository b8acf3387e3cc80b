#include "host/signal/GainLaws.hpp"
#include "tests/host/mix/TestTimeline.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <tuple>

namespace audlmd::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::size_t soundLength = 30000;

/// Strips that overlap: plain, with a state of the equaliser and of the filtering converter, and with levels
/// that move. Random timelines draw every kind, but not under the sanitizers.
std::vector<TimelineStrip> overlappingStrips() {
    std::vector<TimelineStrip> strips;
    for (const std::int64_t at : {-3000, 5000, 9000, 13000})
        strips.push_back(stripOf("sound", at, 20000));
    strips[1].settings.converter = Converter::filtering;
    strips[1].settings.speed = 1.3;
    strips[2].settings.equaliser = {{.kind = BandKind::peak, .frequency = 3000.0, .gainDb = -7.0}};
    strips[3].settings.automation =
        AutomationWalk{.automation = Automation({{.position = 0, .uValue = 1.0F},
                                                 {.position = 9000, .uValue = 0.2F},
                                                 {.position = 15000, .uValue = 1.2F}})};
    strips[3].gainDb = -4.0;
    strips.push_back(strips[3]);
    strips[4].settings.fade = {.fadeInSamples = 3000, .fadeOutSamples = 9000};
    strips[4].settings.equaliser = strips[2].settings.equaliser;
    strips[4].settings.converter = Converter::best;
    strips[4].settings.speed = 0.75;
    strips[4].settings.reverse = true;
    return strips;
}

TEST(Mixer, GivesTheSameSamplesForAnyStretchesBlocksAndThreads) {
    TestMedia media;
    media.add("sound", {soundNumber(1, soundLength), soundNumber(2, soundLength)});
    const Timeline timeline = timelineOf(overlappingStrips(), 2);
    Mixer wholeMixer(timeline, media.opener(), {.threads = 1});
    const Channels whole = mixed(wholeMixer, 0, 45000);

    std::mt19937 random(7);
    for (const auto& [threads, block] : {std::pair{1UL, 1000UL}, {3UL, 77UL}, {2UL, 65536UL}}) {
        Mixer mixer(timeline, media.opener(), {.threads = threads, .block = block, .openAhead = 0.01});
        for (int stretch = 0; stretch < 12; ++stretch) {
            const std::size_t length = 1 + random() % 6000;
            const std::size_t position = random() % (45000 - length);
            for (const std::size_t repeat : {0UL, 1UL}) {
                if (position + (repeat + 1) * length > 45000)
                    continue;
                const std::size_t from = position + repeat * length;
                const Channels part = mixed(mixer, static_cast<std::int64_t>(from), length);
                for (std::size_t channel = 0; channel < 2; ++channel)
                    ASSERT_TRUE(std::equal(part[channel].begin(), part[channel].end(),
                                           whole[channel].begin() + static_cast<std::ptrdiff_t>(from)))
                        << length << " samples from " << from << " in blocks of " << block;
            }
        }
    }
}

TEST(Mixer, PlaysAConstantSpeedAsTheMaterialIsBetweenItsSamples) {
    constexpr std::int64_t from = 10'000;
    constexpr std::int64_t to = 60'000;
    constexpr double step = 0.05;
    std::vector<float> tone(70'000);
    for (std::size_t n = 0; n < tone.size(); ++n)
        tone[n] = static_cast<float>(0.25 * std::sin(step * double(n)));
    TestMedia media;
    media.add("tone", {tone});
    for (const double speed : {0.3, 0.75, 1.1, 1.5, 2.0, 7.0, std::exp2(1.0 / 12.0)})
        for (const bool reverse : {false, true}) {
            SCOPED_TRACE(speed);
            TimelineStrip strip = stripOf("tone", 0, 200'000);
            strip.settings.from = from;
            strip.settings.to = to;
            strip.settings.converter = Converter::best;
            strip.settings.speed = speed;
            strip.settings.reverse = reverse;
            // By 6 dB at the frequency of the tone, with the phase of the tone.
            strip.settings.equaliser = {{.kind = BandKind::peak,
                                         .frequency = step * 24'000.0 / std::numbers::pi,
                                         .gainDb = 20.0 * std::log10(2.0),
                                         .q = 0.5}};
            strip.settings.fade.fadeInSamples = 25'000;
            strip.settings.automation = AutomationWalk{.automation = Automation({{0, 1.0F}, {40'000, 0.5F}})};
            Mixer mixer(timelineOf({strip}), media.opener());
            const auto length = static_cast<std::size_t>(std::ceil(50'000 / speed));
            const std::vector<float> played = mixed(mixer, 0, length + 10).front();
            for (std::size_t n = 2000; n < length; ++n) {
                const double sample = double(n) * speed;
                const double place = reverse ? to - 1 - sample : from + sample;
                const double level = mixerStyleGain(1.0 - std::min(sample, 40'000.0) / 80'000.0);
                ASSERT_NEAR(static_cast<double>(played[n]),
                            0.5 * std::sin(step * place) * std::min(1.0, sample / 25'000.0) * level, 1e-4)
                    << n;
            }
            EXPECT_NE(played[length - 1], 0.0F);
            EXPECT_EQ(played[length], 0.0F);
        }
}

TEST(Mixer, PlaysPartsOfAConstantSpeedAsTheWhole) {
    TestMedia media;
    media.add("sound", {soundNumber(1, soundLength)});
    const auto played = [&](std::int64_t from, std::int64_t to, bool reverse) {
        TimelineStrip strip = stripOf("sound", 0, 40'000);
        strip.settings.from = from;
        strip.settings.to = to;
        strip.settings.converter = Converter::best;
        strip.settings.speed = 1.1;
        strip.settings.reverse = reverse;
        Mixer mixer(timelineOf({strip}), media.opener());
        return mixed(mixer, 0, static_cast<std::size_t>(std::ceil(double(to - from) / 1.1))).front();
    };
    // In elevenths of tenths: from 2,200 samples before the material on.
    std::vector<float> whole = played(-2200, 31'901, false);
    const std::vector<float> part = played(11'000, 22'000, false);
    EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + 12'000));
    std::ranges::reverse(whole);
    EXPECT_EQ(played(-2200, 31'901, true), whole);
}

TEST(Mixer, SumsWithoutClippingAndReportsWhatTheOutputWillClip) {
    TestMedia media;
    media.add("loud", {{0.8F, 0.8F, -0.8F, 0.5F}});
    media.add("minus", {{-0.8F, 0.8F, -0.8F, 0.5F}});
    media.add("hot", {{40.0F, 0.0F, 0.0F, 0.0F}});
    media.add("warm", {{-1.25F}});
    Timeline timeline = timelineOf({stripOf("loud", 0, 4), stripOf("loud", 0, 4), stripOf("minus", 0, 4),
                                    stripOf("hot", 6, 1), stripOf("warm", 7, 1)});
    Mixer mixer(timeline, media.opener());
    EXPECT_THAT(mixed(mixer, 0, 8).front(),
                ElementsAre(0.8F + 0.8F - 0.8F, 0.8F + 0.8F + 0.8F, -0.8F - 0.8F - 0.8F, 1.5F, 0.0F, 0.0F,
                            40.0F, -1.25F));
    const MixReport report = mixer.report();
    EXPECT_EQ(report.channels.front().samples, 5U);
    EXPECT_EQ(report.channels.front().firstAt, 1);
    EXPECT_EQ(report.channels.front().peak, 40.0F);
    ASSERT_EQ(report.strips.size(), 2U);
    EXPECT_EQ(report.strips.back().overload.peak, 1.25F);
    EXPECT_EQ(report.strips.front().strip, 3U);
    EXPECT_EQ(report.strips.front().overload.samples, 1U);
    EXPECT_THAT(report.strips.front().overload.spans, ElementsAre(TimelineSpan{.from = 6, .to = 7}));
}

TEST(Mixer, SumsTracksAndThenTheirSumsInSinglePrecision) {
    TestMedia media;
    media.add("full scale", {{1.0F}});
    media.add("half a bit", {{0x1p-24F}});
    Timeline timeline = timelineOf({stripOf("full scale", 0, 1), stripOf("half a bit", 0, 1)});
    timeline.tracks.push_back({.name = "second", .strips = {stripOf("half a bit", 0, 1)}});
    timeline.tracks.push_back({.name = "empty", .strips = {}});
    Mixer mixer(timeline, media.opener());
    EXPECT_EQ(mixed(mixer, 0, 1).front().front(), 1.0F);
    std::swap(timeline.tracks[0], timeline.tracks[1]);
    Mixer halfFirst(timeline, media.opener(), {.stems = true});
    EXPECT_EQ(mixed(halfFirst, 0, 1, true), (Channels{{1.0F}, {0x1p-24F}, {1.0F}, {0.0F}}));
    EXPECT_EQ(halfFirst.report().stems[1][0].peak, 1.0F);
    timeline.tracks[0].strips.push_back(stripOf("half a bit", 0, 1));
    Mixer halvesFirst(timeline, media.opener());
    EXPECT_EQ(mixed(halvesFirst, 0, 1).front().front(), 1.0F + 0x1p-23F);
    timeline.tracks[1].strips[1].media = "full scale";
    Mixer sumsOfTracks(timeline, media.opener());
    EXPECT_EQ(mixed(sumsOfTracks, 0, 1).front().front(), 2.0F);
    std::swap(timeline.tracks[0], timeline.tracks[1]);
    timeline.tracks[0].strips = {stripOf("full scale", 0, 1)};
    Mixer halvesLast(timeline, media.opener());
    EXPECT_EQ(mixed(halvesLast, 0, 1).front().front(), 1.0F + 0x1p-23F);
}

TEST(Mixer, RefusesBuffersThatDoNotFit) {
    Mixer mixer(timelineOf({}, 2), TestMedia().opener());
    std::vector<float> samples(20, 7.0F);
    const std::span<float> all(samples);
    const std::tuple<std::int64_t, std::vector<std::span<float>>, const char*> table[] = {
        {0, {all.first(4)}, "2 channels, not 1"},
        {0, {all.first(4), all.subspan(4, 4), all.last(4)}, "2 channels, not 3"},
        {0, {all.first(9), all.last(8)}, "channel 2 has 8 samples, but that of channel 1 has 9"},
        {0, {all.first(8), all.last(9)}, "channel 2 has 9 samples"},
        {farthestPosition + 1, {all.first(9), all.last(9)}, "the start of the stretch"}};
    for (const auto& row : table)
        EXPECT_THAT(([&] { mixer.render(std::get<0>(row), std::get<1>(row)); }),
                    testing::ThrowsMessage<std::invalid_argument>(HasSubstr(std::get<2>(row))));
    EXPECT_EQ(samples, std::vector<float>(20, 7.0F));
}

TEST(Mixer, ReportsWhatIsMissingAndPlaysTheRest) {
    TestMedia media;
    media.add("there", {{0.5F}});
    media.add("wide", Channels(9, {0.5F}));
    const OpenMedia open = [there = media.opener()](const std::string& name) {
        return name == "broken" ? Media{.channels = {std::make_shared<BrokenSource>()}} : there(name);
    };
    TimelineStrip unroutable = stripOf("there", 0, 1);
    unroutable.routing = Routing{{{1.0F, 1.0F}}};
    Timeline timeline = timelineOf({stripOf("there", 0, 1), stripOf("gone", 2, 3), stripOf("broken", 5, 10)});
    timeline.tracks.push_back({.name = "second", .strips = {unroutable, stripOf("wide", 0, 1)}});
    Mixer mixer(timeline, open);
    EXPECT_EQ(mixed(mixer, 0, 20).front().front(), 0.5F);
    const MixReport report = mixer.report();
    ASSERT_EQ(report.strips.size(), 4U);
    EXPECT_EQ(report.strips[0].failure, "no medium 'gone'");
    EXPECT_THAT(report.strips[0].silent, ElementsAre(TimelineSpan{.from = 2, .to = 5}));
    EXPECT_EQ(report.strips[1].failure, "bad sector");
    EXPECT_EQ(report.strips[1].underrunSamples, 10U);
    EXPECT_THAT(report.strips[1].silent, ElementsAre(TimelineSpan{.from = 5, .to = 15}));
    EXPECT_EQ(report.strips[2].track, 1U);
    EXPECT_THAT(report.strips[2].failure, HasSubstr("routing"));
    EXPECT_THAT(report.strips[3].failure, HasSubstr("needs a routing of its own"));
}

TEST(Mixer, FoldsDownMediaAndWhatTheyAreMixedTo) {
    TestMedia media;
    media.add("stereo", {{0.5F}, {0.25F}});
    Timeline timeline = timelineOf({stripOf("stereo", 0, 1)});
    Mixer mono(timeline, media.opener());
    EXPECT_EQ(mixed(mono, 0, 1), (Channels{{0.375F}}));
    timeline.channels = 3;
    timeline.tracks[0].strips[0].routing = Routing{{{0, 0}, {1, 0}, {0, 2}}};
    timeline.foldDown = FoldDown{.routing = {{{0, 0, 1}, {1, 2, 1}}}, .layout = unknownLayout(2)};
    Mixer mixer(timeline, media.opener());
    EXPECT_EQ(mixed(mixer, 0, 1), (Channels{{0.5F}, {1.5F}}));
    EXPECT_EQ(mixer.report().channels.size(), 2U);
    timeline.foldDown->routing.rows[1].pop_back();
    EXPECT_THROW(Mixer(timeline, media.opener()), std::invalid_argument);
    timeline.foldDown.reset();
    timeline.layout = unknownLayout(2);
    EXPECT_THROW(Mixer(timeline, media.opener()), std::invalid_argument);
}

TEST(Mixer, CountsWhatIsLateWhereItMustNotWait) {
    std::atomic<bool> mayOpen{false};
    TestMedia media;
    media.add("sound", {soundNumber(1, soundLength)});
    const OpenMedia open = [&, opener = media.opener()](const std::string& name) {
        mayOpen.wait(false);
        return opener(name);
    };
    Mixer mixer(timelineOf({stripOf("sound", 0, 20000)}), open, {.wait = false});
    EXPECT_EQ(mixed(mixer, 0, 1000).front(), std::vector<float>(1000));
    const MixReport report = mixer.report();
    ASSERT_EQ(report.strips.size(), 1U);
    EXPECT_EQ(report.strips.front().underrunSamples, 1000U);
    EXPECT_EQ(report.strips.front().underrunEpisodes, 1U);
    EXPECT_THAT(report.strips.front().silent, ElementsAre(TimelineSpan{.from = 0, .to = 1000}));
    mayOpen = true;
    mayOpen.notify_all();
}

TEST(Mixer, OpensOnlyTheStripsAroundAStretch) {
    std::atomic<int> opened{0};
    TestMedia media;
    media.add("sound", {soundNumber(1, soundLength)});
    const OpenMedia open = [&, opener = media.opener()](const std::string& name) {
        ++opened;
        return opener(name);
    };
    // Strips that sound together share what is opened.
    Mixer together(timelineOf({stripOf("sound", 0, 100), stripOf("sound", 50, 100)}), open);
    mixed(together, 60, 10);
    EXPECT_EQ(opened.exchange(0), 1);
    std::vector<TimelineStrip> strips;
    for (int strip = 0; strip < 10000; ++strip)
        strips.push_back(stripOf("sound", strip * 48000, 24000));
    Mixer mixer(timelineOf(strips), open, {.openAhead = 1.0});
    mixed(mixer, 5000 * 48000, 10);
    mixed(mixer, 9000 * 48000, 10);
    mixed(mixer, 100 * 48000, 2 * 48000);
    EXPECT_LE(opened, 9);
    EXPECT_GE(opened, 3);
}

TEST(Mixer, RefusesTimelinesThatCannotBePlayed) {
    const auto refusal = [](const TimelineStrip& strip) -> std::string {
        try {
            Mixer(timelineOf({strip}), [](const std::string&) { return Media{}; });
        } catch (const std::invalid_argument& error) {
            return error.what();
        }
        return "";
    };
    TimelineStrip strip = stripOf("sound", 0, 10);
    EXPECT_EQ(refusal(strip), "");
    strip.gainDb = 61.0;
    EXPECT_THAT(refusal(strip), testing::StartsWith("track 'track', strip 'strip of sound': the gain"));
    strip.gainDb = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THAT(refusal(strip), HasSubstr("the gain"));
    strip.silence = "not played, whatever its settings are";
    EXPECT_EQ(refusal(strip), "");
    EXPECT_NO_THROW(Mixer(timelineOf({}), TestMedia().opener(), {.openAhead = 0.0}));
    for (const auto& row : {std::pair{MixerOptions{.block = 0}, "a block of 0 samples"},
                            {MixerOptions{.block = 65537}, "a block of 65537 samples"},
                            {MixerOptions{.openAhead = 3601.0}, "0 to 3600 seconds ahead"}})
        EXPECT_THAT([&] { Mixer(timelineOf({}), TestMedia().opener(), row.first); },
                    testing::ThrowsMessage<std::invalid_argument>(HasSubstr(row.second)));
    strip = stripOf("sound", std::numeric_limits<std::int64_t>::max(), 10);
    EXPECT_THAT(refusal(strip), HasSubstr("the place is sample"));
    strip = stripOf("sound", 0, 10);
    strip.skip = -1;
    EXPECT_THAT(refusal(strip), HasSubstr("the part that is skipped of -1 samples is negative"));
    strip = stripOf("sound", 0, 10);
    strip.settings.speed = 2.0;
    EXPECT_THAT(refusal(strip), HasSubstr("converter"));
}

} // namespace
} // namespace audlmd::test

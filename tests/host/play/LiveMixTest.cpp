#include "host/play/MixedTimeline.hpp"
#include "tests/host/mix/TestTimeline.hpp"
#include "tests/host/play/LiveDeck.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <mutex>
#include <thread>

namespace audlmd::test {
namespace {

constexpr std::size_t mixLength = 150000;

/// Reads wait while the gate is locked.
class GatedSource final : public SampleSource {
public:
    explicit GatedSource(std::mutex& gate) : gate_(gate) {}
    std::int64_t length() const override { return 48000; }
    void read(std::int64_t, std::span<float> samples) override {
        const std::lock_guard passing(gate_);
        std::ranges::fill(samples, 0.25F);
    }
    /// As of a file: one loader thread alone waits.
    const void* exclusiveResource() const override { return this; }

private:
    std::mutex& gate_;
};

/// In real time from 0.3 seconds on, so that the mixer is ready.
std::vector<float> pullSteadily(LiveDeck& deck, std::size_t frames) {
    std::vector<float> heard = deck.pull(std::min<std::size_t>(14400, frames));
    while (heard.size() < frames) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        const std::vector<float> more = deck.pull(std::min<std::size_t>(960, frames - heard.size()));
        heard.insert(heard.end(), more.begin(), more.end());
    }
    return heard;
}

/// Two strips, and one on the gate from sample 100000 to 120000. The second one carries state up to sample
/// 70001, where no block begins.
Timeline gatedTimeline() {
    TimelineStrip carrying = stripOf("sound", 1000, 69001);
    carrying.settings.converter = Converter::filtering;
    carrying.settings.speed = 0.5;
    Timeline timeline =
        timelineOf({stripOf("sound", 0, mixLength), carrying, stripOf("gated", 100000, 20000)});
    timeline.length = mixLength;
    return timeline;
}

/// Plays one level for ever.
class Hum final : public LiveVoice {
public:
    static constexpr float level = 7.0F;
    std::size_t render(std::span<const std::span<float>> channels) override {
        std::ranges::fill(channels.front(), level);
        position_ += static_cast<double>(channels.front().size());
        return channels.front().size();
    }
    bool isAtEnd() const override { return false; }
    double position() const override { return position_; }
    double step() const override { return 1.0; }

private:
    double position_ = 0.0;
};

class LiveMixTest : public testing::Test {
protected:
    /// What a mixer alone plays, but for the fade at the start; with the last sample as the live mix has it.
    void expectSound(const std::vector<float>& heard, const Timeline& timeline) {
        Mixer alone(timeline, openLive_);
        const std::vector<float> expected = mixed(alone, 0, mixLength).front();
        EXPECT_TRUE(std::equal(heard.begin() + LiveDeck::fadeFrames, heard.end(),
                               expected.begin() + LiveDeck::fadeFrames));
    }

    /// Opens media whose last sample is this.
    OpenMedia endingIn(float last) {
        std::vector<float> samples = soundNumber(1, mixLength);
        samples.back() = last;
        return [this, sound = std::make_shared<MemorySource>(samples)](const std::string& name) {
            const std::lock_guard passing(opening_);
            return name == "gated" ? Media{.channels = {std::make_shared<GatedSource>(gate_)}}
                                   : Media{.channels = {sound}};
        };
    }

    std::mutex gate_;
    /// Media open while this is not locked.
    std::mutex opening_;
    OpenMedia open_ = endingIn(0.5F);
    OpenMedia openLive_ = endingIn(-0.5F);
    Timeline timeline_ = gatedTimeline();
    LiveMix live_{timeline_, openLive_, {.threads = 1, .wait = false}};
    LiveDeck deck_{
        MixedTimeline::sources(std::make_shared<MixedTimeline>(timeline_, open_, MixerOptions{.threads = 1})),
        wholeStrip(mixLength), &live_};
};

TEST_F(LiveMixTest, TakesOverWithoutASeam) {
    EXPECT_EQ(live_.placeFrom(60000), 70001);
    EXPECT_EQ(live_.placeFrom(1000), 1000);
    EXPECT_EQ(live_.placeFrom(mixLength), std::nullopt);
    deck_.play(1.0);
    expectSound(pullSteadily(deck_, mixLength), timeline_);
    EXPECT_EQ(live_.lateSamples(), 0U);
    EXPECT_EQ(deck_.content.totals().lateSamples, 0U);
}

TEST_F(LiveMixTest, TakesOverLaterWhereTheMixerIsNotReadyInTime) {
    std::unique_ptr<LiveVoice> voice = live_.play(std::make_unique<Hum>());
    std::vector<float> heard(71000);
    const auto render = [&](std::size_t frames) {
        return voice->render(std::array{std::span(heard).first(frames)});
    };
    // No mixer is wanted in the first quarter of a second.
    for (const std::size_t frames : {11999U, 71000U})
        EXPECT_EQ(render(frames), frames);
    voice = live_.play(std::make_unique<Hum>());
    std::unique_lock closed(opening_);
    // To the first place and on.
    for (const std::size_t frames : {12000U, 58000U, 1U, 100U})
        EXPECT_EQ(render(frames), frames);
    closed.unlock();
    float last = 0.0F;
    while (!voice->isAtEnd()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        // The block that reaches the place is shorter.
        last = heard[render(900) - 1];
    }
    EXPECT_EQ(last, -0.5F);
}

TEST_F(LiveMixTest, NeverWaitsForAMixerThatNobodyTook) {
    std::unique_lock closed(gate_);
    std::vector<float> heard(58000);
    for (const bool isSecond : {false, true}) {
        const std::unique_ptr<LiveVoice> voice = live_.play(std::make_unique<Hum>());
        const auto playing = std::async(std::launch::async, [&] {
            voice->render(std::array{std::span(heard).first(12000)});
            voice->render(std::array{std::span(heard).first(1)});
            // The mixer is made, and waits for the gate.
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            for (int i = 0; isSecond && i < 3; ++i)
                voice->render(std::array{std::span(heard)});
        });
        EXPECT_EQ(playing.wait_for(std::chrono::seconds(5)), std::future_status::ready);
        if (isSecond)
            closed.unlock();
    }
}

TEST_F(LiveMixTest, SilencesTheLateStripAloneAndNamesTheStrip) {
    std::unique_lock closed(gate_);
    deck_.play(1.0);
    const std::vector<float> heard = pullSteadily(deck_, mixLength);
    closed.unlock();
    timeline_.tracks[0].strips.pop_back();
    expectSound(heard, timeline_);
    EXPECT_EQ(live_.lateSamples(), 20000U);
    const std::vector<StripReport> report = live_.report();
    const auto late = std::ranges::find(report, 20000U, &StripReport::underrunSamples);
    ASSERT_NE(late, report.end());
    EXPECT_EQ(late->strip, 2U);
    EXPECT_EQ(late->silent, (std::vector{TimelineSpan{.from = 100000, .to = 120000}}));
}

} // namespace
} // namespace audlmd::test

#include "host/play/LivePlayer.hpp"

#include "tests/host/mix/TestTimeline.hpp"
#include "tests/host/play/LiveDeck.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <limits>
#include <random>
#include <thread>

namespace audlmd::test {
namespace {

using namespace std::chrono_literals;

/// Asks for frames as a sound card does, in time.
class Device {
public:
    explicit Device(LivePlayer& player) : player_(player) {}

private:
    static constexpr int frames = 240;

    void run(const std::stop_token& stop) {
        std::vector<float> buffer(frames * player_.channels());
        for (auto next = std::chrono::steady_clock::now(); !stop.stop_requested(); next += 5ms) {
            std::this_thread::sleep_until(next);
            player_.fill(buffer);
        }
    }

    LivePlayer& player_;
    std::jthread thread_{[this](const std::stop_token& stop) { run(stop); }};
};

bool within(std::chrono::milliseconds time, const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
        if (condition())
            return true;
        std::this_thread::sleep_for(2ms);
    }
    return false;
}

/// As from a disk that is asleep: every read takes 50 ms.
class SlowSource final : public SampleSource {
public:
    std::int64_t length() const override { return 40 * 48000; }
    void read(std::int64_t first, std::span<float> samples) override {
        std::this_thread::sleep_for(50ms);
        std::ranges::fill(samples, 0.5F);
        if (first == 0 || first + std::ssize(samples) == length())
            hasReadAnEnd = true;
    }

    std::atomic<bool> hasReadAnEnd{false};
};

Media steadyMedia(std::size_t length) {
    return {.channels = {std::make_shared<MemorySource>(std::vector<float>(length, 0.5F))}};
}

/// In place of an inlined render function.
void fail(Aud::Render::IteratorCreationParams&, Unclipped&, unsigned int) {
    throw std::runtime_error("no sound today");
}

/// Under a sanitizer the device may starve, so the tests ask for nothing that depends on that.
constexpr LiveOptions options{.latency = 0.1};

TEST(LivePlayer, FollowsTheTransport) {
    LivePlayer player(steadyMedia(96000), {}, options);
    player.seek(20000);
    EXPECT_EQ(player.position(), 20000);
    player.jog(-500);
    player.jog(-500);
    {
        const Device device(player);
        EXPECT_TRUE(within(5s, [&] { return player.position() == 19000; })) << player.position();
        EXPECT_FALSE(player.isPlaying());
        player.play();
        EXPECT_TRUE(within(5s, [&] { return player.position() > 22000; }));
        player.setSpeed(-2.0);
        EXPECT_TRUE(within(5s, [&] { return !player.isPlaying(); }));
        EXPECT_EQ(player.position(), 0);
        // At its end the sound is played again, from the other end.
        player.play();
        EXPECT_TRUE(within(5s, [&] { return player.position() > 50000; }));
        player.setLoop(RangeSpan{.from = 40000, .to = 48000});
        EXPECT_TRUE(within(5s, [&] { return player.position() < 41000; }));
        EXPECT_TRUE(within(5s, [&] { return player.position() > 47000; }));
        EXPECT_GT(player.takePeak(0), 0.49F);
        player.stop();
        EXPECT_FALSE(player.isPlaying());
    }
    EXPECT_EQ(player.underruns().lateSamples, 0U);
}

TEST(LivePlayer, RefusesWhatCannotBePlayed) {
    EXPECT_THROW(LivePlayer(Media{}, {}), std::invalid_argument);
    for (const LiveOptions& wrong :
         {LiveOptions{.latency = 0.001}, {.latency = 2.1}, {.fade = 0.0009}, {.fade = 0.11}})
        EXPECT_THROW(LivePlayer(steadyMedia(100), {}, wrong), std::invalid_argument);
    EXPECT_THROW(LivePlayer(Timeline{}, TestMedia().opener()), std::invalid_argument);
    LivePlayer player(steadyMedia(9600), {});
    EXPECT_THROW(player.setLoop(RangeSpan{5000, 9601}), std::invalid_argument);
    for (const double speed : {0.0, 2e6, -1e-7, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THAT([&] { player.setSpeed(speed); }, testing::ThrowsMessage<std::invalid_argument>(
                                                         testing::HasSubstr("with a minus sign, not at")));
    EXPECT_EQ(player.speed(), 1.0);
}

TEST(LivePlayer, PlaysFromASlowDiskAndCountsWhatIsLate) {
    for (const double direction : {1.0, -1.0}) {
        const auto slow = std::make_shared<SlowSource>();
        LivePlayer player({.channels = {slow, slow}}, {}, options);
        const Device device(player);
        player.seek(player.length() / 2);
        player.setSpeed(direction);
        player.play();
        ASSERT_TRUE(within(1s, [&] { return player.takePeak(0) == 0.5F; }));
        std::this_thread::sleep_for(1s);
        EXPECT_EQ(player.underruns().lateSamples, 0U);
        // What a loop jumps to is loaded before.
        const RangeSample half = player.length() / 2;
        player.setLoop(direction > 0.0 ? RangeSpan{.from = 0, .to = half + 144000}
                                       : RangeSpan{.from = half - 144000, .to = player.length()});
        EXPECT_TRUE(within(1s, [&] { return slow->hasReadAnEnd.load(); }));
        EXPECT_LT(std::abs(player.position() - half), 144000);
        player.setLoop(std::nullopt);
        player.setSpeed(8.0 * direction);
        EXPECT_TRUE(within(5s, [&] { return player.underruns().lateSamples > 10000; }));
        player.setSpeed(direction);
        std::uint64_t late = 0;
        EXPECT_TRUE(within(5s, [&] {
            late = player.underruns().lateSamples;
            std::this_thread::sleep_for(700ms);
            return player.underruns().lateSamples == late;
        }));
        const SoundReport report = player.report().sound;
        EXPECT_EQ(report.lateSamples, late);
        EXPECT_GE(report.lateEpisodes, 1U);
        ASSERT_FALSE(report.late.empty());
        const RangeSpan first = report.late.front();
        EXPECT_TRUE(direction > 0.0 ? first.from > player.length() / 2 : first.to < player.length() / 2);
    }
}

/// As from a network disk that is gone: reads of the first half do not return until told.
class BlockedSource final : public SampleSource {
public:
    std::int64_t length() const override { return 480000; }
    void read(std::int64_t first, std::span<float> samples) override {
        ++reads;
        hasBegun = true;
        hasBegun.notify_all();
        if (first < length() / 2)
            mayEnd.wait(false);
        std::ranges::fill(samples, 0.5F);
    }

    std::atomic<int> reads{0};
    std::atomic<bool> hasBegun{false};
    std::atomic<bool> mayEnd{false};
};

TEST(LivePlayer, CallsOffAStartThatWaitsForADisk) {
    Timeline timeline = timelineOf({stripOf("blocked", 0, 480000)});
    timeline.length = 480000;
    for (const bool mixes : {false, true}) {
        const auto blocked = std::make_shared<BlockedSource>();
        const Media media{.channels = {blocked}};
        const LiveOptions waiting{.latency = 0.1, .cache = {.segmentLength = 240000, .loaderThreads = 2}};
        std::optional<LivePlayer> player;
        if (mixes)
            player.emplace(
                timeline, [&](const std::string&) { return media; }, waiting);
        else
            player.emplace(media, StripSettings{}, waiting);
        player->play();
        blocked->hasBegun.wait(false);
        if (!mixes) {
            const Device device(*player);
            player->seek(300000);
            EXPECT_TRUE(within(5s, [&] { return player->takePeak(0) == 0.5F; }));
        }
        // All of these come back while the read has not.
        player->seek(1000);
        EXPECT_EQ(player->position(), 1000);
        player->stop();
        EXPECT_FALSE(player->isPlaying());
        player->play();
        EXPECT_EQ(player->report().sound.failure, "");
        // The end waits for the reads that have begun, and for no others, of which there are fifteen.
        const auto end = std::async(std::launch::async, [&] { player.reset(); });
        EXPECT_EQ(end.wait_for(50ms), std::future_status::timeout);
        const int begun = blocked->reads;
        blocked->mayEnd = true;
        blocked->mayEnd.notify_all();
        EXPECT_EQ(end.wait_for(5s), std::future_status::ready);
        EXPECT_LE(blocked->reads, begun + 2);
    }
}

TEST(LivePlayer, TellsWhatFailed) {
    const Media broken{.channels = {std::make_shared<BrokenSource>(), std::make_shared<BrokenSource>()}};
    LivePlayer player(broken, {}, options);
    const Device device(player);
    player.play();
    EXPECT_TRUE(within(5s, [&] { return player.position() == 9600; }));
    EXPECT_EQ(player.report().sound.failure, "bad sector");
    // Of both channels.
    EXPECT_EQ(player.underruns().lateSamples, 19200U);
    EXPECT_EQ(player.underruns().lateEpisodes, 2U);

    LiveOptions failing = options;
    failing.inlined = [](unsigned long) noexcept -> UnclippedRenderFunction { return &fail; };
    LivePlayer silent(steadyMedia(9600), {}, failing);
    silent.play();
    EXPECT_TRUE(within(5s, [&] { return silent.report().sound.failure == "no sound today"; }));

    // By then the mixer that does not wait has taken over.
    Timeline timeline = timelineOf({stripOf("broken", 150000, 9600), stripOf("gone", 150000, 9600)}, 2);
    timeline.length = 160000;
    const OpenMedia open = [&, none = TestMedia().opener()](const std::string& name) {
        return name == "broken" ? broken : none(name);
    };
    LivePlayer mix(timeline, open, options);
    const Device second(mix);
    mix.play();
    EXPECT_TRUE(within(15s, [&] { return !mix.isPlaying(); }));
    EXPECT_EQ(mix.report().strips.at(1).failure, "no medium 'gone'");
    EXPECT_EQ(mix.underruns().lateSamples, 19200U);
    EXPECT_EQ(mix.underruns().lateEpisodes, 2U);
}

TEST(LivePlayer, TakesOrdersFromSeveralThreads) {
    LivePlayer player(steadyMedia(480000), {}, options);
    const Device device(player);
    std::vector<std::jthread> users;
    for (unsigned int user = 0; user < 3; ++user)
        users.emplace_back([&player, user] {
            std::mt19937 random(user);
            for (int order = 0; order < 200; ++order) {
                const std::function<void()> orders[] = {
                    [&] { player.play(); },
                    [&] { player.stop(); },
                    [&] { player.seek(static_cast<std::int64_t>(random() % 480000)); },
                    [&] { player.jog(static_cast<std::int64_t>(random() % 4000) - 2000); },
                    [&] { player.setSpeed(random() % 2 == 0 ? 2.0 : -1.0); },
                    [&] { player.setLoop(RangeSpan{.from = 1000, .to = 9000}); },
                    [&] { player.setLevel(0.5F); },
                    [&] { EXPECT_LE(player.takePeak(0), 0.5F); },
                    [&] { EXPECT_EQ(player.report().sound.failure, ""); },
                    [&] { EXPECT_LE(player.position(), player.length()); }};
                orders[random() % std::size(orders)]();
                std::this_thread::sleep_for(1ms);
            }
        });
    users.clear();
    player.setLoop(std::nullopt);
    player.setSpeed(1.0);
    player.seek(100);
    player.play();
    EXPECT_TRUE(within(5s, [&] { return player.position() > 5000; }));
}

} // namespace
} // namespace audlmd::test

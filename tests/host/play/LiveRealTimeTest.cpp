#include "host/play/LivePlayer.hpp"
#include "tests/host/play/LiveDeck.hpp"
#include "tests/interposers/CallWatch.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <random>
#include <thread>

namespace audlmd::test {
namespace {

using Clock = std::chrono::steady_clock;

/// Calls fill() in time until told to stop. Waits by looking at the clock, which is no system call.
void runDevice(LivePlayer& player, const std::atomic<bool>& stops, Calls& calls) {
    std::vector<float> buffer(128 * player.channels());
    for (auto next = Clock::now(); !stops; next += std::chrono::microseconds(2667)) {
        while (Clock::now() < next) {
        }
        const CallWatch watch(calls);
        player.fill(buffer);
    }
}

TEST(LiveRealTime, TheCallbackNeitherAllocatesNorLocksNorCallsTheSystem) {
    LivePlayer player({.channels = {sineSource(440.0, 480000), sineSource(550.0, 480000)}}, {});
    std::atomic<bool> stops{false};
    Calls calls;
    {
        std::jthread device([&] { runDevice(player, stops, calls); });
        std::mt19937 random(1);
        player.play();
        for (int change = 0; change < 150; ++change) {
            const double speeds[] = {1.0, -1.0, 1.1, -2.0, 8.0};
            player.setSpeed(speeds[random() % 5]);
            switch (random() % 4) {
            case 0:
                player.seek(static_cast<std::int64_t>(random() % 480000));
                break;
            case 1:
                player.stop();
                player.jog(3000);
                break;
            default:
                player.play();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        stops = true;
    }
    EXPECT_GT(player.takePeak(0), 0.1F);
    EXPECT_EQ(calls.allocator, 0U);
    EXPECT_EQ(calls.locks, 0U);
    EXPECT_EQ(calls.system, 0U);
}

} // namespace
} // namespace audlmd::test

#include "tests/host/play/LiveDeck.hpp"

#include <gtest/gtest.h>

namespace audlmd::test {
namespace {

TEST(LiveOutput, HearsAChangeWithinTwoFades) {
    std::vector<float> halves(100000, 0.25F);
    std::fill(halves.begin() + 50000, halves.end(), 0.5F);
    LiveDeck deck({std::make_shared<MemorySource>(halves)}, wholeStrip(100000));
    EXPECT_EQ(deck.pull(64).back(), 0.0F);
    deck.play(1.0);
    EXPECT_EQ(deck.pull(1000).back(), 0.25F);
    // Rendering is not further ahead than the latency.
    EXPECT_LE(deck.ring.pushed() - deck.ring.popped(), LiveDeck::sizes.blocksAhead);
    deck.seek(60000);
    EXPECT_EQ(deck.output.position(), 60000.0);
    const std::vector<float> heard = deck.pull(2 * LiveDeck::fadeFrames + 1);
    EXPECT_EQ(*std::ranges::max_element(heard), 0.5F);
    EXPECT_EQ(heard[LiveDeck::fadeFrames], 0.0F);
    EXPECT_EQ(deck.output.position(), 60000.0 + LiveDeck::fadeFrames + 1);
    deck.stop();
    EXPECT_EQ(deck.pull(LiveDeck::fadeFrames + 1).back(), 0.0F);
    EXPECT_EQ(deck.output.position(), 60000.0 + 2 * LiveDeck::fadeFrames + 1);
    EXPECT_EQ(deck.output.starvedFrames(), 0U);
}

TEST(LiveOutput, CountsWhatTheDeviceDidNotGetAndGoesOnWithTheNextSample) {
    LiveDeck deck({sineSource(440.0, 30000), sineSource(550.0, 30000)}, wholeStrip(30000));
    deck.play(1.0);
    deck.pull(64);
    const double inRing = 8 * 50 - 64;
    deck.pull(1000, false);
    EXPECT_EQ(deck.output.starvedFrames(), 1000U - static_cast<std::uint64_t>(inRing));
    EXPECT_EQ(deck.output.starvedEpisodes(), 1U);
    EXPECT_EQ(deck.output.position(), 400.0);
    deck.pull(64);
    deck.pull(2000, false);
    EXPECT_EQ(deck.output.starvedEpisodes(), 2U);
    EXPECT_EQ(deck.output.position(), 800.0);
    deck.stop();
    deck.pull(2000, false);
    EXPECT_EQ(deck.output.starvedEpisodes(), 2U);
    EXPECT_GT(deck.output.takePeak(1), 0.1F);
    deck.pull(64);
    deck.output.takePeak(1);
    deck.pull(64);
    EXPECT_EQ(deck.output.takePeak(1), 0.0F);
}

} // namespace
} // namespace audlmd::test

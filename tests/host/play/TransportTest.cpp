#include "host/play/Transport.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <stdexcept>
#include <vector>

namespace audlmd::test {
namespace {

constexpr std::int64_t playedLength = 1000;
constexpr std::int64_t farthest = std::numeric_limits<std::int64_t>::max();

/// One order, where the device is by then, and what becomes of it.
struct Step {
    std::function<void(Transport&, const Transport::Heard&)> order;
    Transport::Heard heard;
    bool isNew = true;
    bool plays = true;
    double speed = 1.0;
    std::optional<std::int64_t> startAt = std::nullopt;
    std::optional<std::int64_t> stopAt = std::nullopt;
};

auto play = [](Transport& t, const Transport::Heard& heard) { t.play(heard); };
auto stop = [](Transport& t, const Transport::Heard&) { t.stop(); };
auto speed(double speed) {
    return [speed](Transport& t, const Transport::Heard&) { t.setSpeed(speed); };
}
auto seek(std::int64_t position) {
    return [position](Transport& t, const Transport::Heard& heard) { t.seek(position, heard); };
}
auto jog(std::int64_t samples) {
    return [samples](Transport& t, const Transport::Heard& heard) { t.jog(samples, heard); };
}

const std::vector<std::vector<Step>> sessions{
    // Playing twice is playing once; at the end of the sound it is played again, from the other end.
    {{play, {0}},
     {play, {100}, false},
     {play, {1000, true}, true, true, 1.0, 0},
     {speed(-2.0), {300}, true, true, -2.0},
     {speed(-2.0), {300}, false, true, -2.0},
     {play, {0, true}, true, true, -2.0, 1000}},
    // A speed is kept for later where nothing plays.
    {{speed(0.5), {0}, false, false}, {play, {0}, true, true, 0.5}, {stop, {10}, true, false, 0.5}},
    // A jump plays on only where something played, within the sound.
    {{seek(500), {0}, true, false, 1.0, 500},
     {play, {500}},
     {seek(-7), {600}, true, true, 1.0, 0},
     {seek(farthest), {600}, true, true, 1.0, 1000},
     {seek(20), {1000, true}, true, false, 1.0, 20}},
    // A jog plays the samples that it moves over. Another one starts where it would have ended.
    {{jog(40), {100}, true, true, 1.0, 100, 140},
     {jog(-60), {110}, true, true, -1.0, 140, 80},
     {jog(-farthest - 1), {80, true}, true, true, -1.0, 80, 0},
     {jog(farthest), {0, true}, true, true, 1.0, 0, 1000},
     {speed(2.0), {30}, false, true, 1.0, 0, 1000},
     {play, {30}, true, true, 2.0}},
    // While playing, a jog is a jump.
    {{play, {0}},
     {jog(-farthest), {500}, true, true, 1.0, 0},
     {jog(farthest), {500}, true, true, 1.0, 1000}}};

TEST(Transport, MakesTheNextOrderOfWhatIsAskedForAndHeard) {
    for (std::size_t session = 0; session < sessions.size(); ++session) {
        Transport transport(playedLength, 50);
        for (std::size_t number = 0; number < sessions[session].size(); ++number) {
            SCOPED_TRACE(testing::Message() << "session " << session << ", step " << number);
            const Step& step = sessions[session][number];
            const std::uint64_t before = transport.order().generation;
            step.order(transport, step.heard);
            const LiveOrder& order = transport.order();
            EXPECT_EQ(order.generation, before + (step.isNew ? 1 : 0));
            EXPECT_EQ(order.plays, step.plays);
            EXPECT_EQ(order.speed, step.speed);
            if (step.isNew) {
                EXPECT_EQ(order.startAt, step.startAt);
            }
            EXPECT_EQ(order.stopAt, step.stopAt);
            EXPECT_EQ(transport.isPlaying({.position = 1}), step.plays && !step.stopAt);
            EXPECT_FALSE(transport.isPlaying({.position = 1, .hasEnded = true}));
        }
    }
}

TEST(Transport, LoopsInsideTheSoundAndNotTooFast) {
    Transport transport(playedLength, 50);
    for (const RangeSpan range : {RangeSpan{-1, 500},
                                  {0, 1001},
                                  {500, 549},
                                  {500, 100},
                                  {farthest, -farthest},
                                  {-farthest - 1, farthest},
                                  {500, -farthest - 1}})
        EXPECT_THROW(transport.setLoop(range), std::invalid_argument) << range.from;
    transport.setLoop(RangeSpan{500, 550});
    EXPECT_EQ(transport.order().loop, (RangeSpan{500, 550}));
    EXPECT_EQ(transport.order().generation, 0U) << "what is heard goes on";
}

} // namespace
} // namespace audlmd::test

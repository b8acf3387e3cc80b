#include "standalone/signal/Automation.hpp"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <vector>

namespace audlmd {
namespace {

using Aud::DynamicLevelControl::DynamicLevelApplyingIteratorBase;
using Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState;
using Aud::DynamicLevelControl::LevelNode;

/// Steps as the renderer does.
void step(DynamicLevelApplyingIteratorState& state, WalkDirection direction) {
    if (state.stationary != 0)
        return;
    ASSERT_NE(state.samplesToNextNode, 0u);
    --state.samplesToNextNode;
    state.uValue += state.uValueStep;
    if (state.samplesToNextNode != 0)
        return;
    DynamicLevelApplyingIteratorBase base(state);
    if (direction == WalkDirection::forwards)
        base.moveToNextNodeForwards();
    else
        base.moveToNextNodeReverse();
}

std::vector<float> walk(const Automation& automation, std::int64_t from, std::int64_t count,
                        WalkDirection direction) {
    DynamicLevelApplyingIteratorState state;
    automation.place(state, from, direction);
    std::vector<float> levels;
    for (; count > 0; --count) {
        levels.push_back(state.uValue);
        step(state, direction);
    }
    return levels;
}

/// Straight lines, the last of coinciding nodes counting at their position.
double interpolated(const std::vector<LevelNode>& nodes, std::int64_t position) {
    if (position < nodes.front().position)
        return static_cast<double>(nodes.front().uValue);
    std::size_t before = 0;
    while (before + 1 < nodes.size() && nodes[before + 1].position <= position)
        ++before;
    const auto u = static_cast<double>(nodes[before].uValue);
    if (before + 1 == nodes.size())
        return u;
    const LevelNode& next = nodes[before + 1];
    return u + (static_cast<double>(next.uValue) - u) *
                   static_cast<double>(position - nodes[before].position) /
                   static_cast<double>(next.position - nodes[before].position);
}

/// Slopes up and down, jumps at both ends and inside, a level stretch, a flat end.
const std::vector<LevelNode> nodes{{-20, 0.25F}, {-20, 0.5F},  {37, 1.0F},  {37, 0.3F},
                                   {137, 0.3F},  {138, 1.5F},  {900, 0.0F}, {5000, 1.2F},
                                   {5001, 1.1F}, {5200, 1.1F}, {5300, 1.1F}};

TEST(Automation, IsLinearInUValueWhicheverWayItIsWalked) {
    const Automation automation(nodes);
    constexpr std::int64_t first = -100;
    constexpr std::int64_t count = 5600;
    const auto forwards = walk(automation, first, count, WalkDirection::forwards);
    auto backwards = walk(automation, first + count - 1, count, WalkDirection::backwards);
    std::reverse(backwards.begin(), backwards.end());
    EXPECT_EQ(forwards, backwards);
    for (std::int64_t i = 0; i < count; ++i) {
        const float level = forwards[static_cast<std::size_t>(i)];
        ASSERT_NEAR(level, interpolated(nodes, first + i), 2.1e-6) << first + i;
        ASSERT_EQ(level, automation.uValueAt(first + i)) << first + i;
    }
}

TEST(Automation, IsStationaryOnlyWhereTheLevelNoLongerMoves) {
    const Automation automation(nodes);
    const auto stationaryAt = [&](std::int64_t position, WalkDirection direction) {
        DynamicLevelApplyingIteratorState state;
        automation.place(state, position, direction);
        EXPECT_TRUE(state.stationary != 0 || state.samplesToNextNode != 0);
        return state.stationary != 0;
    };
    EXPECT_FALSE(stationaryAt(50, WalkDirection::forwards)) << "level, but only up to a node";
    EXPECT_FALSE(stationaryAt(100, WalkDirection::backwards));
    EXPECT_TRUE(stationaryAt(5001, WalkDirection::forwards)) << "the nodes to come do not change it";
    EXPECT_TRUE(stationaryAt(9999, WalkDirection::forwards));
    EXPECT_FALSE(stationaryAt(9999, WalkDirection::backwards));
    EXPECT_FALSE(stationaryAt(-500, WalkDirection::forwards));
    EXPECT_FALSE(stationaryAt(-20, WalkDirection::backwards)) << "the first node's level is still to come";
    EXPECT_TRUE(stationaryAt(-21, WalkDirection::backwards));
    const Automation one({{7, 0.5F}});
    EXPECT_EQ(walk(one, -3, 20, WalkDirection::forwards), std::vector<float>(20, 0.5F));
}

TEST(Automation, CrossesGapsLongerThanTheRendererCounts) {
    constexpr std::int64_t gap = 10'000'000'000;
    const Automation level({{0, 0.5F}, {gap, 0.5F}, {gap + 10, 1.0F}});
    DynamicLevelApplyingIteratorState state;
    std::int64_t walked = 0;
    for (level.place(state, 0, WalkDirection::forwards); state.uValueStep == 0.0F;) {
        ASSERT_EQ(state.stationary, 0);
        walked += state.samplesToNextNode;
        state.samplesToNextNode = 1;
        step(state, WalkDirection::forwards);
    }
    EXPECT_EQ(walked, gap);

    const Automation slope({{0, 0.0F}, {gap, 1.0F}});
    EXPECT_NEAR(slope.uValueAt(gap / 4), 0.25, 2e-6);
    EXPECT_NEAR(slope.uValueAt(gap - 1), 1.0, 2e-6);
    constexpr std::int64_t end = std::numeric_limits<std::int64_t>::max();
    const Automation wide({{-end, 0.0F}, {end, 1.0F}});
    EXPECT_NEAR(wide.uValueAt(0), 0.5, 2e-6);
    EXPECT_NEAR(walk(wide, 0, 1000, WalkDirection::backwards).back(), 0.5, 2e-6);
}

TEST(Automation, RefusesListsThatAreNone) {
    EXPECT_THROW(Automation({}), std::invalid_argument);
    EXPECT_THROW(Automation({{5, 1.0F}, {4, 1.0F}}), std::invalid_argument);
    EXPECT_THROW(Automation({{5, std::numeric_limits<float>::quiet_NaN()}}), std::invalid_argument);
}

} // namespace
} // namespace audlmd

#include "host/signal/Automation.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

namespace audlmd::test {
namespace {

using Aud::DynamicLevelControl::DynamicLevelApplyingIteratorBase;
using Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState;

/// Steps as the renderer does.
void step(DynamicLevelApplyingIteratorState& state, DynamicLevelDirection direction) {
    if (state.stationary != 0)
        return;
    ASSERT_NE(state.samplesToNextNode, 0U);
    --state.samplesToNextNode;
    state.uValue += state.uValueStep;
    if (state.samplesToNextNode != 0)
        return;
    DynamicLevelApplyingIteratorBase base(state);
    direction == DynamicLevelDirection::forwards ? base.moveToNextNodeForwards()
                                                 : base.moveToNextNodeReverse();
}

std::vector<float> walk(const Automation& automation, std::int64_t from, std::int64_t count,
                        DynamicLevelDirection direction) {
    DynamicLevelApplyingIteratorState state;
    automation.place(state, from, direction);
    std::vector<float> levels;
    for (; count > 0; --count) {
        levels.push_back(state.uValue);
        step(state, direction);
    }
    return levels;
}

/// Slopes up and down, jumps at both ends and inside, a level stretch, a flat end. That the lines between
/// the nodes are straight is compared with the model, which plays random timelines with automation.
const std::vector<LevelNode> nodes{{-20, 0.25F}, {-20, 0.5F},  {37, 1.0F},  {37, 0.3F},
                                   {137, 0.3F},  {138, 1.5F},  {900, 0.0F}, {5000, 1.2F},
                                   {5001, 1.1F}, {5200, 1.1F}, {5300, 1.1F}};

TEST(Automation, IsTheSameWhicheverWayItIsWalked) {
    const Automation automation(nodes);
    constexpr std::int64_t first = -100;
    constexpr std::int64_t count = 5600;
    const auto forwards = walk(automation, first, count, DynamicLevelDirection::forwards);
    auto backwards = walk(automation, first + count - 1, count, DynamicLevelDirection::reverse);
    std::reverse(backwards.begin(), backwards.end());
    EXPECT_EQ(forwards, backwards);
    for (std::int64_t i = 0; i < count; ++i)
        ASSERT_EQ(forwards[static_cast<std::size_t>(i)], automation.uValueAt(first + i)) << first + i;
}

TEST(Automation, RefusesNodesWithoutALevelOrOutOfOrder) {
    for (const std::vector<LevelNode>& refused : {std::vector<LevelNode>{},
                                                  {{0, 1.0F}, {1, std::numeric_limits<float>::infinity()}},
                                                  {{1, 1.0F}, {0, 1.0F}}})
        EXPECT_THROW(Automation{refused}, std::invalid_argument);
    // Levels beyond the travel of the fader stay on its ends.
    EXPECT_EQ(Automation({{0, -1.0F}}).uValueAt(0), 0.0F);
    EXPECT_EQ(Automation({{0, 2.0F}}).uValueAt(0), 1.5F);
}

TEST(Automation, CrossesGapsLongerThanTheRendererCounts) {
    constexpr std::int64_t gap = 10'000'000'000;
    const Automation level({{0, 0.5F}, {gap, 0.5F}, {gap + 10, 1.0F}});
    DynamicLevelApplyingIteratorState state;
    std::int64_t walked = 0;
    for (level.place(state, 0, DynamicLevelDirection::forwards); state.uValueStep == 0.0F;) {
        ASSERT_EQ(state.stationary, 0);
        walked += state.samplesToNextNode;
        state.samplesToNextNode = 1;
        step(state, DynamicLevelDirection::forwards);
    }
    EXPECT_EQ(walked, gap);

    constexpr std::int64_t end = std::numeric_limits<std::int64_t>::max();
    const Automation wide({{-end, 0.0F}, {end, 1.0F}});
    EXPECT_NEAR(wide.uValueAt(0), 0.5, 2e-6);
    EXPECT_NEAR(walk(wide, 0, 1000, DynamicLevelDirection::reverse).back(), 0.5, 2e-6);
}

} // namespace
} // namespace audlmd::test

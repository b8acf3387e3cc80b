#include "host/timeline/DecibelLine.hpp"

#include "host/signal/GainLaws.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace audlmd::test {
namespace {

using namespace timeline;

TEST(DecibelLine, IsStraightInDecibelsToATenth) {
    const std::array<DecibelKey, 7> keys{{{-480, 10.0},
                                          {48'000, -99.0},
                                          {48'010, 0.0},
                                          {96'000, -30.0},
                                          {96'001, -6.0},
                                          {200'000, -200.0},
                                          {300'000, -200.0}}};
    const Automation automation(nodesAlong(keys));
    EXPECT_LT(automation.nodes().size(), 120U);
    for (std::size_t i = 1; i < keys.size() - 1; ++i)
        for (int step = 0; step < 1000; ++step) {
            const std::int64_t span = keys[i].position - keys[i - 1].position;
            const std::int64_t offset = span * step / 1000;
            const double to = std::max(keys[i].decibels, silentDecibels);
            const double line = keys[i - 1].decibels + (to - keys[i - 1].decibels) *
                                                           static_cast<double>(offset) /
                                                           static_cast<double>(span);
            const double u = static_cast<double>(automation.uValueAt(keys[i - 1].position + offset));
            ASSERT_NEAR(decibelsOfGain(mixerStyleGain(u)), line, 0.1) << i << " " << step;
        }
    EXPECT_EQ(automation.uValueAt(200'000), 0.0F);
    EXPECT_EQ(automation.uValueAt(250'000), 0.0F);
}

} // namespace
} // namespace audlmd::test

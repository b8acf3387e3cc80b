#include "tests/host/play/LiveDeck.hpp"

#include <gtest/gtest.h>

namespace audlmd::test {
namespace {

TEST(LiveContent, LeavesFadesAndAutomationWhereTheyAreOnTheMaterial) {
    StripSettings strip = wholeStrip(1000);
    strip.fade = {.fadeInSamples = 10, .fadeOutSamples = 20, .fadeInCurve = FadeCurve::log};
    strip.automation = AutomationWalk{.automation = Automation({{0, 0.9F}, {700, 1.1F}})};
    const StripSettings backwards = settingsAt(strip, -8.0);
    EXPECT_TRUE(backwards.reverse);
    EXPECT_EQ(backwards.fade.fadeInSamples, 20U);
    EXPECT_EQ(backwards.fade.fadeOutSamples, 10U);
    EXPECT_EQ(backwards.fade.fadeOutCurve, FadeCurve::log);
    EXPECT_EQ(backwards.automation->direction, DynamicLevelDirection::reverse);
    for (const double speed : {0.0, -0.0, 2e6, std::nan("")})
        EXPECT_THROW(settingsAt(strip, speed), std::invalid_argument) << speed;
}

} // namespace
} // namespace audlmd::test

#include "tests/host/play/LiveDeck.hpp"

#include <gtest/gtest.h>

namespace audlmd::test {
namespace {

/// In place of an inlined render function.
void deliverTwos(Aud::Render::IteratorCreationParams&, Unclipped& out, unsigned int count) {
    out.position = std::fill_n(out.position, count, 2.0F);
}

TEST(LiveContent, ClipsAsTheLibraryDoesWhatInlinedFunctionsDeliver) {
    constexpr auto inlined = [](unsigned long) noexcept -> UnclippedRenderFunction { return &deliverTwos; };
    const auto source = std::make_shared<MemorySource>(std::vector<float>(9, 0x1p21F));
    std::vector<float> heard(9);
    std::vector<float> expected(9);
    LiveContent content({source}, wholeStrip(9), {}, inlined);
    content.start(0.0, 1.0)->render(std::array{std::span(heard)});
    LiveContent library({source}, wholeStrip(9), {});
    library.awaitLoaded(0.0, 1.0, 9, [] { return true; });
    library.start(0.0, 1.0)->render(std::array{std::span(expected)});
    EXPECT_EQ(heard, expected);
    EXPECT_NEAR(heard.front(), 0x1p20F, 1.0F);
}

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
    EXPECT_EQ(settingsAt(backwards, -1.0).automation->direction, DynamicLevelDirection::forwards);
    EXPECT_EQ(settingsAt(strip, -1.0).converter, Converter::none);
    EXPECT_EQ(settingsAt(strip, 6.0).converter, Converter::filtering);
    EXPECT_EQ(settingsAt(strip, 6.5).converter, Converter::linear);
    strip.converter = Converter::linear;
    strip.speed = 2.0;
    EXPECT_EQ(settingsAt(strip, 0.5).converter, Converter::linear);
    EXPECT_EQ(settingsAt(strip, 5e5).speed, 1e6);
    EXPECT_THROW(settingsAt(strip, 6e5), std::invalid_argument);
    for (const double speed : {0.0, -0.0, 2e6, std::nan("")})
        EXPECT_THROW(settingsAt(strip, speed), std::invalid_argument) << speed;
}

} // namespace
} // namespace audlmd::test

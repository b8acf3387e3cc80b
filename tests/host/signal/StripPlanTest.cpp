#include "host/signal/StripPlan.hpp"

#include "host/signal/Speed.hpp"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>

namespace audlmd::test {
namespace {

using Change = std::function<void(StripSettings&)>;

StripSettings settingsOf(std::int64_t length, const Change& change) {
    StripSettings settings;
    settings.from = 100;
    settings.to = 100 + length;
    change(settings);
    return settings;
}

Change speed(Converter converter, double speed) {
    return [=](StripSettings& s) { s.converter = converter, s.speed = speed; };
}

const AutomationWalk walkOfOne{Automation({{0, 1.0F}}), DynamicLevelDirection::forwards};

TEST(StripPlan, FollowsFromTheSettings) {
    struct {
        std::int64_t length;
        Change change;
        unsigned long code, fullLevelCode;
        double speedInForce;
        std::uint64_t outputLength;
    } const table[] = {
        {7, [](auto&) {}, 1024, 1024, 1.0, 7},
        {7, [](auto& s) { s.reverse = true, s.outerLevel = 0.5F; }, 512, 512, 1.0, 7},
        {7, [](auto& s) { s.automation = walkOfOne, s.equaliser.resize(5); }, 1409, 1409, 1.0, 7},
        {7,
         [](auto& s) {
             s.fade = {1, 2}, s.middleLevel = 1.0F;
         },
         1046, 1026, 1.0, 7},
        {7,
         [](auto& s) {
             s.fade = {7, 0, FadeCurve::log};
         },
         1028, 1024, 1.0, 7},
        {7, speed(Converter::linear, 2.0), 1056, 1056, 2.0, 4},
        // Either speed is rounded down, so that the rounded speed would make one sample more.
        {1, speed(Converter::linear, 0.1), 1056, 1056, 107374182.0 / 1073741823.0, 10},
        {7, speed(Converter::filtering, 0.7), 1088, 1088, static_cast<double>(0.7F), 10},
        {60, speed(Converter::filtering, 6.0), 1088, 1088, 6.0, 10},
        {2, speed(Converter::filtering, 1.0 / 1024.0), 1088, 1088, 1.0 / 1024.0, 2048},
        {7, speed(Converter::best, 0.6), 1024, 1024, 0.6, 12},
    };
    for (const auto& row : table) {
        const StripPlan plan(settingsOf(row.length, row.change));
        EXPECT_EQ(plan.modeCode, row.code);
        EXPECT_EQ(plan.fullLevelModeCode, row.fullLevelCode) << row.code;
        EXPECT_EQ(plan.speedInForce, row.speedInForce);
        EXPECT_EQ(plan.outputLength, row.outputLength) << row.speedInForce;
        EXPECT_EQ(plan.inMaterial(2), plan.settings.reverse ? 104 : 102);
        EXPECT_EQ(plan.inRange(plan.inMaterial(2)), 2);
    }
}

template <class Left, class Right>
concept Add = requires(Left left, Right right) {
    left + right;
};
template <class Left, class Right>
concept Subtract = requires(Left left, Right right) {
    left - right;
};

TEST(StripPlan, DoesNotMixClocks) {
    static_assert(!std::is_constructible_v<MaterialSample, RangeSample>);
    static_assert(!std::is_constructible_v<std::int64_t, TimelineSample>);
    static_assert(!Add<RangeSample, Distance<OutputRate>> && Add<RangeSample, Distance<SourceRate>>);
    static_assert(!Subtract<OutputSample, TimelineSample> && Subtract<OutputSample, OutputSample>);
    EXPECT_EQ((MaterialSpan{.from = -3, .to = 4}.length()), 7);
    EXPECT_EQ(RangeSample(5) - 7, -2);
}

TEST(StripPlan, RefusesWhatCannotBePlayed) {
    const std::pair<Change, const char*> table[] = {
        {[](auto& s) { s.to = s.from; }, "is empty"},
        {[](auto& s) { s.to = s.from + longestRange + 1; }, "longer than"},
        {[](auto& s) { s.from = -farthestPosition - 1, s.to = s.from + 9; },
         "the start of the range is sample"},
        {[](auto& s) { s.from = std::numeric_limits<std::int64_t>::min(), s.to = s.from + 9; },
         "the start of"},
        {[](auto& s) { s.from = farthestPosition - 8, s.to = s.from + 9; }, "the end of the range is sample"},
        {[](auto& s) {
             s.fade = {6, 5};
         },
         "do not fit"},
        {[](auto& s) { s.middleLevel = std::nanf(""); }, "middle level"},
        {[](auto& s) { s.outerLevel = HUGE_VALF; }, "outer level"},
        {[](auto& s) { s.outerLevel = 1.0F, s.automation = walkOfOne; }, "same place"},
        {[](auto& s) { s.equaliser.resize(6); }, "at most 5 bands"},
        {[](auto& s) { s.equaliser.resize(1), s.sampleRate = 2000.0; }, "half the sample rate"},
        {[](auto& s) { s.equaliser.resize(1), s.sampleRate = 1e300; }, "up to 1e+09 Hz, not 1e+300"},
        {[](auto& s) { s.equaliser.resize(1), s.sampleRate = 0.0; }, "up to 1e+09 Hz, not 0"},
        {[](auto& s) { s.equaliser.resize(1), s.equaliser[0].frequency = 0.0; },
         "Hz, half the sample rate, not 0"},
        {[](auto& s) { s.equaliser.resize(1), s.equaliser[0].q = 1.1e6; }, "from 1e-06 to 1e+06, not"},
        {[](auto& s) { s.equaliser.resize(1), s.equaliser[0].gainDb = -120.5; },
         "-120 to 120 dB, not -120.5"},
        {[](auto& s) { s.equaliser.resize(1), s.equaliser[0].q = 5e-324; }, "from 1e-06 to 1e+06, not"},
        {speed(Converter::none, 2.0), "needs a converter"},
        {speed(Converter::linear, 0.0), "the speed must be"},
        {speed(Converter::filtering, 6.0001),
         "from 0.000976562 to 6 (the setting AudioPlaybackSpeedLimit), not at"},
        {speed(Converter::filtering, 1e-6), "choose the linear converter"},
        {speed(Converter::best, 0.009),
         "plays at speeds from 0.01 to 100, not at 0.009: choose the filtering"},
        {speed(Converter::best, 1.1000000001), "needs a ratio of whole numbers up to 8388608"},
        {[](auto& s) { s.from = farthestPosition - 10, s.to = s.from + 9, speed(Converter::best, 0.5)(s); },
         "too far away"},
    };
    for (const auto& row : table)
        EXPECT_THAT([&] { StripPlan(settingsOf(10, row.first)); },
                    testing::ThrowsMessage<std::invalid_argument>(testing::HasSubstr(row.second)));
    // The last that can.
    for (const Change& change :
         {Change([](auto& s) { s.from = -farthestPosition, s.to = s.from + 10; }),
          Change([](auto& s) { s.from = farthestPosition - 10, s.to = s.from + 10; }), Change([](auto& s) {
              s.fade = {6, 4};
          }),
          Change([](auto& s) { s.equaliser.resize(5), s.sampleRate = 1e9; }), Change([](auto& s) {
              s.equaliser = {{BandKind::peak, 1e3, -120.0, 1e-6}};
          }),
          Change([](auto& s) {
              s.equaliser = {{BandKind::peak, 1e3, 120.0, 1e6}};
          }),
          speed(Converter::linear, slowestSpeed), speed(Converter::linear, fastestSpeed),
          speed(Converter::filtering, 1.0 / 1024.0), speed(Converter::filtering, 6.0),
          speed(Converter::best, 0.01), speed(Converter::best, 100.0)})
        EXPECT_NO_THROW(StripPlan(settingsOf(10, change)));
}

} // namespace
} // namespace audlmd::test

#pragma once

#include "host/signal/StripPlan.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace audlmd::test {

inline std::vector<float> noise(std::size_t length) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> sample(-0.2F, 0.2F);
    std::vector<float> samples(length);
    std::generate(samples.begin(), samples.end(), [&] { return sample(random); });
    return samples;
}

inline constexpr DynamicLevelDirection directions[] = {DynamicLevelDirection::forwards,
                                                       DynamicLevelDirection::reverse};
inline const Automation automation({{0, 0.9F}, {700, 1.1F}, {700, 0.4F}, {1500, 0.4F}, {2800, 1.0F}});

/// One of six shapes, with lengths and curves drawn anew.
inline FadePlan drawFades(int shape, std::uint64_t length, std::mt19937& random) {
    const auto upTo = [&](std::uint64_t most) {
        return std::uniform_int_distribution<std::uint64_t>(1, most)(random);
    };
    const auto curve = [&] { return static_cast<FadeCurve>(upTo(3)); };
    const FadePlan both{upTo(length / 2), upTo(length / 2), curve(), curve()};
    const FadePlan fades[] = {{},
                              {both.fadeInSamples, 0, both.fadeInCurve},
                              {0, both.fadeOutSamples, {}, both.fadeOutCurve},
                              both,
                              {.fadeInSamples = length, .fadeInCurve = FadeCurve::log},
                              {.fadeOutSamples = length, .fadeOutCurve = FadeCurve::power}};
    return fades[shape];
}

/// Every combination of stages, with numbers drawn anew for each.
template <class Use>
void forEveryCombination(const StripSettings& plain, Use use) {
    constexpr unsigned int seed = 7;
    std::mt19937 random(seed);
    const auto length = static_cast<std::uint64_t>(plain.to - plain.from);
    const auto uValue = [&] { return std::uniform_real_distribution<float>(0.3F, 1.1F)(random); };
    for (const Converter converter : {Converter::none, Converter::linear, Converter::filtering})
        for (int stages = 0; stages < 2 * 6 * 4 * 2 * 2; ++stages) {
            StripSettings settings = plain;
            settings.converter = converter;
            if (converter != Converter::none)
                settings.speed = std::exp(std::uniform_real_distribution<double>(-1.5, 1.8)(random));
            // Some speeds are whole, where the linear converter starts elsewhere.
            if (stages % 5 == 0)
                settings.speed = std::ceil(settings.speed);
            settings.reverse = stages % 2 != 0;
            settings.fade = drawFades(stages / 2 % 6, length, random);
            const int level = stages / 12 % 4;
            if (level == 1)
                settings.outerLevel = uValue();
            else if (level >= 2)
                settings.automation = {automation, directions[level - 2]};
            if (stages / 48 % 2 != 0)
                settings.middleLevel = uValue();
            if (stages / 96 != 0)
                settings.equaliser = {{BandKind::lowShelf, 200.0, -3.0},
                                      {BandKind::peak, 3000.0, 6.0, 2.0},
                                      {BandKind::lowPass, 15000.0}};
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", mode " << StripPlan(settings).modeCode
                                            << ", speed " << settings.speed);
            use(settings);
        }
}

} // namespace audlmd::test

#include "bench/sound/Page.hpp"
#include "bench/sound/SineFit.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace audlmd::sound {

/// For googletest, which would print bytes.
static void PrintTo(const Conversion& conversion, std::ostream* out) {
    *out << rowHead(conversion);
}

} // namespace audlmd::sound

namespace audlmd::test {
namespace {

using namespace sound;

/// How much worse than on the page a figure may be, in dB. The page rounds to 0.1 dB.
constexpr double margin = 0.25;
constexpr double frequencyMargin = 1e-4;

/// The cells of a conversion's row on the page, after rowHead(); none if the page has no such row.
std::vector<std::string> cellsOnPage(const Conversion& conversion) {
    std::ifstream page(AUDLMD_SOUND_PAGE);
    const std::string head = rowHead(conversion);
    std::vector<std::string> cells;
    for (std::string line; std::getline(page, line);)
        if (line.starts_with(head)) {
            std::istringstream row(line.substr(head.size()));
            for (std::string cell; std::getline(row, cell, '|');)
                cells.push_back(cell);
        }
    return cells;
}

/// The first number in a cell.
double numberIn(const std::string& cell) {
    const std::size_t begin = cell.find_first_of("-0123456789");
    return begin == std::string::npos ? NAN : std::strtod(cell.c_str() + begin, nullptr);
}

class SoundOfConversion : public testing::TestWithParam<Conversion> {};

TEST_P(SoundOfConversion, IsNoWorseThanThePageSays) {
    const std::vector<std::string> cells = cellsOnPage(GetParam());
    ASSERT_GE(cells.size(), measuredTones.size() + 2) << "no such row: " << rowHead(GetParam());
    for (std::size_t i = 0; i < measuredTones.size(); ++i) {
        SCOPED_TRACE(measuredTones[i]);
        const ToneMeasurement found = measureTone(GetParam(), measuredTones[i]);
        ASSERT_EQ(found.level.has_value(), cells[i].find("none") == std::string::npos) << cells[i];
        if (found.level)
            EXPECT_GE(found.signalToNoise(), numberIn(cells[i]) - margin);
        else
            EXPECT_LE(found.restLevel, numberIn(cells[i]) + margin);
    }
    const ToneMeasurement high = measureTone(GetParam(), highTone);
    EXPECT_LE(high.restLevel, numberIn(cells[measuredTones.size() + 1]) + margin);
}

TEST_P(SoundOfConversion, HasTheFrequencyOfTheSpeed) {
    const ToneMeasurement found = measureTone(GetParam(), 1000.0);
    ASSERT_TRUE(found.frequencyError.has_value());
    EXPECT_LT(std::abs(*found.frequencyError), frequencyMargin);
    EXPECT_NEAR(*found.level, 0.0, 0.1);
}

INSTANTIATE_TEST_SUITE_P(Sound, SoundOfConversion, testing::ValuesIn(measuredConversions()),
                         [](const testing::TestParamInfo<Conversion>& test) {
                             return std::string(nameOf(test.param.converter)) + "At" +
                                    std::to_string(std::lround(100.0 * test.param.speed)) + "Percent" +
                                    (test.param.reverse ? "Backwards" : "Forwards");
                         });

TEST(SineFit, FindsFrequencyLevelAndNoiseOfAKnownSine) {
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0.0, 1e-3);
    constexpr double frequency = 0.0712345;
    std::vector<float> signal(50000);
    for (std::size_t i = 0; i < signal.size(); ++i)
        signal[i] = static_cast<float>(
            0.1 + 0.5 * std::sin(2.0 * std::numbers::pi * frequency * static_cast<double>(i) + 1.0) +
            noise(random));

    const SineFit fit = fitSine(signal, frequency + 5e-6);
    EXPECT_NEAR(fit.frequency, frequency, 1e-9);
    EXPECT_NEAR(fit.amplitude, 0.5, 1e-4);
    EXPECT_NEAR(fit.residual, 1e-3, 2e-5);

    // A sine of another frequency counts as noise.
    EXPECT_GT(fitSineOfKnownFrequency(signal, frequency * 1.01).residual, 0.3);
}

} // namespace
} // namespace audlmd::test

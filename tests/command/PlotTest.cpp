// `audlmd plot`: what the pictures show, that each kind is drawn, and what is refused.

#include "standalone/signal/GainLaws.hpp"
#include "tests/command/CommandFixture.hpp"
#include "tools/audlmd/plot/Figures.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace audlmd::plot {
namespace {

const Watcher unwatched = [](std::int64_t, std::int64_t, int) {};

std::vector<std::string> labels(const Axis& axis, int count) {
    std::vector<std::string> texts;
    for (const Tick& tick : axis.ticks(count))
        if (!tick.label.empty())
            texts.push_back(tick.label);
    return texts;
}

TEST(PlotAxis, HasRoundTicksInsideItsRange) {
    using Labels = std::vector<std::string>;
    EXPECT_EQ(labels({"", -0.2, 0.35, Scale::linear}, 6),
              (Labels{"−0.2", "−0.1", "0.0", "0.1", "0.2", "0.3"}));
    EXPECT_EQ(labels({"", -30.0, 6.0, Scale::decibels}, 4), (Labels{"−24", "−12", "0"}));
    EXPECT_EQ(labels({"", 20.0, 2000.0, Scale::logarithmic}, 4),
              (Labels{"20", "50", "100", "200", "500", "1k", "2k"}));
    EXPECT_EQ(labels({"", 0.0, 1.0, Scale::time}, 4), (Labels{"0.0", "0.5", "1.0"}));
    EXPECT_EQ(labels({"", 0.0, 150.0, Scale::time}, 5),
              (Labels{"0:00", "0:30", "1:00", "1:30", "2:00", "2:30"}));
    EXPECT_DOUBLE_EQ((Axis{"", 20.0, 20000.0, Scale::logarithmic}.position(200.0)), 1.0 / 3.0);
}

TEST(PlotFigure, ShowsTheFadesAndTheLevelThatWereAskedFor) {
    StripSettings settings;
    settings.fade = {1000, 500, FadeCurve::power, FadeCurve::log};
    settings.middleLevel = static_cast<float>(mixerStyleUValueOfDecibels(-6.0));
    const FadeEnvelope expected(settings.fade, 4000);
    const Figure figure = envelopeFigure(settings, 4000, 1000, unwatched);
    ASSERT_EQ(figure.charts.size(), 2U);
    const auto& points = figure.charts[0].series.at(0).points;
    EXPECT_EQ(points.front().x, 0.0);
    EXPECT_EQ(points.back().x, 3.999);
    for (const Point& point : points)
        EXPECT_NEAR(point.y, gainOfDecibels(-6.0) * expected.gainAt(std::lround(1000.0 * point.x)), 1e-4)
            << point.x;
}

TEST(PlotFigure, ShowsTheAutomationThroughItsNodesInEitherDirection) {
    for (const WalkDirection direction : {WalkDirection::forwards, WalkDirection::backwards}) {
        const auto u = [](double decibels) {
            return static_cast<float>(mixerStyleUValueOfDecibels(decibels));
        };
        StripSettings settings;
        settings.automation.emplace(
            AutomationWalk{Automation({{100, u(-20.0)}, {600, u(6.0)}, {900, u(-3.0)}}), direction});
        const Figure figure = automationFigure(settings, 1000, 1000, unwatched);
        const auto& line = figure.charts.at(0).series.at(0).points;
        const auto& nodes = figure.charts.at(0).series.at(1).points;
        ASSERT_EQ(line.size(), 1000U);
        ASSERT_EQ(nodes.size(), 3U);
        EXPECT_NEAR(nodes[1].y, 6.0, 0.01);
        for (const Point& node : nodes)
            EXPECT_NEAR(line[static_cast<std::size_t>(std::lround(1000.0 * node.x))].y, node.y, 0.01)
                << node.x;
    }
}

TEST(PlotFigure, ShowsTheResponsesOfTheBandsAndTheirSum) {
    const std::vector<NamedBand> bands{{"a", {BandKind::peak, 1000.0, 6.0, 2.0}},
                                       {"b", {BandKind::lowShelf, 100.0, -9.0, 0.7}}};
    const Figure figure = equaliserFigure(bands, 48000);
    const auto& series = figure.charts.at(0).series;
    ASSERT_EQ(series.size(), 3U);
    const std::vector<std::vector<EqualiserBand>> drawn{
        {bands[0].band, bands[1].band}, {bands[0].band}, {bands[1].band}};
    for (std::size_t i = 0; i < series.size(); ++i)
        for (const Point& point : series[i].points)
            EXPECT_NEAR(point.y, responseDb(drawn[i], point.x, 48000.0), 0.01) << i << " at " << point.x;
}

class Plot : public test::CommandFixture {};

TEST_F(Plot, ShowsToneAndSilenceWhereTheyAreInASpectrogram) {
    test::Channels tone(2, std::vector<float>(48000));
    for (std::size_t i = 24000; i < 48000; ++i)
        tone[1][i] = static_cast<float>(
            0.5 * std::sin(2.0 * std::numbers::pi * 6000.0 / 48000.0 * static_cast<double>(i)));
    test::writeSound(in("tone.wav"), tone);
    const Figure figure = spectrogramFigure(in("tone.wav"), 2, -120.0, unwatched);
    const HeatMap& map = figure.charts.at(0).heatMap.value();
    const auto level = [&](double time, double kilohertz) {
        const auto column = static_cast<std::size_t>(time * static_cast<double>(map.columns));
        return map.values[column * map.rows +
                          static_cast<std::size_t>(kilohertz / 24.0 * static_cast<double>(map.rows))];
    };
    EXPECT_NEAR(level(0.75, 6.01), -6.02, 0.2);
    EXPECT_LT(level(0.75, 7.0), -115.0F);
    EXPECT_LT(level(0.25, 6.01), -115.0F);
}

TEST_F(Plot, DrawsEveryKindAsPngAndSvg) {
    test::writeBytes(in("ride.csv"), "0,-20\n2,0\n3,-inf\n");
    test::writeSound(in("a.wav"), test::noise(2, 4800));
    const std::vector<std::vector<std::string>> kinds{
        {"curves"},
        {"envelope", "--fade-in", "1s:power", "--fade-out", "2:log", "--duration", "5s", "--gain", "-3"},
        {"automation", "ride.csv", "--automation-reverse"},
        {"eq", "peak:1k:+3:0.7", "highpass:30", "--rate", "44100"},
        {"spectrogram", "a.wav", "--channel", "2"}};
    for (const std::string name : {"a.png", "a.svg"})
        for (std::vector<std::string> arguments : kinds) {
            arguments.insert(arguments.begin(), "plot");
            arguments.insert(arguments.end(), {"-o", name});
            const test::Outcome outcome = run(arguments);
            ASSERT_EQ(outcome.status, 0) << arguments[1] << outcome.errors;
            EXPECT_EQ(outcome.errors + outcome.output, "");
            const std::string picture = test::readBytes(in(name));
            const bool whole =
                name == "a.png" ? picture.starts_with("\x89PNG") && picture.find("IEND") != std::string::npos
                                : picture.starts_with("<?xml") && picture.ends_with("</svg>\n");
            EXPECT_TRUE(whole) << arguments[1] << " as " << name;
        }
}

TEST_F(Plot, RefusesInOneLineAndLeavesThePictureThatWasThere) {
    test::writeBytes(in("a.png"), "before");
    test::writeBytes(in("ride.csv"), "0,-20\n2\n");
    test::writeSound(in("a.wav"), test::noise(1, 100));
    const auto expectRefused = [&](const test::Outcome& outcome, const std::string& part) {
        EXPECT_GT(outcome.status, 0) << part;
        EXPECT_NE(outcome.errors.find(part), std::string::npos) << outcome.errors << "has no " << part;
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
        EXPECT_EQ(test::readBytes(in("a.png")), "before") << part;
        EXPECT_EQ(names().size(), 3U) << part;
    };
    expectRefused(run({"plot", "curves"}), "--output");
    expectRefused(run({"plot", "curves", "-o", "a.gif"}), "use .png or .svg");
    expectRefused(run({"plot", "curves", "-o", "nowhere/a.png"}), "nowhere/a.png");
    expectRefused(runWithFileSizeLimit(100, {"plot", "curves", "-o", "a.png"}), "cannot write 'a.png'");
    expectRefused(run({"plot", "envelope", "-o", "a.png", "--fade-in", "3s", "--duration", "2s"}), "fade-in");
    expectRefused(run({"plot", "envelope", "-o", "a.png", "--duration", "0"}), "--duration");
    expectRefused(run({"plot", "automation", "ride.csv", "-o", "a.png"}), "ride.csv line 2");
    expectRefused(run({"plot", "eq", "peak:1k:3:-1", "-o", "a.png"}), "Q");
    expectRefused(run({"plot", "eq", "bell:1k:3", "-o", "a.png"}), "'bell'");
    expectRefused(run({"plot", "spectrogram", "ride.csv", "-o", "a.png"}), "ride.csv");
    expectRefused(run({"plot", "spectrogram", "a.wav", "--channel", "2", "-o", "a.png"}), "--channel 2");
}

} // namespace
} // namespace audlmd::plot

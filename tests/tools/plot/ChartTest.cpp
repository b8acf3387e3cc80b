#include "tests/tools/plot/Drawing.hpp"
#include "tools/plot/Figure.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

namespace audlmd::test {
namespace {

using namespace plot;

TEST(Chart, IsDrawnAsItsPictureShows) {
    Chart chart;
    chart.title = "Title";
    chart.x = {"Frequency (Hz)", 20.0, 2000.0, Scale::logarithmic};
    chart.y = {"Gain (dB)", -12.0, 6.0, Scale::decibels};
    chart.series = {{.name = "line", .points = {}},
                    {.name = "dashes",
                     .colour = Palette::green,
                     .width = 1.5,
                     .dashed = true,
                     .points = {{20.0, -3.0}, {2000.0, 3.0}}},
                    {.name = "a name that takes a row", .width = 4.0, .dots = true, .points = {{200.0, 0.0}}},
                    {.name = "empty", .points = {}}};
    // Straight, but for a step, and out of the chart at the end.
    for (int n = 0; n <= 1000; ++n)
        chart.series[0].points.push_back({20.0 * std::pow(100.0, n / 1000.0), n < 500   ? -6.0
                                                                              : n < 800 ? 3.0
                                                                                        : -INFINITY});
    expectPicture("chart", [&](const Pen& pen) { paintChart(pen, chart, {10.0, 20.0, 380.0, 280.0}); });
}

TEST(Chart, PutsTheFirstRowOfAHeatMapAtTheFoot) {
    Chart chart;
    chart.x = timeAxis(2.0);
    chart.y = {"kHz", 0.0, 24.0};
    chart.heatMap = HeatMap{2, 3, {-40.0F, 5.0F, -35.0F, NAN, -20.0F, -1.0F}, {"dB", -40.0, 0.0}};
    expectPicture("heat map", [&](const Pen& pen) { paintChart(pen, chart, {0.0, 0.0, 400.0, 150.0}); });
}

TEST(Figure, PutsChartsInRowsBelowItsTitleOrADrawingInTheirPlace) {
    Figure figure;
    figure.title = "T\xFFtle";
    figure.subtitle = "what it was made from" + std::string(100, 'x');
    figure.charts.resize(3);
    figure.columns = 2;
    figure.chartWidth = 150.0;
    figure.chartHeight = 100.0;
    expectPicture("figure", [&](const Pen&) {
        EXPECT_TRUE(drawFigure(figure, PictureKind::svg).ends_with("</svg>\n"));
    });
    figure.charts.clear();
    figure.columns = 1;
    figure.drawing = [](const Pen& pen, const Rectangle& area) { pen.hatch(area, 50.0, 3.0); };
    expectPicture("drawing", [&](const Pen&) {
        EXPECT_TRUE(drawFigure(figure, PictureKind::png).starts_with("\x89PNG"));
    });
    figure.chartHeight = 20000.0;
    EXPECT_THROW(drawFigure(figure, PictureKind::png), std::runtime_error);
}

} // namespace
} // namespace audlmd::test

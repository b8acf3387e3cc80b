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
    chart.series.resize(4);
    // Straight, but for a step, and out of the chart at the end.
    chart.series[0].name = "line";
    for (int n = 0; n <= 1000; ++n)
        chart.series[0].points.push_back({20.0 * std::pow(100.0, n / 1000.0), n < 500   ? -6.0
                                                                              : n < 800 ? 3.0
                                                                                        : -INFINITY});
    chart.series[1] = {"dashes", Palette::green, 1.5, true, false, {{20.0, -3.0}, {2000.0, 3.0}}};
    chart.series[2] = {"a name that takes a row", Palette::blue, 4.0, false, true, {{200.0, 0.0}}};
    Chart heat;
    heat.x = timeAxis(2.0);
    // From foot to head, one column after the other.
    heat.heatMap = HeatMap{2, 3, {-40.0F, 5.0F, -35.0F, NAN, -20.0F, -1.0F}, {"dB", -40.0, 0.0}};
    Figure figure;
    figure.title = "T\xFFtle";
    figure.subtitle = "what it was made from" + std::string(100, 'x');
    figure.charts = {chart, heat, {}};
    figure.columns = 2;
    figure.chartWidth = 380.0;
    figure.chartHeight = 280.0;
    expectPicture("charts", [&] { drawFigure(figure, PictureKind::svg); });
    EXPECT_TRUE(drawFigure(figure, PictureKind::svg).ends_with("</svg>\n"));
    // The picture's width and height.
    EXPECT_EQ(drawFigure(figure, PictureKind::png).substr(16, 8), std::string("\0\0\x05\xF0\0\0\x04\xD8", 8));
    figure.chartHeight = 9000.0;
    EXPECT_THROW(drawFigure(figure, PictureKind::png), std::runtime_error);
}

} // namespace
} // namespace audlmd::test

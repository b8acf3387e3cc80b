#include "tools/plot/Chart.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace audlmd::test {
namespace {

using namespace plot;

/// The colour of a chart without title and legend at a place that is given in shares of the axes.
std::uint32_t colourAt(const Chart& chart, double x, double y) {
    cairo_surface_t* const image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 500, 400);
    cairo_t* const context = cairo_create(image);
    Pen(context).colour(Palette::paper);
    cairo_paint(context);
    paintChart(Pen(context), chart, {0.0, 0.0, 500.0, 400.0});
    // The area inside the margins.
    const Rectangle values{66.0, 8.0, chart.heatMap ? 332.0 : 416.0, 344.0};
    const auto column = static_cast<int>(values.left + x * values.width);
    const auto row = static_cast<int>(values.bottom() - y * values.height);
    const auto* const pixels = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(image));
    const std::uint32_t colour = pixels[500 * row + column] & 0xFFFFFF;
    cairo_destroy(context);
    cairo_surface_destroy(image);
    return colour;
}

TEST(Chart, LeadsALineThroughItsPointsAndOutOfTheAxis) {
    Chart chart;
    chart.series.resize(1);
    chart.series[0].width = 8.0;
    for (int n = 0; n <= 1000; ++n)
        chart.series[0].points.push_back({n / 1000.0, n < 500 ? 0.2 : n < 800 ? 0.7 : -INFINITY});
    for (const Point& on : {Point{0.25, 0.2}, {0.5, 0.45}, {0.65, 0.7}, {0.8, 0.1}})
        EXPECT_EQ(colourAt(chart, on.x, on.y), 0x0072B2U) << on.x << ", " << on.y;
    for (const Point& beside : {Point{0.25, 0.65}, {0.9, 0.004}})
        EXPECT_EQ(colourAt(chart, beside.x, beside.y), 0xFFFFFFU) << beside.x << ", " << beside.y;
}

TEST(Chart, PutsTheFirstRowOfAHeatMapAtTheFoot) {
    Chart chart;
    chart.heatMap = HeatMap{2, 2, {-40.0F, 5.0F, NAN, -20.0F}, {"", -40.0, 0.0}};
    EXPECT_EQ(colourAt(chart, 0.25, 0.25), 0x000004U);
    EXPECT_EQ(colourAt(chart, 0.25, 0.75), 0xFCFFA4U);
    EXPECT_EQ(colourAt(chart, 0.75, 0.25), 0x000004U);
    EXPECT_EQ(colourAt(chart, 0.75, 0.75), 0xBA3655U);
}

} // namespace
} // namespace audlmd::test

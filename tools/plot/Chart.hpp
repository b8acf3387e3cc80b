#pragma once

#include "tools/plot/Axis.hpp"
#include "tools/plot/Palette.hpp"
#include "tools/plot/Pen.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::plot {

struct Point {
    double x;
    double y;
};

/// A line through points in order of x, dots at the points, or an area. A line leaves the chart where y is
/// outside the axis; y may be minus infinity, but not a NaN.
struct Series {
    std::string name;
    Colour colour = Palette::blue;
    /// Of the line, or the radius of a dot. In points.
    double width = 2.0;
    bool dashed = false;
    bool dots = false;
    /// The points are the outline of an area, which is filled; the line is the edge.
    bool area = false;
    std::vector<Point> points;
};

/// Values drawn as colours over the whole area of a chart. The cell in `column`, counted from the left, and
/// `row`, counted from the foot, has the value [column * rows + row].
struct HeatMap {
    std::size_t columns = 0;
    std::size_t rows = 0;
    std::vector<float> values;
    /// The range of the colours, drawn as a bar beside the chart.
    Axis scale;
};

/// Lines over two axes, with a legend where there are two lines or more, or a heat map.
struct Chart {
    std::string title;
    Axis x;
    Axis y;
    std::vector<Series> series;
    std::optional<HeatMap> heatMap;
};

/// Draws the chart with its title, legend, axes and labels into `area`.
void paintChart(const Pen& pen, const Chart& chart, const Rectangle& area);

/// What rows of charts take beyond the charts: the legend and the labels of the x axis. In points.
double rowsMargin(const std::vector<Chart>& charts);

/// Draws charts as rows, one close below the other, with what they have in common once: the legend above,
/// the x axis below. Titles stand on the left.
void paintRows(const Pen& pen, const std::vector<Chart>& charts, const Rectangle& area);

} // namespace audlmd::plot

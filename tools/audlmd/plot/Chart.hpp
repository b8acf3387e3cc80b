#pragma once

#include "tools/audlmd/plot/Axis.hpp"
#include "tools/audlmd/plot/Palette.hpp"
#include "tools/audlmd/plot/Picture.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::plot {

struct Point {
    double x;
    double y;
};

/// A line through points in order of x, or only dots at them. Where y is outside the axis, minus infinity
/// included, the line leaves the chart; a NaN interrupts it.
struct Series {
    std::string name;
    Colour colour = Palette::blue;
    double width = 2.0;
    bool dashed = false;
    bool dots = false;
    std::vector<Point> points;
};

/// Values over the whole area of a chart, drawn as colours. Value [column * rows + row] belongs to a cell
/// counted from the left and from the foot.
struct HeatMap {
    std::size_t columns = 0;
    std::size_t rows = 0;
    std::vector<float> values;
    /// The colours' range, drawn as a bar beside the chart.
    Axis scale;
};

struct Chart {
    std::string title;
    Axis x;
    Axis y;
    std::vector<Series> series;
    std::optional<HeatMap> heatMap;
};

/// Charts of one size under one title, row by row. Lengths are in points, of which a PNG has two pixels each.
struct Figure {
    std::string title;
    /// What the picture was made from, in smaller letters below the title.
    std::string subtitle;
    std::vector<Chart> charts;
    std::size_t columns = 1;
    double chartWidth = 860.0;
    double chartHeight = 420.0;
    double pixelsPerPoint = 2.0;
};

/// The figure as the content of a file.
std::string drawFigure(const Figure& figure, PictureKind kind);

} // namespace audlmd::plot

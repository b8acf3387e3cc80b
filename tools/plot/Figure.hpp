#pragma once

#include "tools/plot/Chart.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace audlmd::plot {

/// Charts of one size under one title, row by row. Lengths are in points.
struct Figure {
    std::string title;
    /// Small letters below the title: what the picture was made from.
    std::string subtitle;
    std::vector<Chart> charts;
    /// Draws what is no chart. Takes the place of the charts, with the size of one; must not throw.
    std::function<void(const Pen&, const Rectangle& area)> drawing;
    /// Charts in a row.
    std::size_t columns = 1;
    /// Whether the charts are rows with one x axis, see paintRows(). In one column.
    bool rows = false;
    double chartWidth = 860.0;
    double chartHeight = 420.0;
    /// Of a PNG, in both directions.
    double pixelsPerPoint = 2.0;
};

enum class PictureKind { png, svg };

/// The figure as the content of a file. Throws std::runtime_error if cairo cannot draw the figure: it is
/// larger than 32767 pixels, or memory runs out.
std::string drawFigure(const Figure& figure, PictureKind kind);

} // namespace audlmd::plot

#include "tools/plot/Chart.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>

namespace audlmd::plot {
namespace {

// All sizes are in points. The margins hold the labels of the axes and of the colour bar.
constexpr double titleSize = 15.0;
constexpr double labelSize = 13.0;
constexpr double tickSize = 12.0;
constexpr double legendRow = 20.0;
constexpr double legendSwatch = 28.0;
constexpr double marginLeft = 66.0;
constexpr double marginRight = 18.0;
/// Left of the titles of rows.
constexpr double titleMargin = 14.0;
constexpr double marginBottom = 48.0;
constexpr double colourBarWidth = 14.0;
constexpr double colourBarMargin = 88.0;

/// Draws the names of the lines in rows as wide as the chart. Returns the height of the rows.
double paintLegend(const Pen& pen, const std::vector<Series>& series, const Rectangle& area) {
    if (series.size() < 2)
        return 0.0;
    pen.font(labelSize);
    double x = area.left;
    double y = area.top + legendRow / 2.0;
    for (const Series& entry : series) {
        const double width = legendSwatch + 6.0 + pen.widthOf(entry.name) + 22.0;
        if (x > area.left && x + width > area.right()) {
            x = area.left;
            y += legendRow;
        }
        pen.colour(entry.colour);
        if (entry.dots)
            pen.dot(x + legendSwatch / 2.0, y, entry.width);
        else if (entry.area)
            pen.fill({x, y - 5.0, legendSwatch, 10.0});
        else
            pen.line(x, y, x + legendSwatch, y, entry.width, entry.dashed);
        pen.colour(Palette::text);
        pen.write(entry.name, x + legendSwatch + 6.0, y, {0.0, 0.5});
        x += width;
    }
    return y + legendRow / 2.0 + 4.0 - area.top;
}

/// How many ticks there should be, so far from each other.
int ticksIn(double length, double distance) {
    return std::max(2, static_cast<int>(length / distance));
}

/// Labels that would touch the one before are left out.
void paintXAxis(const Pen& pen, const Axis& axis, const Rectangle& plot, bool grid, bool labels) {
    double labelledTo = plot.left - 100.0;
    pen.font(tickSize);
    for (const Tick& tick : axis.ticks(ticksIn(plot.width, 75.0))) {
        const double x = plot.left + axis.position(tick.value) * plot.width;
        if (grid) {
            pen.colour(Palette::grid);
            pen.line(x, plot.top, x, plot.bottom(), tick.label.empty() ? 0.5 : 1.0);
        }
        pen.colour(Palette::text);
        const double half = pen.widthOf(tick.label) / 2.0;
        if (!labels || tick.label.empty() || x - half < labelledTo + 4.0)
            continue;
        pen.line(x, plot.bottom(), x, plot.bottom() + 4.0, 1.0);
        pen.write(tick.label, x, plot.bottom() + 9.0, {0.5, 0.0});
        labelledTo = x + half;
    }
    if (!labels)
        return;
    pen.font(labelSize);
    pen.write(axis.title, plot.left + plot.width / 2.0, plot.bottom() + 30.0, {0.5, 0.0});
}

/// On an axis in decibels, the gridline of 0 dB is darker.
void paintYAxis(const Pen& pen, const Axis& axis, const Rectangle& plot, bool grid) {
    pen.font(tickSize);
    for (const Tick& tick : axis.ticks(ticksIn(plot.height, 32.0))) {
        const double y = plot.bottom() - axis.position(tick.value) * plot.height;
        if (grid) {
            const bool unity = axis.scale == Scale::decibels && tick.value == 0.0;
            pen.colour(unity ? Palette::outline : Palette::grid);
            pen.line(plot.left, y, plot.right(), y, 1.0);
        }
        pen.colour(Palette::text);
        pen.line(plot.left - 4.0, y, plot.left, y, 1.0);
        pen.write(tick.label, plot.left - 8.0, y, {1.0, 0.5});
    }
    pen.font(labelSize);
    pen.writeUpwards(axis.title, plot.left - marginLeft + 14.0, plot.top + plot.height / 2.0);
}

/// Appends those of the points after `first` up to `last` that the line needs to stay within 0.05 points of
/// all of them (Douglas and Peucker, 1973). Pictures of long signals stay small.
void appendSimplified(const std::vector<Point>& points, std::size_t first, std::size_t last,
                      std::vector<Point>& line) {
    constexpr double tolerance = 0.05;
    const Point& from = points[first];
    const Point along{points[last].x - from.x, points[last].y - from.y};
    double farthest = tolerance * std::hypot(along.x, along.y);
    std::size_t corner = last;
    for (std::size_t i = first + 1; i < last; ++i) {
        const double distance = std::abs(along.x * (points[i].y - from.y) - along.y * (points[i].x - from.x));
        if (distance > farthest) {
            farthest = distance;
            corner = i;
        }
    }
    if (corner == last) {
        line.push_back(points[last]);
        return;
    }
    appendSimplified(points, first, corner, line);
    appendSimplified(points, corner, last, line);
}

void paintSeries(const Pen& pen, const Chart& chart, const Series& series, const Rectangle& plot) {
    std::vector<Point> points;
    for (const Point& point : series.points) {
        // A height far outside becomes one just outside, because cairo's coordinates have 24 bits before the
        // point.
        const double height = std::clamp(chart.y.position(point.y), -1.0, 2.0);
        points.push_back(
            {plot.left + chart.x.position(point.x) * plot.width, plot.bottom() - height * plot.height});
    }
    pen.colour(series.colour);
    if (points.empty())
        return;
    if (series.dots) {
        for (const Point& point : points)
            pen.dot(point.x, point.y, series.width);
        return;
    }
    if (series.area) {
        for (const Point& point : points)
            cairo_line_to(pen.context(), point.x, point.y);
        cairo_close_path(pen.context());
        cairo_fill_preserve(pen.context());
        return pen.stroke(series.width, false);
    }
    std::vector<Point> line;
    appendSimplified(points, 0, points.size() - 1, line);
    cairo_move_to(pen.context(), points[0].x, points[0].y);
    for (const Point& point : line)
        cairo_line_to(pen.context(), point.x, point.y);
    cairo_set_line_join(pen.context(), CAIRO_LINE_JOIN_ROUND);
    pen.stroke(series.width, series.dashed);
}

std::uint32_t pixel(const Colour& colour) {
    const auto channel = [](double value) { return static_cast<std::uint32_t>(std::lround(value * 255.0)); };
    return channel(colour.red) << 16 | channel(colour.green) << 8 | channel(colour.blue);
}

/// Paints one pixel per cell, scaled up without smoothing.
void paintHeatMap(const Pen& pen, const HeatMap& map, const Rectangle& plot) {
    using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
    const Surface image(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(map.columns),
                                                   static_cast<int>(map.rows)),
                        &cairo_surface_destroy);
    unsigned char* const bytes = cairo_image_surface_get_data(image.get());
    if (bytes == nullptr)
        return; // Painting with the failed image below fails as well.
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(image.get()));
    cairo_surface_flush(image.get());
    for (std::size_t row = 0; row < map.rows; ++row) {
        auto* const line = reinterpret_cast<std::uint32_t*>(bytes + (map.rows - 1 - row) * stride);
        for (std::size_t column = 0; column < map.columns; ++column)
            line[column] = pixel(
                heatColour(map.scale.position(static_cast<double>(map.values[column * map.rows + row]))));
    }
    cairo_surface_mark_dirty(image.get());

    cairo_t* const context = pen.context();
    cairo_save(context);
    cairo_translate(context, plot.left, plot.top);
    cairo_scale(context, plot.width / static_cast<double>(map.columns),
                plot.height / static_cast<double>(map.rows));
    cairo_set_source_surface(context, image.get(), 0.0, 0.0);
    cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_NEAREST);
    cairo_paint(context);
    cairo_restore(context);
}

/// Paints the colours of a heat map beside the chart, with their levels.
void paintColourBar(const Pen& pen, const Axis& scale, const Rectangle& plot) {
    const Rectangle bar{plot.right() + 16.0, plot.top, colourBarWidth, plot.height};
    constexpr int steps = 128;
    for (int step = 0; step < steps; ++step) {
        pen.colour(heatColour((step + 0.5) / steps));
        const double height = bar.height / steps;
        // Each step reaches into the next one, so that no seam shows.
        pen.fill({bar.left, bar.bottom() - (step + 1) * height, bar.width, height * (step == 0 ? 1.0 : 1.5)});
    }
    pen.colour(Palette::outline);
    pen.outline(bar, 1.0);
    pen.colour(Palette::text);
    pen.font(tickSize);
    for (const Tick& tick : scale.ticks(ticksIn(bar.height, 32.0))) {
        const double y = bar.bottom() - scale.position(tick.value) * bar.height;
        pen.line(bar.right(), y, bar.right() + 4.0, y, 1.0);
        pen.write(tick.label, bar.right() + 8.0, y, {0.0, 0.5});
    }
    pen.font(labelSize);
    pen.writeUpwards(scale.title, bar.right() + 54.0, bar.top + bar.height / 2.0);
}

double rightMarginOf(const Chart& chart) {
    return chart.heatMap ? colourBarMargin + colourBarWidth : marginRight;
}

/// Draws the chart without title and legend; `plot` is what its frame encloses.
void paintFrame(const Pen& pen, const Chart& chart, const Rectangle& plot, bool xLabels) {
    if (chart.heatMap)
        paintHeatMap(pen, *chart.heatMap, plot);
    paintXAxis(pen, chart.x, plot, !chart.heatMap, xLabels);
    paintYAxis(pen, chart.y, plot, !chart.heatMap);
    cairo_save(pen.context());
    cairo_rectangle(pen.context(), plot.left, plot.top - 1.0, plot.width, plot.height + 2.0);
    cairo_clip(pen.context());
    for (const Series& series : chart.series)
        paintSeries(pen, chart, series, plot);
    cairo_restore(pen.context());
    pen.colour(Palette::outline);
    pen.outline(plot, 1.0);
    if (chart.heatMap)
        paintColourBar(pen, chart.heatMap->scale, plot);
}

} // namespace

void paintChart(const Pen& pen, const Chart& chart, const Rectangle& area) {
    Rectangle plot{area.left + marginLeft, area.top + 8.0, area.width - marginLeft - rightMarginOf(chart),
                   0.0};
    if (!chart.title.empty()) {
        pen.font(titleSize, true);
        pen.colour(Palette::text);
        pen.write(chart.title, plot.left, plot.top + titleSize / 2.0, {0.0, 0.5});
        plot.top += titleSize + 10.0;
    }
    plot.top += paintLegend(pen, chart.series, plot);
    plot.height = area.bottom() - marginBottom - plot.top;
    paintFrame(pen, chart, plot, true);
}

double rowsMargin(const std::vector<Chart>& charts) {
    return 8.0 + (charts.front().series.size() < 2 ? 0.0 : legendRow + 4.0) + marginBottom;
}

void paintRows(const Pen& pen, const std::vector<Chart>& charts, const Rectangle& area) {
    // The labels of two y axes meet there.
    constexpr double gap = 18.0;
    // Where the y axes have no titles.
    constexpr double unused = 22.0;
    pen.font(titleSize, true);
    double titles = 0.0;
    for (const Chart& chart : charts)
        titles = std::max(titles, pen.widthOf(chart.title));
    const double left =
        area.left + titleMargin + titles + marginLeft - (charts.front().y.title.empty() ? unused : 0.0);
    Rectangle plot{left, area.top + 8.0, area.right() - rightMarginOf(charts.front()) - left, 0.0};
    paintLegend(pen, charts.front().series, plot);
    const double top = area.top + rowsMargin(charts) - marginBottom;
    const double height = (area.bottom() - marginBottom + gap - top) / static_cast<double>(charts.size());
    for (std::size_t row = 0; row < charts.size(); ++row) {
        plot.top = top + static_cast<double>(row) * height;
        plot.height = height - gap;
        pen.font(titleSize, true);
        pen.colour(Palette::text);
        pen.write(charts[row].title, area.left + titleMargin, plot.top + plot.height / 2.0, {0.0, 0.5});
        paintFrame(pen, charts[row], plot, row + 1 == charts.size());
    }
}

} // namespace audlmd::plot

#include "tools/plot/Figure.hpp"

#include <cairo-svg.h>

#include <cmath>
#include <memory>
#include <stdexcept>

namespace audlmd::plot {
namespace {

constexpr double margin = 14.0;
constexpr double titleHeight = 26.0;
constexpr double subtitleHeight = 20.0;

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

/// The height above the first row of charts.
double headHeight(const Figure& figure) {
    return margin + (figure.title.empty() ? 0.0 : titleHeight) +
           (figure.subtitle.empty() ? 0.0 : subtitleHeight);
}

double widthOf(const Figure& figure) {
    return static_cast<double>(figure.columns) * figure.chartWidth;
}

double heightOf(const Figure& figure) {
    const std::size_t rows =
        figure.drawing ? 1 : (figure.charts.size() + figure.columns - 1) / figure.columns;
    return headHeight(figure) + static_cast<double>(rows) * figure.chartHeight +
           (figure.rows ? rowsMargin(figure.charts) : 0.0);
}

void paintHead(const Pen& pen, const Figure& figure) {
    pen.colour(Palette::text);
    const double width = widthOf(figure) - 2.0 * margin;
    double top = margin;
    if (!figure.title.empty()) {
        pen.font(18.0, true);
        pen.write(pen.fitted(figure.title, width), margin, top + titleHeight / 2.0, {0.0, 0.5});
        top += titleHeight;
    }
    if (!figure.subtitle.empty()) {
        pen.font(12.0);
        pen.write(pen.fitted(figure.subtitle, width), margin, top + subtitleHeight / 2.0, {0.0, 0.5});
    }
}

void require(cairo_status_t status) {
    if (status != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(std::string("cannot draw the picture: ") + cairo_status_to_string(status));
}

/// `scale` is in units of the surface per point.
void paintFigure(const Figure& figure, const Surface& surface, double scale) {
    const Context context(cairo_create(surface.get()), &cairo_destroy);
    cairo_scale(context.get(), scale, scale);
    const Pen pen(context.get());
    pen.colour(Palette::paper);
    cairo_paint(context.get());
    paintHead(pen, figure);
    if (figure.drawing)
        figure.drawing(pen, {0.0, headHeight(figure), figure.chartWidth, figure.chartHeight});
    if (figure.rows)
        paintRows(pen, figure.charts,
                  {0.0, headHeight(figure), figure.chartWidth, heightOf(figure) - headHeight(figure)});
    for (std::size_t index = 0; !figure.rows && index < figure.charts.size(); ++index) {
        const auto column = static_cast<double>(index % figure.columns);
        const std::size_t wholeRows = index / figure.columns;
        const auto row = static_cast<double>(wholeRows);
        paintChart(pen, figure.charts[index],
                   {column * figure.chartWidth, headHeight(figure) + row * figure.chartHeight,
                    figure.chartWidth, figure.chartHeight});
    }
    require(cairo_status(context.get()));
}

cairo_status_t append(void* bytes, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

std::string png(const Figure& figure) {
    const auto pixels = [&](double points) {
        return static_cast<int>(std::lround(points * figure.pixelsPerPoint));
    };
    const Surface surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, pixels(widthOf(figure)), pixels(heightOf(figure))),
        &cairo_surface_destroy);
    paintFigure(figure, surface, figure.pixelsPerPoint);
    std::string bytes;
    require(cairo_surface_write_to_png_stream(surface.get(), &append, &bytes));
    return bytes;
}

std::string svg(const Figure& figure) {
    std::string bytes;
    // Destroying the surface writes too, so the surface must end before the bytes are returned.
    {
        const Surface surface(
            cairo_svg_surface_create_for_stream(&append, &bytes, widthOf(figure), heightOf(figure)),
            &cairo_surface_destroy);
        paintFigure(figure, surface, 1.0);
        cairo_surface_finish(surface.get());
        require(cairo_surface_status(surface.get()));
    }
    return bytes;
}

} // namespace

std::string drawFigure(const Figure& figure, PictureKind kind) {
    return kind == PictureKind::png ? png(figure) : svg(figure);
}

} // namespace audlmd::plot

#include "tools/audlmd/plot/ChartPainter.hpp"

namespace audlmd::plot {

std::string drawFigure(const Figure& figure, PictureKind kind) {
    constexpr double margin = 14.0;
    constexpr double titleHeight = 26.0;
    constexpr double subtitleHeight = 20.0;
    const std::size_t rows = (figure.charts.size() + figure.columns - 1) / figure.columns;
    const double head = margin + (figure.title.empty() ? 0.0 : titleHeight) +
                        (figure.subtitle.empty() ? 0.0 : subtitleHeight);
    const PictureSize size{static_cast<double>(figure.columns) * figure.chartWidth,
                           head + static_cast<double>(rows) * figure.chartHeight, figure.pixelsPerPoint};

    return encodePicture(kind, size, [&](cairo_t* context) {
        const Pen pen(context);
        pen.colour(Palette::paper);
        cairo_paint(context);
        pen.colour(Palette::text);
        double baseline = margin;
        if (!figure.title.empty()) {
            pen.font(18.0, true);
            pen.write(figure.title, margin, baseline + titleHeight / 2.0, {0.0, 0.5});
            baseline += titleHeight;
        }
        if (!figure.subtitle.empty()) {
            pen.font(12.0);
            pen.write(figure.subtitle, margin, baseline + subtitleHeight / 2.0, {0.0, 0.5});
        }
        for (std::size_t index = 0; index < figure.charts.size(); ++index) {
            const auto column = static_cast<double>(index % figure.columns);
            const std::size_t wholeRows = index / figure.columns;
            const auto row = static_cast<double>(wholeRows);
            paintChart(pen, figure.charts[index],
                       {column * figure.chartWidth, head + row * figure.chartHeight, figure.chartWidth,
                        figure.chartHeight});
        }
    });
}

} // namespace audlmd::plot

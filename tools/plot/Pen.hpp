#pragma once

#include "tools/plot/Palette.hpp"

#include <cairo.h>

#include <string>
#include <string_view>

namespace audlmd::plot {

/// In points, y downwards.
struct Rectangle {
    double left;
    double top;
    double width;
    double height;

    double right() const { return left + width; }
    double bottom() const { return top + height; }
};

/// Where a text stands relative to its point, in both directions: 0 begins at the point, 0.5 is centred on
/// the point, 1 ends at the point.
struct Alignment {
    double horizontal;
    double vertical;
};

/// Draws the lines and texts of charts on a cairo context, which must outlive the pen. Lengths are in points,
/// y points downwards. Colour and font stay set for all that is drawn next.
class Pen {
public:
    explicit Pen(cairo_t* context) : context_(context) {}

    /// Use an opacity below 1 where areas must show what lies under them.
    void colour(const Colour& colour, double opacity = 1.0) const {
        cairo_set_source_rgba(context_, colour.red, colour.green, colour.blue, opacity);
    }
    void font(double size, bool bold = false) const {
        cairo_select_font_face(context_, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                               bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_font_size(context_, size);
    }
    /// In the font that is set.
    double widthOf(const std::string& text) const;
    /// The text where it is no wider than `width`. Otherwise as many of its first characters as fit, with an
    /// ellipsis; nothing where not even one character fits. For any bytes, and in little time for absurdly
    /// long texts.
    std::string fitted(std::string_view text, double width) const;
    /// The vertical alignment uses the height of capitals, so that texts on one line share a baseline. Bytes
    /// that are no UTF-8 become replacement characters.
    void write(const std::string& text, double x, double y, Alignment alignment) const;
    /// Writes from below to above, centred on the point.
    void writeUpwards(const std::string& text, double x, double y) const {
        cairo_save(context_);
        cairo_translate(context_, x, y);
        cairo_rotate(context_, -1.5707963267948966);
        write(text, 0.0, 0.0, {0.5, 0.5});
        cairo_restore(context_);
    }
    void line(double fromX, double fromY, double toX, double toY, double width, bool dashed = false) const {
        cairo_move_to(context_, fromX, fromY);
        cairo_line_to(context_, toX, toY);
        stroke(width, dashed);
    }
    void dot(double x, double y, double radius) const {
        cairo_new_sub_path(context_);
        cairo_arc(context_, x, y, radius, 0.0, 6.283185307179586);
        cairo_fill(context_);
    }
    void fill(const Rectangle& area) const {
        cairo_rectangle(context_, area.left, area.top, area.width, area.height);
        cairo_fill(context_);
    }
    /// Slanted lines over an area, `spacing` apart from left to right.
    void hatch(const Rectangle& area, double spacing, double width) const;
    void outline(const Rectangle& area, double width) const {
        cairo_rectangle(context_, area.left, area.top, area.width, area.height);
        stroke(width, false);
    }
    /// Draws the context's current path as a line.
    void stroke(double width, bool dashed) const {
        const double dash[] = {3.5 * width, 2.0 * width};
        cairo_set_dash(context_, dash, dashed ? 2 : 0, 0.0);
        cairo_set_line_width(context_, width);
        cairo_stroke(context_);
    }

    cairo_t* context() const { return context_; }

private:
    cairo_t* context_;
};

} // namespace audlmd::plot

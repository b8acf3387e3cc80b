#pragma once

#include "tools/audlmd/plot/Palette.hpp"

#include <cairo.h>

#include <string>

namespace audlmd::plot {

struct Rectangle {
    double left;
    double top;
    double width;
    double height;

    double right() const { return left + width; }
    double bottom() const { return top + height; }
};

/// Where a text stands relative to its point: 0 begins there, 0.5 is centred on it, 1 ends there.
struct Alignment {
    double horizontal;
    double vertical;
};

/// The strokes that charts are made of, on a cairo context that outlives the pen. Points, y downwards.
class Pen {
public:
    explicit Pen(cairo_t* context) : context_(context) {}

    void colour(const Colour& colour) const {
        cairo_set_source_rgb(context_, colour.red, colour.green, colour.blue);
    }
    void font(double size, bool bold = false) const {
        cairo_select_font_face(context_, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                               bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_font_size(context_, size);
    }
    double widthOf(const std::string& text) const {
        cairo_text_extents_t extents;
        cairo_text_extents(context_, text.c_str(), &extents);
        return extents.x_advance;
    }
    /// Vertical alignment goes by the capitals, so that texts on one line share a baseline.
    void write(const std::string& text, double x, double y, Alignment alignment) const {
        cairo_text_extents_t capitals;
        cairo_text_extents(context_, "H", &capitals);
        cairo_move_to(context_, x - alignment.horizontal * widthOf(text),
                      y + (1.0 - alignment.vertical) * capitals.height);
        cairo_show_text(context_, text.c_str());
    }
    /// Reads upwards, centred on the point.
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
    void outline(const Rectangle& area, double width) const {
        cairo_rectangle(context_, area.left, area.top, area.width, area.height);
        stroke(width, false);
    }
    /// Strokes the path that was begun on the context.
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

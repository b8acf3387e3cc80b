#include "tools/plot/Pen.hpp"

#include "tools/plot/Text.hpp"

#include <cmath>

namespace audlmd::plot {

double Pen::widthOf(const std::string& text) const {
    cairo_text_extents_t extents;
    cairo_text_extents(context_, drawableText(text).c_str(), &extents);
    return extents.x_advance;
}

std::string Pen::fitted(std::string_view text, double width) const {
    // More characters than any place has room for, so that the rest needs not be measured.
    constexpr std::size_t longest = 2000;
    std::string drawable = drawableText(text.substr(0, longest));
    if (text.size() <= longest && widthOf(drawable) <= width)
        return drawable;
    const std::string ellipsis = "\u2026";
    double used = widthOf(ellipsis);
    std::size_t kept = 0;
    while (kept < drawable.size()) {
        const std::string character = drawable.substr(kept, characterLength(drawable.substr(kept, 4)));
        used += widthOf(character);
        if (used > width)
            break;
        kept += character.size();
    }
    return kept == 0 ? std::string() : drawable.substr(0, kept) + ellipsis;
}

void Pen::write(const std::string& text, double x, double y, Alignment alignment) const {
    cairo_text_extents_t capitals;
    cairo_text_extents(context_, "H", &capitals);
    cairo_move_to(context_, x - alignment.horizontal * widthOf(text),
                  y + (1.0 - alignment.vertical) * capitals.height);
    cairo_show_text(context_, drawableText(text).c_str());
}

void Pen::hatch(const Rectangle& area, double spacing, double width) const {
    cairo_save(context_);
    cairo_rectangle(context_, area.left, area.top, area.width, area.height);
    cairo_clip(context_);
    // Counted from the left edge of the picture, so that neighbouring areas make one pattern.
    for (double foot = std::floor((area.left - area.height) / spacing) * spacing; foot < area.right();
         foot += spacing) {
        cairo_move_to(context_, foot, area.bottom());
        cairo_line_to(context_, foot + area.height, area.top);
    }
    stroke(width, false);
    cairo_restore(context_);
}

} // namespace audlmd::plot

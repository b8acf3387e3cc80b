#include "tools/plot/Pen.hpp"

#include <cmath>
#include <cstddef>

namespace audlmd::plot {
namespace {

/// How many bytes a first byte asks for. 0: not a first byte.
std::size_t lengthAfter(unsigned char first) {
    if (first < 0x80U)
        return 1;
    if (first >= 0xC0U && first < 0xE0U)
        return 2;
    if (first >= 0xE0U && first < 0xF0U)
        return 3;
    return first >= 0xF0U && first < 0xF8U ? 4 : 0;
}

bool isCharacter(char32_t code, std::size_t length) {
    // The least code that needs so many bytes: the same code in more bytes is no UTF-8.
    constexpr char32_t least[]{0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool noncharacter = (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFEU) == 0xFFFEU;
    return code >= least[length] && code <= 0x10FFFF && !surrogate && !noncharacter;
}

/// The bytes of the UTF-8 character that `text` begins with. 0 for what cairo refuses to draw: bytes that are
/// no UTF-8, surrogates and noncharacters (The Unicode Standard, sections 3.9 and 23.7). `text` is not empty.
std::size_t characterLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = lengthAfter(first);
    if (length == 0 || length > text.size())
        return 0;
    // A first byte of a long character has one bit less for the code for each byte that follows.
    char32_t code = length == 1 ? first : first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0U) != 0x80U)
            return 0;
        code = code << 6 | (byte & 0x3FU);
    }
    return isCharacter(code, length) ? length : 0;
}

/// The text as cairo can draw it. Every byte that is no part of a character, and every control character,
/// becomes a replacement character. Use this for names from files: cairo stops drawing the whole picture at
/// a text that is no UTF-8.
std::string drawableText(std::string_view text) {
    constexpr const char* replacement = "\uFFFD";
    std::string drawable;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const auto first = static_cast<unsigned char>(text[0]);
        if (length == 0 || first < 0x20U || first == 0x7FU)
            drawable += replacement;
        else
            drawable += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return drawable;
}

} // namespace

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

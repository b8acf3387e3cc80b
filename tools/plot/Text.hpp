#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace audlmd::plot {

/// The bytes of the UTF-8 character that `text` begins with. 0 for what cairo refuses to draw: bytes that are
/// no UTF-8, surrogates and noncharacters (The Unicode Standard, sections 3.9 and 23.7). `text` is not empty.
std::size_t characterLength(std::string_view text);

/// The text as cairo can draw it. Every byte that is no part of a character, and every control character,
/// becomes a replacement character. Use this for names from files: cairo stops drawing the whole picture at
/// a text that is no UTF-8.
std::string drawableText(std::string_view text);

} // namespace audlmd::plot

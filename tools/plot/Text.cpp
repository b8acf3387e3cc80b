#include "tools/plot/Text.hpp"

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

} // namespace

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

} // namespace audlmd::plot

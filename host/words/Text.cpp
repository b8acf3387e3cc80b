#include "host/words/Text.hpp"

#include <algorithm>

namespace audlmd::words {
namespace {

/// The character that a text begins with, and its length in bytes. Bytes that are no UTF-8 after RFC 3629 are
/// characters of one byte, with the code 0, which is a control like those that they may hide.
struct Character {
    char32_t code = 0;
    std::size_t length = 1;
};

Character firstOf(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if (byte(0) < 0x80U)
        return {byte(0), 1};
    const std::size_t length = byte(0) >= 0xF0U ? 4 : byte(0) >= 0xE0U ? 3 : 2;
    if (byte(0) < 0xC2U || byte(0) > 0xF4U || text.size() < length)
        return {};
    char32_t code = byte(0) & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U)
            return {};
        code = code << 6U | (byte(i) & 0x3FU);
    }
    const bool isShort = (length == 3 && code < 0x800U) || (length == 4 && code < 0x10000U);
    const bool isSurrogate = code >= 0xD800U && code <= 0xDFFFU;
    return isShort || isSurrogate || code > 0x10FFFFU ? Character{} : Character{code, length};
}

/// Controls of both blocks, separators of lines and paragraphs, and what changes the order of a line's
/// characters.
bool changesTheLine(char32_t code) {
    return code < 0x20U || (code >= 0x7FU && code <= 0x9FU) || code == 0x061CU || code == 0x200EU ||
           code == 0x200FU || (code >= 0x2028U && code <= 0x202EU) || (code >= 0x2066U && code <= 0x2069U);
}

} // namespace

std::string printable(std::string_view text, std::size_t longest) {
    std::string shown;
    for (std::size_t characters = 0; !text.empty(); ++characters) {
        if (characters == longest)
            return shown + "...";
        const Character first = firstOf(text);
        if (changesTheLine(first.code))
            shown += '?';
        else
            shown += text.substr(0, first.length);
        text.remove_prefix(first.length);
    }
    return shown;
}

std::string utf8(std::string_view text) {
    std::string kept;
    while (!text.empty()) {
        const Character first = firstOf(text);
        kept += first.code == 0 && text.front() != '\0' ? "\xEF\xBF\xBD" : text.substr(0, first.length);
        text.remove_prefix(first.length);
    }
    return kept;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

std::string counted(std::uint64_t count, std::string_view thing) {
    return std::to_string(count) + " " + std::string(thing) + (count == 1 ? "" : "s");
}

} // namespace audlmd::words

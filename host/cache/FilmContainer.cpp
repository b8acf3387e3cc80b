#include "host/cache/FilmContainer.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <string_view>

namespace audlmd {
namespace {

unsigned int byteAt(std::string_view text, std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
}

/// Whether a terminal would not show the character at a byte as it is: controls, those of C1 included, and
/// marks that change the direction of the text around.
bool isControl(std::string_view text, std::size_t i) {
    const unsigned int first = byteAt(text, i);
    const unsigned int second = byteAt(text, i + 1);
    const unsigned int third = byteAt(text, i + 2);
    const bool isC1 = first == 0xC2U && second < 0xA0U;
    const bool isArabicMark = first == 0xD8U && second == 0x9CU;
    const bool isMark = first == 0xE2U && second == 0x80U && (third == 0x8EU || third == 0x8FU);
    const bool isEmbedding = first == 0xE2U && second == 0x80U && third >= 0xA8U && third <= 0xAEU;
    const bool isIsolate = first == 0xE2U && second == 0x81U && third >= 0xA6U && third <= 0xA9U;
    return first < 0x20U || first == 0x7FU || isC1 || isArabicMark || isMark || isEmbedding || isIsolate;
}

bool hasControls(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i)
        if (isControl(text, i))
            return true;
    return false;
}

/// As one word of a shell: in the form $'...', with numbers for the bytes, where there are controls.
std::string shellWord(std::string_view text) {
    const bool inNumbers = hasControls(text);
    std::string word = inNumbers ? "$'" : "'";
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if (inNumbers && (byte < 0x20U || byte > 0x7EU || letter == '\'' || letter == '\\')) {
            std::array<char, 8> number{};
            std::snprintf(number.data(), number.size(), "\\%03o", static_cast<unsigned int>(byte));
            word += number.data();
        } else {
            word += letter == '\'' ? "'\\''" : std::string(1, letter);
        }
    }
    return word + "'";
}

} // namespace

bool isFilmContainer(const std::filesystem::path& path) {
    std::array<char, 16> start{};
    std::ifstream(path, std::ios::binary).read(start.data(), start.size());
    const std::string_view bytes(start.data(), start.size());
    const auto has = [&](std::size_t at, std::string_view mark) {
        return bytes.substr(at).starts_with(mark);
    };
    using namespace std::literals;
    const bool isQuickTime = has(4, "ftyp") || has(4, "moov") || has(4, "mdat") || has(4, "wide");
    const bool isMatroska = has(0, "\x1A\x45\xDF\xA3"sv);
    const bool isAvi = has(0, "RIFF") && has(8, "AVI ");
    const bool isMxf = has(0, "\x06\x0E\x2B\x34"sv);
    const bool isMpeg = has(0, "\x00\x00\x01\xBA"sv) || has(0, "\x00\x00\x01\xB3"sv);
    const bool isWindowsMedia = has(0, "\x30\x26\xB2\x75"sv);
    return isQuickTime || isMatroska || isAvi || isMxf || isMpeg || isWindowsMedia || has(0, "FLV\x01"sv);
}

std::string filmContainerAdvice(const std::filesystem::path& path) {
    // A name that begins with a hyphen would be an option.
    const bool isOption = path.string().starts_with('-');
    const std::filesystem::path film = isOption ? "." / path : path;
    std::filesystem::path sound = film;
    sound.replace_extension(".wav");
    return "extract its sound: ffmpeg -i " + shellWord(film.string()) + " -vn -c:a pcm_s24le " +
           shellWord(sound.string());
}

} // namespace audlmd

#include "host/cache/FilmContainer.hpp"

#include <array>
#include <cstddef>
#include <fstream>
#include <string_view>

namespace audlmd {

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

} // namespace audlmd

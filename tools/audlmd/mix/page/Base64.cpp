#include "tools/audlmd/mix/page/Base64.hpp"

#include <cstdint>

namespace audlmd::command {

std::string base64(std::string_view bytes) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t first = 0; first < bytes.size(); first += 3) {
        const std::string_view group = bytes.substr(first, 3);
        std::uint32_t bits = 0;
        for (std::size_t n = 0; n < 3; ++n)
            bits = bits << 8U | (n < group.size() ? static_cast<unsigned char>(group[n]) : 0U);
        for (std::size_t n = 0; n < 4; ++n)
            text += n <= group.size() ? digits[bits >> (18U - 6U * n) & 63U] : '=';
    }
    return text;
}

} // namespace audlmd::command

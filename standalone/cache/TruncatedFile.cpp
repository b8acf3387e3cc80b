#include "standalone/cache/TruncatedFile.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace audlmd {
namespace {

/// The number at the start of the text, after blanks. Larger than any if it does not fit.
std::optional<std::uint64_t> leadingNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::result_out_of_range)
        return std::numeric_limits<std::uint64_t>::max();
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

/// What programs write for a length that they do not know yet: all bits of a 32-bit field, with or without
/// the sign, less a header.
bool isPlaceholder(std::uint64_t bytes) {
    constexpr std::uint64_t largestHeader = 0x1000;
    const auto liesBelow = [bytes](std::uint64_t limit) {
        return bytes <= limit && bytes > limit - largestHeader;
    };
    return liesBelow(0x7FFFFFFF) || liesBelow(0xFFFFFFFF) || bytes > 0x7FFFFFFF00000000;
}

/// libsndfile shortens the length to what is there, and says so only in its log: "data : 400000 (should be
/// 239982)".
bool saysShortened(std::string_view line) {
    constexpr std::array<std::string_view, 4> dataSizes{"data : ", "SSND : ", "Data Size   : ", "riff : "};
    constexpr std::string_view correction = " (should be ";
    const std::size_t corrected = line.find(correction);
    if (corrected == std::string_view::npos)
        return line.find("does not match value from 'ds64' chunk") != std::string_view::npos;
    for (const std::string_view name : dataSizes)
        if (const std::size_t at = line.find(name); at != std::string_view::npos) {
            const auto claimed = leadingNumber(line.substr(at + name.size()));
            const auto there = leadingNumber(line.substr(corrected + correction.size()));
            return claimed && there && *there < *claimed && !isPlaceholder(*claimed);
        }
    return false;
}

} // namespace

bool isShorterThanItsHeaderSays(SNDFILE* file) {
    std::array<char, 16384> log{};
    sf_command(file, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    std::string_view text(log.data());
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1);
        if (saysShortened(text.substr(0, end)))
            return true;
        text.remove_prefix(end + 1);
    }
    return false;
}

} // namespace audlmd

#include "host/timeline/Json.hpp"

#include "host/timeline/TimelineError.hpp"

#include <algorithm>
#include <cctype>
#include <limits>
#include <vector>

namespace audlmd::timeline {
namespace {

/// Far more levels than nested stacks and tracks need, see deepestNesting.
constexpr int deepest = 512;

/// A text in which every number that JSON does not have stands in quotes.
struct PlainText {
    std::string text;
    /// Where quotes were put, as bytes of `text`, in order.
    std::vector<std::size_t> quotes;

    /// The number of a byte in the original text.
    std::size_t originalByte(std::size_t byte) const {
        return byte - static_cast<std::size_t>(std::ranges::lower_bound(quotes, byte) - quotes.begin());
    }
};

/// The length of a word at the start of a text that means no number or an infinite one. 0 where there is
/// none.
std::size_t oddNumberAt(std::string_view text) {
    std::size_t length = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
    const std::size_t sign = length;
    while (length < text.size() && std::isalpha(static_cast<unsigned char>(text[length])) != 0)
        ++length;
    const std::string_view word = text.substr(sign, length - sign);
    for (const std::string_view odd : {"NaN", "nan", "Infinity", "infinity", "Inf", "inf"})
        if (word == odd)
            return length;
    return 0;
}

/// The byte behind a text in quotes that begins at `begin`, or the end of a file that breaks off in it.
std::size_t behindQuoted(std::string_view text, std::size_t begin) {
    std::size_t i = begin + 1;
    while (i < text.size() && text[i] != '"')
        i += text[i] == '\\' ? 2 : 1;
    return std::min(i + 1, text.size());
}

/// Looks at every byte once. Throws TimelineError for too many levels. Only a text that begins like JSON is
/// looked at, so that a sound file is not taken for a deep timeline.
PlainText plainTextOf(std::string_view text) {
    PlainText plain;
    std::size_t copied = 0;
    int depth = 0;
    for (std::size_t i = std::min(startOfJson(text), text.size()); i < text.size();) {
        const char c = text[i];
        if (c == '"') {
            i = behindQuoted(text, i);
            continue;
        }
        depth += (c == '{' || c == '[' ? 1 : 0) - (c == '}' || c == ']' ? 1 : 0);
        if (depth > deepest)
            throw TimelineError("the file is nested more than " + std::to_string(deepest) + " levels deep");
        const bool mayBeOdd = std::string_view("-+NnIi").find(c) != std::string_view::npos;
        const std::size_t odd = mayBeOdd ? oddNumberAt(text.substr(i)) : 0;
        if (odd != 0) {
            plain.text += text.substr(copied, i - copied);
            plain.quotes.insert(plain.quotes.end(), {plain.text.size(), plain.text.size() + odd + 1});
            plain.text += '"' + std::string(text.substr(i, odd)) + '"';
            copied = i + odd;
        }
        i += std::max<std::size_t>(odd, 1);
    }
    plain.text += text.substr(copied);
    return plain;
}

/// `byte` is counted from 1, as the parser reports bytes. Columns are bytes.
std::string lineAndColumn(std::string_view text, std::size_t byte) {
    const std::string_view before = text.substr(0, byte - 1);
    const std::size_t lineStart = before.rfind('\n') + 1; // 0 where there is no line before
    return "line " + std::to_string(std::count(before.begin(), before.end(), '\n') + 1) + ", column " +
           std::to_string(before.size() - lineStart + 1);
}

} // namespace

std::size_t startOfJson(std::string_view text) {
    const std::size_t mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    const std::size_t start = text.find_first_not_of(" \t\r\n", mark);
    return start != std::string_view::npos && (text[start] == '{' || text[start] == '[')
               ? start
               : std::string_view::npos;
}

Json parseJson(std::string_view text) {
    const PlainText plain = plainTextOf(text);
    try {
        return Json::parse(plain.text);
    } catch (const Json::parse_error& error) {
        if (text.find_first_not_of(" \t\r\n") == std::string_view::npos)
            throw TimelineError("the file is empty");
        throw TimelineError(lineAndColumn(text, plain.originalByte(error.byte)) + ": this is not JSON");
    } catch (const Json::out_of_range&) {
        throw TimelineError("the file holds a number that is too large for any time or level");
    }
}

const Json* member(const Json& value, const std::string& key) {
    if (!value.is_object())
        return nullptr;
    const auto found = value.find(key);
    return found == value.end() || found->is_null() ? nullptr : &*found;
}

std::string textIn(const Json& value, const std::string& key, const std::string& otherwise) {
    const Json* found = member(value, key);
    return found != nullptr && found->is_string() ? found->get<std::string>() : otherwise;
}

std::optional<double> decibelsOf(const Json& value, double highest) {
    if (value.is_string() && value.get_ref<const std::string&>() == "-inf")
        return -std::numeric_limits<double>::infinity();
    if (value.is_number() && value.get<double>() <= highest)
        return value.get<double>();
    return std::nullopt;
}

} // namespace audlmd::timeline

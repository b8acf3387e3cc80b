#include "host/words/Numbers.hpp"

#include "host/words/Text.hpp"

#include <array>
#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace audlmd::words {

/// std::from_chars knows no locale and no plus sign, which is why the sign is taken off here.
std::optional<double> numberIn(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

double requireNumber(std::string_view text) {
    if (const std::optional<double> number = numberIn(text))
        return *number;
    throw std::invalid_argument(quoted(text) + " is not a number");
}

std::string_view withoutUnit(std::string_view text, std::string_view unit) {
    if (text.size() <= unit.size() ||
        lowered(std::string(text.substr(text.size() - unit.size()))) != lowered(std::string(unit)))
        return text;
    const std::string_view number = trimmed(text.substr(0, text.size() - unit.size()));
    const auto isDigit = [](char c) { return (c >= '0' && c <= '9') || c == '.'; };
    return !number.empty() && isDigit(number.back()) ? number : text;
}

double requireHertz(std::string_view text) {
    // "kHz" ends with "Hz", too.
    for (const std::string_view thousands : {"khz", "k"})
        if (const std::string_view number = withoutUnit(text, thousands); number != text)
            return 1000.0 * requireNumber(number);
    return requireNumber(withoutUnit(text, "hz"));
}

std::string numberText(double number) {
    std::array<char, 32> text{};
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::general, 6);
    return {text.data(), end};
}

std::string fixedText(double level, int decimals) {
    const double step = std::pow(10.0, -decimals);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, std::round(level / step) * step + 0.0);
    return text.data();
}

std::string signedText(double level, int decimals) {
    const std::string text = fixedText(level, decimals);
    return text.starts_with('-') ? text : "+" + text;
}

} // namespace audlmd::words

#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace audlmd::words {

/// The whole text as a number, in any locale, with or without a sign; "inf" and "nan" are numbers too.
/// Nothing for anything else, blanks included.
std::optional<double> numberIn(std::string_view text);

/// The same, or std::invalid_argument, which says that the text is not a number.
double requireNumber(std::string_view text);

/// The text without a unit at its end and blanks before the unit, if the unit is there and a digit before it.
/// The unit's letters may be capital or small.
std::string_view withoutUnit(std::string_view text, std::string_view unit);

/// Hertz: "1000", "1k", "44.1k", "1 kHz" or "1000Hz". Throws std::invalid_argument, which says that the text
/// is not a number.
double requireHertz(std::string_view text);

/// The whole text as a whole number without a plus sign. Nothing for anything else, and for a number that the
/// type cannot hold.
template <class Integer>
std::optional<Integer> wholeIn(std::string_view text, int base = 10) {
    Integer value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, base);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

/// A number for people, with six digits at most: "0.5", "1000", "1e+09".
std::string numberText(double number);

/// A level for people: "-3.01", rounded to so many decimals, without a negative zero. Silence is "-inf".
std::string fixedText(double level, int decimals);
/// The same with a sign: "+3.01".
std::string signedText(double level, int decimals);

} // namespace audlmd::words

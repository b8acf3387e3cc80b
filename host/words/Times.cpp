#include "host/words/Times.hpp"

#include "host/words/Numbers.hpp"

#include <array>
#include <cmath>
#include <cstdio>

namespace audlmd::words {
namespace {

/// Whether a text has digits and points alone: no sign, exponent or blank, and no "inf" and "nan".
bool isPlain(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789.") == std::string_view::npos;
}

std::optional<double> plainNumber(std::string_view text) {
    return isPlain(text) ? numberIn(text) : std::nullopt;
}

std::optional<std::int64_t> plainWhole(std::string_view text) {
    return isPlain(text) ? wholeIn<std::int64_t>(text) : std::nullopt;
}

/// Removes a unit from the end of a text, and tells whether the unit was there.
bool takeSuffix(std::string_view& text, std::string_view suffix) {
    if (!text.ends_with(suffix))
        return false;
    text.remove_suffix(suffix.size());
    return true;
}

/// Seconds, with minutes or hours and minutes in front. Hours and minutes are whole. A field after a colon is
/// below 60.
std::optional<double> timecodeSeconds(std::string_view text) {
    double larger = 0.0;
    int fields = 0;
    for (std::size_t colon = 0; (colon = text.find(':')) != std::string_view::npos;
         text.remove_prefix(colon + 1)) {
        const std::optional<std::int64_t> field = plainWhole(text.substr(0, colon));
        if (!field || ++fields > 2 || (fields == 2 && *field >= 60))
            return std::nullopt;
        larger = (larger + static_cast<double>(*field)) * 60.0;
    }
    const std::optional<double> seconds = plainNumber(text);
    if (!seconds || (fields > 0 && *seconds >= 60.0))
        return std::nullopt;
    return larger + *seconds;
}

/// `parts` is a number of 10^-digits seconds.
std::string clockOf(std::int64_t parts, int digits) {
    const std::int64_t second = std::llround(std::pow(10.0, digits));
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%lld:%02d:%02d.%0*d",
                  static_cast<long long>(parts / second / 3600), static_cast<int>(parts / second / 60 % 60),
                  static_cast<int>(parts / second % 60), digits, static_cast<int>(parts % second));
    return text.data();
}

} // namespace

std::optional<WrittenTime> timeIn(std::string_view text) {
    std::optional<double> seconds;
    // "ms" comes before "s", which would leave an m behind.
    if (takeSuffix(text, "smp")) {
        const std::optional<std::int64_t> samples = plainWhole(text);
        return samples ? std::optional(WrittenTime{0.0, samples}) : std::nullopt;
    }
    if (takeSuffix(text, "ms")) {
        seconds = plainNumber(text);
        if (seconds)
            *seconds /= 1000.0;
    } else {
        seconds = takeSuffix(text, "s") ? plainNumber(text) : timecodeSeconds(text);
    }
    if (!seconds || !std::isfinite(*seconds))
        return std::nullopt;
    return WrittenTime{*seconds, std::nullopt};
}

std::optional<double> secondsIn(std::string_view text) {
    if (text.starts_with('+') || !takeSuffix(text, "s"))
        return std::nullopt;
    const std::optional<double> seconds = numberIn(text);
    return seconds && std::isfinite(*seconds) ? seconds : std::nullopt;
}

std::string clock(std::int64_t samples, int sampleRate) {
    const double seconds = static_cast<double>(samples) / sampleRate;
    return (samples < 0 ? "-" : "") + clockOf(std::llround(std::abs(seconds) * 1000.0), 3);
}

std::string runningClock(std::int64_t samples, int sampleRate) {
    return clockOf(samples * 10 / sampleRate, 1);
}

} // namespace audlmd::words

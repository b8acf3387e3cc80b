#include "tools/audlmd/options/Time.hpp"

#include "tools/audlmd/CommandError.hpp"

#include <charconv>
#include <cmath>
#include <optional>

namespace audlmd::command {
namespace {

constexpr const char* timeSyntax =
    "seconds (12.5 or 3s), milliseconds (250ms), samples (480000smp) or timecode (1:02.5, 1:00:02.5)";

/// The whole text as a number without sign, exponent or surrounding space. The characters are checked first,
/// because std::from_chars reads a minus sign, "inf" and "nan" too.
template <class Number>
std::optional<Number> wholeNumber(std::string_view text) {
    if (text.empty() || text.find_first_not_of("0123456789.") != std::string_view::npos)
        return std::nullopt;
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
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
        const std::optional<std::int64_t> field = wholeNumber<std::int64_t>(text.substr(0, colon));
        if (!field || ++fields > 2 || (fields == 2 && *field >= 60))
            return std::nullopt;
        larger = (larger + static_cast<double>(*field)) * 60.0;
    }
    const std::optional<double> seconds = wholeNumber<double>(text);
    if (!seconds || (fields > 0 && *seconds >= 60.0))
        return std::nullopt;
    return larger + *seconds;
}

} // namespace

TimeValue TimeValue::parse(std::string_view text, std::string_view option) {
    TimeValue value;
    value.text_ = text;
    value.option_ = option;
    std::optional<double> seconds;
    std::string_view number = text;
    // "ms" comes before "s", which would leave an m behind.
    if (takeSuffix(number, "smp")) {
        if (const std::optional<std::int64_t> count = wholeNumber<std::int64_t>(number)) {
            value.samples_ = *count;
            value.inSamples_ = true;
            return value;
        }
    } else if (takeSuffix(number, "ms")) {
        seconds = wholeNumber<double>(number);
        if (seconds)
            *seconds /= 1000.0;
    } else if (takeSuffix(number, "s")) {
        seconds = wholeNumber<double>(number);
    } else {
        seconds = timecodeSeconds(number);
    }
    if (!seconds || !std::isfinite(*seconds))
        throw CommandError(value.option_ + ": '" + value.text_ + "' is not a time; write " + timeSyntax);
    value.seconds_ = *seconds;
    return value;
}

std::int64_t TimeValue::samples(int sampleRate) const {
    if (inSamples_)
        return samples_;
    const double count = std::round(seconds_ * sampleRate);
    if (!(count < 0x1p62))
        throw CommandError(option_ + ": " + text_ + " is more samples than can be counted");
    return static_cast<std::int64_t>(count);
}

} // namespace audlmd::command

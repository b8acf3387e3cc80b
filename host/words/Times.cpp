#include "host/words/Times.hpp"

#include "host/words/Numbers.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numeric>

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

/// Frames per second, as a whole number times 1000 / 1001 or as the whole number.
struct FrameRate {
    std::int64_t nominal = 0;
    bool slowed = false;
};

constexpr std::int64_t mostFrames = 1000;

/// 23.976, 23.98, 29.97 and the like are a thousandth below a whole number.
std::optional<FrameRate> frameRateOf(double number) {
    if (!(number >= 0.9 && number <= static_cast<double>(mostFrames)))
        return std::nullopt;
    const FrameRate rate{.nominal = std::llround(number), .slowed = number != std::round(number)};
    if (rate.slowed && std::abs(number * 1.001 - static_cast<double>(rate.nominal)) > 0.01)
        return std::nullopt;
    return rate;
}

std::optional<FrameRate> frameRateIn(std::string_view text) {
    FrameRate rate;
    if (takeSuffix(text, "/1001")) {
        const std::optional<std::int64_t> thousandths = plainWhole(text);
        if (!thousandths || *thousandths % 1000 != 0)
            return std::nullopt;
        rate = {*thousandths / 1000, true};
    } else {
        const std::optional<double> number = plainNumber(text);
        return number ? frameRateOf(*number) : std::nullopt;
    }
    return rate.nominal >= 1 && rate.nominal <= mostFrames ? std::optional(rate) : std::nullopt;
}

/// h:m:s:f, or h:m:s;f where numbers are dropped: the first two (of 30) or four (of 60) of each minute but
/// every tenth.
std::optional<double> framesTimecodeSeconds(std::string_view text) {
    const std::size_t at = text.find('@');
    const std::optional<FrameRate> rate = frameRateIn(text.substr(at + 1));
    const std::string_view code = text.substr(0, at);
    const std::size_t last = code.find_last_of(":;");
    if (!rate || last == std::string_view::npos)
        return std::nullopt;
    const std::string_view clock = code.substr(0, last);
    if (std::ranges::count(clock, ':') != 2 || clock.find('.') != std::string_view::npos)
        return std::nullopt;
    const std::optional<std::int64_t> frame = plainWhole(code.substr(last + 1));
    const std::optional<double> seconds = timecodeSeconds(clock);
    if (!frame || *frame >= rate->nominal || !seconds || !(*seconds < 1e9))
        return std::nullopt;
    const auto whole = static_cast<std::int64_t>(*seconds);
    std::int64_t frames = whole * rate->nominal + *frame;
    if (code[last] == ';') {
        const std::int64_t dropped = rate->nominal / 15;
        const std::int64_t minutes = whole / 60;
        const bool isDropped = whole % 60 == 0 && minutes % 10 != 0 && *frame < dropped;
        if (!rate->slowed || rate->nominal % 30 != 0 || isDropped)
            return std::nullopt;
        frames -= dropped * (minutes - minutes / 10);
    }
    return static_cast<double>(frames) * (rate->slowed ? 1.001 : 1.0) / static_cast<double>(rate->nominal);
}

/// h:mm:ss
std::string wholeSeconds(std::int64_t seconds) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%lld:%02d:%02d", static_cast<long long>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    return text.data();
}

/// A number of so many digits, with zeros in front.
std::string padded(std::int64_t number, std::size_t digits) {
    const std::string text = std::to_string(number);
    return std::string(digits - std::min(digits, text.size()), '0') + text;
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
    } else if (text.find('@') != std::string_view::npos) {
        seconds = framesTimecodeSeconds(text);
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
    const std::int64_t milliseconds = std::llround(std::abs(seconds) * 1000.0);
    return (samples < 0 ? "-" : "") + wholeSeconds(milliseconds / 1000) + "." +
           padded(milliseconds % 1000, 3);
}

namespace {

struct Fraction {
    std::int64_t numerator = 1;
    std::int64_t denominator = 1;
};

std::optional<Fraction> fractionIn(std::string_view text) {
    constexpr std::int64_t most = 10'000'000;
    const std::size_t slash = std::min(text.find('/'), text.size());
    const std::optional<std::int64_t> numerator = plainWhole(text.substr(0, slash));
    const std::optional<std::int64_t> denominator =
        slash == text.size() ? 1 : plainWhole(text.substr(slash + 1));
    const auto isFit = [](const auto& part) { return part && *part >= 1 && *part <= most; };
    if (isFit(numerator) && isFit(denominator))
        return Fraction{*numerator, *denominator};
    const std::optional<FrameRate> rate = frameRateIn(text);
    return rate && rate->slowed ? std::optional(Fraction{rate->nominal * 1000, 1001}) : std::nullopt;
}

} // namespace

std::optional<Relabel> relabelIn(std::string_view text) {
    constexpr std::int64_t most = 1'000'000;
    const std::size_t colon = std::min(text.find(':'), text.size());
    const std::optional<Fraction> from = fractionIn(text.substr(0, colon));
    const std::optional<Fraction> to =
        colon == text.size() ? std::nullopt : fractionIn(text.substr(colon + 1));
    if (!from || !to)
        return std::nullopt;
    Relabel relabel{.from = from->numerator * to->denominator, .to = to->numerator * from->denominator};
    const std::int64_t common = std::gcd(relabel.from, relabel.to);
    relabel.from /= common;
    relabel.to /= common;
    return std::max(relabel.from, relabel.to) <= most ? std::optional(relabel) : std::nullopt;
}

std::string relabelText(const Relabel& relabel) {
    return std::to_string(relabel.from) + ":" + std::to_string(relabel.to);
}

bool isFrameRate(double rate) {
    return frameRateOf(rate).has_value();
}

std::string timecode(std::int64_t samples, int sampleRate, double frameRate) {
    __extension__ using Wide = __int128;
    const FrameRate rate = frameRateOf(frameRate).value();
    const auto frames = static_cast<std::int64_t>(Wide{samples} * rate.nominal * (rate.slowed ? 1000 : 1) /
                                                  (Wide{sampleRate} * (rate.slowed ? 1001 : 1)));
    return wholeSeconds(frames / rate.nominal) + ":" + padded(frames % rate.nominal, 2);
}

} // namespace audlmd::words

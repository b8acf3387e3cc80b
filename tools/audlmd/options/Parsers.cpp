#include "tools/audlmd/options/Parsers.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/signal/Speed.hpp"
#include "tools/audlmd/CommandError.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <vector>

namespace audlmd::command {
namespace {

[[noreturn]] void fail(std::string_view option, const std::string& why) {
    throw CommandError(std::string(option) + ": " + why);
}

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

/// Gives one part more than there are separators; parts may be empty.
std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t end = 0; (end = text.find(separator)) != std::string_view::npos;
         text.remove_prefix(end + 1))
        parts.push_back(text.substr(0, end));
    parts.push_back(text);
    return parts;
}

/// A number, with a sign or without; "inf" and "nan" are numbers too.
double parseNumber(std::string_view text, std::string_view option) {
    std::string_view number = text;
    if (number.starts_with('+') && !number.starts_with("+-"))
        number.remove_prefix(1);
    double value = 0.0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || end != number.data() + number.size())
        fail(option, quoted(text) + " is not a number");
    return value;
}

/// In hertz; "1.5k" is 1500.
double parseFrequency(std::string_view text, std::string_view option) {
    if (!text.ends_with('k'))
        return parseNumber(text, option);
    return 1000.0 * parseNumber(text.substr(0, text.size() - 1), option);
}

/// How a kind of band is written.
struct BandName {
    std::string_view name;
    BandKind kind;
    bool hasGain;
};

constexpr std::array<BandName, 5> bandNames{{
    {"peak", BandKind::peak, true},
    {"lowshelf", BandKind::lowShelf, true},
    {"highshelf", BandKind::highShelf, true},
    {"highpass", BandKind::highPass, false},
    {"lowpass", BandKind::lowPass, false},
}};

} // namespace

float parseLevel(std::string_view text, std::string_view option) {
    const double decibels = parseNumber(text, option);
    if (!(decibels <= faderTopDecibels))
        fail(option, quoted(text) + " is not a level of at most +10 dB; write -inf for silence");
    return static_cast<float>(mixerStyleUValueOfDecibels(decibels));
}

/// The curve is taken off the end first, because a timecode holds colons, too.
FadeValue parseFade(std::string_view text, std::string_view option) {
    constexpr std::array<std::pair<std::string_view, FadeCurve>, 3> curves{
        {{":linear", FadeCurve::linear}, {":log", FadeCurve::log}, {":power", FadeCurve::power}}};
    FadeCurve curve = FadeCurve::linear;
    std::string_view length = text;
    for (const auto& [suffix, named] : curves) {
        if (length.ends_with(suffix)) {
            length.remove_suffix(suffix.size());
            curve = named;
            break;
        }
    }
    // A colon with no digit behind it starts a word that is no curve; with digits the colon belongs to a
    // timecode.
    if (const std::size_t colon = length.rfind(':');
        colon != std::string_view::npos &&
        length.find_first_of("0123456789", colon) == std::string_view::npos)
        fail(option, quoted(length.substr(colon + 1)) + " is not a curve; use linear, log or power");
    return {TimeValue::parse(length, option), curve};
}

EqualiserBand parseBand(std::string_view text, std::string_view option) {
    const std::vector<std::string_view> parts = split(text, ':');
    for (const BandName& known : bandNames) {
        if (parts[0] != known.name)
            continue;
        // Kind and frequency, and the gain where the kind has one. The Q may follow.
        const std::size_t required = known.hasGain ? 3 : 2;
        if (parts.size() < required || parts.size() > required + 1)
            fail(option, quoted(text) + " should be " + std::string(known.name) +
                             (known.hasGain ? ":frequency:gain or " : ":frequency or ") +
                             std::string(known.name) +
                             (known.hasGain ? ":frequency:gain:q" : ":frequency:q"));
        EqualiserBand band;
        band.kind = known.kind;
        band.frequency = parseFrequency(parts[1], option);
        if (known.hasGain)
            band.gainDb = parseNumber(parts[2], option);
        if (parts.size() > required)
            band.q = parseNumber(parts[required], option);
        return band;
    }
    fail(option,
         quoted(parts[0]) + " is not a kind of band; use peak, lowshelf, highshelf, highpass or lowpass");
}

SpeedValue parseSpeed(std::string_view text, std::string_view option) {
    const double factor = parseNumber(text, option);
    if (!std::isfinite(factor) || factor <= 0.0)
        fail(option, std::string(text) + " is not a finite number above 0; --reverse plays backwards");
    requireSpeed(factor);
    return {factor, std::string(text)};
}

Converter parseConverter(std::string_view text, std::string_view option) {
    if (text == "filtering")
        return Converter::filtering;
    if (text == "linear")
        return Converter::linear;
    fail(option, quoted(text) + " is not a converter; use filtering or linear");
}

} // namespace audlmd::command

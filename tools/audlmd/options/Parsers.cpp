#include "tools/audlmd/options/Parsers.hpp"

#include "host/services/SampleRates.hpp"
#include "host/signal/GainLaws.hpp"
#include "host/signal/Speed.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/StripWords.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"
#include "tools/audlmd/CommandError.hpp"

#include <cmath>
#include <optional>
#include <stdexcept>
#include <string>

namespace audlmd::command {
namespace {

[[noreturn]] void fail(std::string_view option, const std::string& why) {
    throw CommandError(std::string(option) + ": " + why);
}

/// The value of a text, or what `read` has against the text as an error of the option.
template <class Value>
Value valueFor(std::string_view option, Value (*read)(std::string_view), std::string_view text) {
    try {
        return read(text);
    } catch (const std::invalid_argument& error) {
        fail(option, error.what());
    }
}

} // namespace

float parseLevel(std::string_view text, std::string_view option) {
    return valueFor(option, &words::levelIn, text);
}

double parseGain(std::string_view text, std::string_view option) {
    const double decibels = valueFor(option, &words::requireNumber, words::withoutUnit(text, "dB"));
    if (!(decibels <= mostGainDecibels))
        fail(option, words::quoted(text) + " is not a gain of at most +60 dB; write -inf for silence");
    return decibels;
}

/// The curve is taken off the end first, because a timecode holds colons, too.
FadeValue parseFade(std::string_view text, std::string_view option) {
    FadeValue fade;
    std::string_view length = text;
    if (const std::size_t colon = text.rfind(':'); colon != std::string_view::npos)
        if (const auto curve = words::valueOf(words::curveWords, text.substr(colon + 1))) {
            fade.curve = *curve;
            length = text.substr(0, colon);
        }
    // A colon with no digit behind it starts a word that is no curve; with digits the colon belongs to a
    // timecode.
    if (const std::size_t colon = length.rfind(':');
        colon != std::string_view::npos &&
        length.find_first_of("0123456789", colon) == std::string_view::npos)
        fail(option, words::quoted(length.substr(colon + 1)) + " is not a curve; use linear, log or power");
    fade.length = TimeValue::parse(length, option);
    return fade;
}

EqualiserBand parseBand(std::string_view text, std::string_view option) {
    return valueFor(option, &words::bandIn, text);
}

SpeedValue parseSpeed(std::string_view text, std::string_view option) {
    const double factor = valueFor(option, &words::requireNumber, words::withoutUnit(text, "x"));
    if (!std::isfinite(factor) || factor <= 0.0)
        fail(option, std::string(text) + " is not a finite number above 0; --reverse plays backwards");
    requireSpeed(factor);
    return {factor, std::string(text)};
}

int parseRate(std::string_view text, std::string_view option) {
    const double rate = valueFor(option, &words::requireHertz, text);
    if (!(rate >= lowestSampleRate && rate <= highestSampleRate) || rate != std::round(rate))
        fail(option, words::quoted(text) + " is not a whole number of hertz from " +
                         std::to_string(lowestSampleRate) + " to " + std::to_string(highestSampleRate));
    return static_cast<int>(rate);
}

Relabel parseRelabel(std::string_view text, std::string_view option) {
    const std::optional<Relabel> relabel = words::relabelIn(text);
    if (!relabel)
        fail(option, words::quoted(text) + " is not " + words::relabelSyntax);
    return *relabel;
}

Converter parseConverter(std::string_view text, std::string_view option) {
    const std::optional<Converter> converter = words::valueOf(words::converterWords, text);
    if (converter && *converter != Converter::none)
        return *converter;
    fail(option, words::quoted(text) + " is not a converter; use best, filtering or linear");
}

} // namespace audlmd::command

#include "fuzz/Fuzzing.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/StripWords.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/OutputFormat.hpp"
#include "tools/audlmd/options/Parsers.hpp"
#include "tools/audlmd/play/TransportKeys.hpp"

#include <algorithm>

namespace audlmd::fuzz {
namespace {

/// Calls a parser, which gives a value or refuses the text with one line.
template <class Parse>
void parse(Parse parser) {
    try {
        parser();
    } catch (const command::CommandError& error) {
        requireOneLine(error.what());
    } catch (const std::invalid_argument& error) {
        requireOneLine(error.what());
    }
}

void requireNumbers(std::string_view text) {
    if (const auto number = words::numberIn(text); number && std::isfinite(*number))
        require(words::numberIn(words::numberText(*number)).has_value(), "a number for people is a number");
    if (const auto whole = words::wholeIn<std::int64_t>(text))
        require(words::wholeIn<std::int64_t>(std::to_string(*whole)) == whole,
                "a whole number is read as it is written");
    words::wholeIn<unsigned long>(text, 16);
    if (const auto time = words::timeIn(text))
        require(std::isfinite(time->seconds) && time->seconds >= 0.0 && time->samples.value_or(0) >= 0,
                "a time is not negative");
    if (const auto seconds = words::secondsIn(text))
        require(std::isfinite(*seconds), "seconds are a number");
}

void requirePrintable(std::string_view text) {
    const std::string shown = words::printable(text);
    require(std::ranges::none_of(shown, [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; }),
            "what is printed gives no orders to a terminal");
    const std::string all = words::printable(text, std::string_view::npos);
    require(words::printable(all, std::string_view::npos) == all, "what is printable stays as it is");
    require(words::trimmed(words::trimmed(text)) == words::trimmed(text), "blanks are removed at once");
    require(words::lowered(words::lowered(std::string(text))) == words::lowered(std::string(text)),
            "small letters stay small");
}

/// Six digits of a band are read to the same six digits.
void requireBand(std::string_view text) {
    const std::string shown = words::bandText(words::bandIn(text));
    require(words::bandText(words::bandIn(shown)) == shown, "a band is read as it is written: " + shown);
}

/// Every text that the host's words and the command's options read. Each is read or refused with one line,
/// what is printed is read again, and no text gives orders to a terminal.
void read(const std::string& text) {
    // Options come from a command line, which has no lines.
    if (text.find('\n') == std::string::npos) {
        parse([&] { requireBand(text); });
        parse([&] { require(std::isfinite(words::levelIn(text)), "a level is a number"); });
        parse([&] { command::parseLevel(text, "--gain"); });
        parse([&] { command::parseBand(text, "--eq"); });
        parse([&] { command::parseFade(text, "--fade-in").length.samples(48000); });
        parse([&] { command::parseSpeed(text, "--speed"); });
        parse([&] { command::parseConverter(text, "--converter"); });
        parse([&] { command::parseFormat(text, "--format"); });
    }
    requireNumbers(text);
    requirePrintable(text);
    require(command::keysIn(text).size() <= text.size(), "a key takes a byte or more");
}

} // namespace
} // namespace audlmd::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    audlmd::fuzz::read({reinterpret_cast<const char*>(bytes), size});
    return 0;
}

#include "host/words/StripWords.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"

#include <stdexcept>
#include <vector>

namespace audlmd::words {
namespace {

bool hasGain(BandKind kind) {
    return kind != BandKind::highPass && kind != BandKind::lowPass;
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

} // namespace

float levelIn(std::string_view text) {
    const double decibels = requireNumber(withoutUnit(text, "dB"));
    if (!(decibels <= faderTopDecibels))
        throw std::invalid_argument(quoted(text) +
                                    " is not a level of at most +10 dB; write -inf for silence");
    return static_cast<float>(mixerStyleUValueOfDecibels(decibels));
}

EqualiserBand bandIn(std::string_view text) {
    const std::vector<std::string_view> parts = split(text, ':');
    const std::optional<BandKind> kind = valueOf(bandWords, parts[0]);
    if (!kind)
        throw std::invalid_argument(
            quoted(parts[0]) + " is not a kind of band; use peak, lowshelf, highshelf, highpass or lowpass");
    EqualiserBand band;
    band.kind = *kind;
    // Kind and frequency, and the gain where the kind has one. The Q may follow.
    const std::size_t required = hasGain(*kind) ? 3 : 2;
    if (parts.size() < required || parts.size() > required + 1) {
        const std::string form = std::string(parts[0]) + ":frequency" + (hasGain(*kind) ? ":gain" : "");
        throw std::invalid_argument(quoted(text) + " should be " + form + " or " + form + ":q");
    }
    band.frequency = requireHertz(parts[1]);
    if (hasGain(*kind))
        band.gainDb = requireNumber(withoutUnit(parts[2], "dB"));
    if (parts.size() > required)
        band.q = requireNumber(parts[required]);
    return band;
}

std::string bandText(const EqualiserBand& band) {
    return std::string(wordOf(bandWords, band.kind)) + ":" + numberText(band.frequency) +
           (hasGain(band.kind) ? ":" + numberText(band.gainDb) : "") + ":" + numberText(band.q);
}

} // namespace audlmd::words

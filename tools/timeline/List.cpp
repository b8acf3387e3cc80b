#include "tools/timeline/TimelineFiles.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace audlmd::timeline {
namespace {

constexpr std::size_t columnCount = 10;
using Row = std::array<std::string, columnCount>;

constexpr std::array<const char*, columnCount> headings{"track",     "clip", "output", "source",    "speed",
                                                        "direction", "gain", "fades",  "equaliser", "file"};

/// In columns of a terminal, as far as one character takes one. Counts the first bytes of UTF-8 characters.
std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string span(std::int64_t begin, std::int64_t end, int sampleRate) {
    return clock(begin, sampleRate) + " - " + clock(end, sampleRate);
}

std::string number(double value) {
    std::ostringstream text;
    text.precision(6);
    text << value;
    return text.str();
}

/// Lengths as heard.
std::string fades(const StripSettings& settings, int sampleRate) {
    const auto one = [&](const char* name, std::uint64_t samples, FadeCurve curve) {
        if (samples == 0)
            return std::string();
        const double seconds = static_cast<double>(samples) / settings.speed / sampleRate;
        return std::string(name) + " " + number(seconds) + "s " + std::string(wordOf(curveWords, curve));
    };
    const FadePlan& plan = settings.fade;
    const std::string in = one("in", plan.fadeInSamples, plan.fadeInCurve);
    const std::string out = one("out", plan.fadeOutSamples, plan.fadeOutCurve);
    return in.empty() || out.empty() ? in + out : in + ", " + out;
}

/// In the form of the command line's option for bands. Pass filters have no gain.
std::string equaliserText(const std::vector<EqualiserBand>& bands) {
    std::string text;
    for (const EqualiserBand& band : bands) {
        const bool hasGain = band.kind != BandKind::highPass && band.kind != BandKind::lowPass;
        text += (text.empty() ? "" : " ") + std::string(wordOf(bandWords, band.kind)) + ":" +
                number(band.frequency) + (hasGain ? ":" + number(band.gainDb) : "") + ":" + number(band.q);
    }
    return text;
}

/// The source shows what is heard of the material, not the whole range of the strip.
Row rowOf(const std::string& track, const TimelineStrip& strip, int sampleRate) {
    const StripSettings& settings = strip.settings;
    // A strip that begins later in its range reads correspondingly less of it.
    const auto skipped = std::llround(static_cast<double>(strip.skip) * settings.speed);
    const auto played = std::llround(static_cast<double>(strip.length) * settings.speed);
    const std::int64_t last = std::min<std::int64_t>(settings.to - settings.from, skipped + played);
    const std::int64_t from = settings.reverse ? settings.to - last : settings.from + skipped;
    const std::int64_t to = settings.reverse ? settings.to - skipped : settings.from + last;
    return {printable(track),
            printable(strip.name),
            span(strip.at, strip.at + strip.length, sampleRate),
            span(from, to, sampleRate),
            number(settings.speed),
            settings.reverse ? "backwards" : "forwards",
            number(strip.gainDb) + " dB" + (settings.automation ? " + automation" : ""),
            fades(settings, sampleRate),
            equaliserText(settings.equaliser),
            printable(strip.media)};
}

/// Each column is as wide as its widest text, with two blanks between columns and none at the end of a line.
std::string table(const std::vector<Row>& rows) {
    std::array<std::size_t, columnCount> widths{};
    for (const Row& row : rows)
        for (std::size_t i = 0; i < columnCount; ++i)
            widths[i] = std::max(widths[i], widthOf(row[i]));
    std::string text;
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < columnCount; ++i)
            line += row[i] + std::string(widths[i] - widthOf(row[i]) + 2, ' ');
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

} // namespace

std::string clock(std::int64_t samples, int sampleRate) {
    const double seconds = static_cast<double>(samples) / sampleRate;
    const std::int64_t milliseconds = std::llround(std::abs(seconds) * 1000.0);
    std::array<char, 48> text{};
    std::snprintf(
        text.data(), text.size(), "%s%lld:%02lld:%02lld.%03lld", samples < 0 ? "-" : "",
        static_cast<long long>(milliseconds / 3'600'000), static_cast<long long>(milliseconds / 60'000 % 60),
        static_cast<long long>(milliseconds / 1000 % 60), static_cast<long long>(milliseconds % 1000));
    return text.data();
}

Where whereIs(const Timeline& timeline, std::size_t track, std::size_t strip) {
    const auto named = [](const std::string& name, std::size_t number) {
        return name.empty() ? "#" + std::to_string(number + 1) : name;
    };
    return {.track = named(timeline.tracks[track].name, track),
            .clip = named(timeline.tracks[track].strips[strip].name, strip)};
}

std::string list(const Timeline& timeline) {
    std::vector<Row> rows(1);
    std::copy(headings.begin(), headings.end(), rows[0].begin());
    for (const TimelineTrack& track : timeline.tracks)
        for (const TimelineStrip& strip : track.strips)
            rows.push_back(rowOf(track.name, strip, timeline.sampleRate));
    std::string text = table(rows);
    for (const TimelineMarker& marker : timeline.markers)
        text += "marker " + clock(marker.at, timeline.sampleRate) + "  " + printable(marker.name) + "\n";
    for (const TimelineNote& note : timeline.notes)
        text += "note   " + note.where + ": " + note.text + "\n";
    return text;
}

} // namespace audlmd::timeline

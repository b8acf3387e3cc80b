#include "tools/audlmd/SettingsText.hpp"

#include "standalone/signal/GainLaws.hpp"
#include "tools/audlmd/CommandError.hpp"

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

namespace audlmd::command {
namespace {

[[noreturn]] void fail(std::string_view option, const std::string& why) {
    throw CommandError(std::string(option) + ": " + why);
}

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view space = " \t\r";
    text.remove_prefix(std::min(text.find_first_not_of(space), text.size()));
    return text.substr(0, text.find_last_not_of(space) + 1);
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t end = 0; (end = text.find(separator)) != std::string_view::npos;
         text.remove_prefix(end + 1))
        parts.push_back(text.substr(0, end));
    parts.push_back(text);
    return parts;
}

double parseFrequency(std::string_view text, std::string_view option) {
    if (!text.ends_with('k'))
        return parseNumber(text, option);
    return 1000.0 * parseNumber(text.substr(0, text.size() - 1), option);
}

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

float parseLevel(std::string_view text, std::string_view option) {
    const double decibels = parseNumber(text, option);
    if (!(decibels <= faderTopDecibels))
        fail(option, quoted(text) + " is not a level of at most +10 dB; write -inf for silence");
    return static_cast<float>(mixerStyleUValueOfDecibels(decibels));
}

FadeText parseFade(std::string_view text, std::string_view option) {
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

std::vector<AutomationPoint> readAutomationFile(const std::filesystem::path& path) {
    std::ifstream file(path);
    if (!file)
        throw CommandError("cannot read '" + path.string() + "': " + std::generic_category().message(errno));
    std::vector<AutomationPoint> points;
    bool headings = true;
    std::string text;
    for (int number = 1; std::getline(file, text); ++number) {
        const std::string_view line = trimmed(std::string_view(text).substr(0, text.find('#')));
        if (line.empty())
            continue;
        const bool first = std::exchange(headings, false);
        if (first && line.find_first_of("0123456789") == std::string_view::npos)
            continue;
        const std::string place = path.string() + " line " + std::to_string(number);
        const std::size_t comma = line.find(',');
        if (comma == std::string_view::npos)
            fail(place, "should be a time, a comma and decibels");
        points.push_back({TimeValue::parse(trimmed(line.substr(0, comma)), place),
                          parseLevel(trimmed(line.substr(comma + 1)), place)});
    }
    if (file.bad() || points.empty())
        throw CommandError("'" + path.string() +
                           "' holds no automation; write lines of a time, a comma and decibels");
    return points;
}

std::vector<LevelNode> levelNodes(const std::vector<AutomationPoint>& points, int sampleRate, double speed) {
    std::vector<LevelNode> nodes;
    nodes.reserve(points.size());
    for (const AutomationPoint& point : points) {
        const double position = std::round(static_cast<double>(point.time.samples(sampleRate)) * speed);
        if (!(position < 0x1p62))
            throw CommandError("the automation's time " + point.time.text() + " is too late to be counted");
        nodes.push_back({static_cast<std::int64_t>(position), point.uValue});
        if (nodes.size() > 1 && nodes.back().position < nodes[nodes.size() - 2].position)
            throw CommandError("the automation's time " + point.time.text() +
                               " comes after a later one; write the times in order");
    }
    return nodes;
}

} // namespace audlmd::command

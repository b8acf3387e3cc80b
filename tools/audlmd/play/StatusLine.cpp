#include "tools/audlmd/play/StatusLine.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace audlmd::command {
namespace {

/// Of all meters together, in characters.
constexpr std::size_t meterWidth = 16;
/// At the left end of a meter.
constexpr double floorDecibels = -60.0;

/// Decibels on a straight scale; the last character is an exclamation mark beyond full scale.
std::string meter(float peak, std::size_t width) {
    const double decibels = std::max(floorDecibels, decibelsOfGain(static_cast<double>(peak)));
    const double share = std::min(1.0, 1.0 - decibels / floorDecibels);
    const auto filled = static_cast<std::size_t>(std::ceil(share * static_cast<double>(width)));
    std::string text = std::string(filled, '#') + std::string(width - filled, '-');
    if (peak > 1.0F)
        text.back() = '!';
    return "[" + text + "]";
}

std::string count(std::uint64_t number, std::uint64_t episodes) {
    return std::to_string(number) + "/" + std::to_string(episodes);
}

std::string timeAt(const PlayStatus& status, std::int64_t position) {
    return status.frameRate == 0.0 ? words::clock(position, status.sampleRate)
                                   : words::timecode(position, status.sampleRate, status.frameRate);
}

template <class... Arguments>
std::string printed(const char* format, Arguments... arguments) {
    char text[64];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

/// State, times, speed and loop.
std::string transport(const PlayStatus& status) {
    std::string text = status.isPlaying ? "> " : "| ";
    text += timeAt(status, status.position) + "/" + timeAt(status, status.length);
    if (status.frameRate != 0.0)
        text += printed("@%.6g", status.frameRate);
    text += printed(" %+gx", status.speed);
    if (status.loops)
        text += " loop";
    if (status.loopStart)
        text += " loop from " + timeAt(status, status.loopStart->number());
    if (status.loopEnd)
        text += " loop to " + timeAt(status, status.loopEnd->number());
    return text;
}

std::string meters(const std::vector<float>& peaks) {
    std::string text = " ";
    const std::size_t width = std::max<std::size_t>(2, meterWidth / std::max<std::size_t>(1, peaks.size()));
    for (const float peak : peaks)
        text += meter(peak, width);
    return text;
}

/// The level of the keys, and what came too late.
std::string departures(const PlayStatus& status) {
    const LiveUnderruns& underruns = status.underruns;
    std::string text;
    if (status.level != 0.0)
        text += printed(" level %+g dB", status.level);
    if (underruns.lateEpisodes != 0)
        text += " late " + count(underruns.lateSamples, underruns.lateEpisodes);
    if (underruns.starvedEpisodes != 0)
        text += " starved " + count(underruns.starvedFrames, underruns.starvedEpisodes);
    if (status.deviceUnderruns != 0)
        text += " device " + std::to_string(status.deviceUnderruns);
    return text;
}

std::string coloured(const std::string& text, bool isRed) {
    return isRed ? "\033[31m" + text + "\033[0m" : text;
}

/// At most so many characters, of which the last three are points where there are more.
std::string shortened(const std::string& name, std::size_t most) {
    const std::string shown = words::printable(name, most);
    return shown == words::printable(name, std::string::npos) ? shown : words::printable(name, most - 3);
}

} // namespace

float HeldPeak::with(float peak) {
    if (peak >= peak_ || ++age_ == held) {
        peak_ = peak;
        age_ = 0;
    }
    return peak_;
}

std::string statusLine(const PlayStatus& status, const LineStyle& style) {
    constexpr std::size_t shortestName = 8;
    const std::string head = transport(status);
    const std::string peak = printed(" %+6.1f dB", decibelsOfGain(static_cast<double>(status.heldPeak)));
    const std::string clipped = status.clipped == 0 ? "" : " clipped " + std::to_string(status.clipped);
    const std::string others = departures(status);
    const std::size_t taken = head.size() + peak.size() + clipped.size() + others.size();
    std::size_t left = style.width - std::min(style.width, taken);
    std::string levels = meters(status.peaks);
    if (left < levels.size() + 1 + std::min(shortestName, status.name.size()))
        levels.clear();
    left -= levels.size();
    std::string name;
    if (left > std::min(shortestName, status.name.size()))
        name = " " + shortened(status.name, left - 1);
    return head + levels + coloured(peak, style.hasColours && status.heldPeak > 1.0F) +
           coloured(clipped, style.hasColours) + others + name;
}

std::string underrunText(const LiveUnderruns& underruns, std::uint64_t deviceUnderruns) {
    return "late: " + std::to_string(underruns.lateSamples) + " samples in " +
           words::counted(underruns.lateEpisodes, "episode") +
           "; starved: " + std::to_string(underruns.starvedFrames) + " frames in " +
           words::counted(underruns.starvedEpisodes, "episode") +
           "; device: " + words::counted(deviceUnderruns, "underrun");
}

} // namespace audlmd::command

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
constexpr std::size_t meterWidth = 24;
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

} // namespace

std::string statusLine(const PlayStatus& status) {
    char speed[32];
    std::snprintf(speed, sizeof speed, "%+gx", status.speed);
    std::string line = status.isPlaying ? "> " : "| ";
    line += words::runningClock(status.position, status.sampleRate) + "/" +
            words::runningClock(status.length, status.sampleRate) + " " + speed +
            (status.loops ? " loop " : " ");
    const std::size_t width =
        std::max<std::size_t>(2, meterWidth / std::max<std::size_t>(1, status.peaks.size()));
    for (const float peak : status.peaks)
        line += meter(peak, width);
    return line + " late " + count(status.underruns.lateSamples, status.underruns.lateEpisodes) +
           " starved " + count(status.underruns.starvedFrames, status.underruns.starvedEpisodes) +
           " device " + std::to_string(status.deviceUnderruns);
}

std::string underrunText(const PlayStatus& status) {
    return "late: " + std::to_string(status.underruns.lateSamples) + " samples in " +
           words::counted(status.underruns.lateEpisodes, "episode") +
           "; starved: " + std::to_string(status.underruns.starvedFrames) + " frames in " +
           words::counted(status.underruns.starvedEpisodes, "episode") +
           "; device: " + words::counted(status.deviceUnderruns, "underrun");
}

} // namespace audlmd::command

#include "tools/audlmd/play/StatusLine.hpp"

#include "host/signal/GainLaws.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace audlmd::command {
namespace {

/// Of all meters together, in characters.
constexpr std::size_t meterWidth = 24;
/// At the left end of a meter.
constexpr double floorDecibels = -60.0;

std::string clock(std::int64_t samples, int sampleRate) {
    const std::int64_t tenths = samples * 10 / sampleRate;
    char text[48];
    std::snprintf(text, sizeof text, "%lld:%02d:%02d.%d", static_cast<long long>(tenths / 36000),
                  static_cast<int>(tenths / 600 % 60), static_cast<int>(tenths / 10 % 60),
                  static_cast<int>(tenths % 10));
    return text;
}

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
    line += clock(status.position, status.sampleRate) + "/" + clock(status.length, status.sampleRate) + " " +
            speed + (status.loops ? " loop " : " ");
    const std::size_t width =
        std::max<std::size_t>(2, meterWidth / std::max<std::size_t>(1, status.peaks.size()));
    for (const float peak : status.peaks)
        line += meter(peak, width);
    return line + " late " + count(status.lateSamples, status.lateEpisodes) + " starved " +
           count(status.starvedFrames, status.starvedEpisodes) + " device " +
           std::to_string(status.deviceUnderruns);
}

std::string underrunText(const PlayStatus& status) {
    const auto episodes = [](std::uint64_t number) {
        return std::to_string(number) + (number == 1 ? " episode" : " episodes");
    };
    return "late: " + std::to_string(status.lateSamples) + " samples in " + episodes(status.lateEpisodes) +
           "; starved: " + std::to_string(status.starvedFrames) + " frames in " +
           episodes(status.starvedEpisodes) + "; device: " + std::to_string(status.deviceUnderruns) +
           (status.deviceUnderruns == 1 ? " underrun" : " underruns");
}

} // namespace audlmd::command

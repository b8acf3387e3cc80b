#include "host/cache/SoundFile.hpp"
#include "host/deliver/Loudness.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/ContainerFile.hpp"
#include "tools/audlmd/files/ReadThrough.hpp"
#include "tools/audlmd/plot/Figures.hpp"
#include "tools/plot/Spectrogram.hpp"
#include "tools/plot/Waveform.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace audlmd::command {

using namespace plot;

namespace {

using Window = LoudnessMeter::Window;

/// The channels of a sound file that a picture shows, a chart for each.
class PlottedSound {
public:
    PlottedSound(const std::filesystem::path& path, std::optional<int> channel) : file_(path) {
        if (file_.frames() == 0)
            throw CommandError("'" + path.string() + "' holds no samples, so there is nothing to draw",
                               ExitStatus::input);
        if (channel && (*channel < 1 || *channel > file_.channels()))
            throw CommandError("--channel " + std::to_string(*channel) + ": '" + path.string() + "' has " +
                               std::to_string(file_.channels()) + " channel(s), counted from 1");
        first_ = channel ? static_cast<std::size_t>(*channel - 1) : 0;
        count_ = channel ? 1 : static_cast<std::size_t>(file_.channels());
    }

    SoundFile& file() { return file_; }
    /// Reads the file, and hands blocks of the channels that are shown to `take`.
    template <class Take>
    void read(const Watcher& watcher, Take take) {
        readThrough(file_, [&](std::int64_t from, ChannelBlock block) {
            take(block.subspan(first_, count_));
            watcher(from + std::ssize(block.front()), file_.frames(), file_.sampleRate());
        });
    }

    /// Hands each channel that is shown to a drawer of its own, of which `make` makes one.
    template <class Make>
    auto readInto(const Watcher& watcher, Make make) {
        constexpr std::size_t most = 64;
        if (count_ > most)
            throw CommandError("'" + file_.path().string() + "' has " + std::to_string(count_) +
                               " channels, and a picture has room for 64; take one with --channel N");
        std::vector<decltype(make())> drawers;
        for (std::size_t n = 0; n < count_; ++n)
            drawers.push_back(make());
        read(watcher, [&](ChannelBlock block) {
            for (std::size_t n = 0; n < count_; ++n)
                drawers[n].add(block[n]);
        });
        return drawers;
    }

    /// A picture with a chart for each channel: alone, or as rows, whose height is in points.
    Figure figure(std::vector<Chart> charts, double lowest, double highest) const {
        Figure figure;
        figure.title = words::printable(file_.path().filename().string());
        const std::string rate = std::to_string(file_.sampleRate()) + " Hz";
        figure.rows = charts.size() > 1;
        figure.subtitle = (figure.rows ? nameOf(layoutOfFile(file_))
                                       : "Channel " + std::to_string(first_ + 1) + " of " +
                                             std::to_string(file_.channels())) +
                          ", " + rate;
        const std::vector<std::string> names = channelNames(layoutOfFile(file_));
        for (std::size_t n = 0; figure.rows && n < charts.size(); ++n)
            charts[n].title = names[n];
        figure.chartHeight = std::clamp(2.0 * highest / static_cast<double>(charts.size()), lowest, highest);
        figure.charts = std::move(charts);
        figure.pixelsPerPoint = 1.5;
        return figure;
    }

private:
    SoundFile file_;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
};

/// Points over seconds, of which each is the highest of a part of the course.
std::vector<Point> pointsOf(const LoudnessMeter& meter, Window window) {
    constexpr std::size_t mostPoints = 1500;
    const std::vector<double> course = meter.course(window);
    const std::size_t part = course.size() / mostPoints + 1;
    std::vector<Point> points;
    for (std::size_t n = 0; n < course.size(); n += part) {
        const std::size_t count = std::min(part, course.size() - n);
        points.push_back({static_cast<double>(static_cast<std::size_t>(window) + n + count - 1) / 10.0,
                          std::ranges::max(std::span(course).subspan(n, count))});
    }
    return points;
}

/// Around what is heard: whole multiples of 6 LU, at least 24 and at most 60.
Axis loudnessAxis(const std::vector<Point>& momentary) {
    const double none = std::numeric_limits<double>::infinity();
    double lowest = none;
    double highest = -none;
    for (const Point& point : momentary)
        if (std::isfinite(point.y)) {
            lowest = std::min(lowest, point.y);
            highest = std::max(highest, point.y);
        }
    const double to = std::isfinite(highest) ? 6.0 * std::ceil(highest / 6.0 + 0.25) : 0.0;
    const double from = std::isfinite(lowest) ? 6.0 * std::floor(lowest / 6.0 - 0.25) : -60.0;
    return {"Loudness (LUFS)", std::clamp(from, to - 60.0, to - 24.0), to, Scale::decibels};
}

std::string decimalText(double number) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.1f", number);
    return text.data();
}

LoudnessMeter makeMeter(const ChannelLayout& layout, const SoundFile& file) {
    try {
        return LoudnessMeter(layout, file.sampleRate(), LoudnessMeter::TruePeak::leftOut);
    } catch (const std::invalid_argument& error) {
        throw CommandError(words::quoted(file.path().string()) + " has no loudness: " + error.what(),
                           ExitStatus::input);
    }
}

} // namespace

Figure spectrogramFigure(const std::filesystem::path& path, std::optional<int> channel, double floor,
                         const Watcher& watcher) {
    PlottedSound sound(path, channel);
    std::vector<Chart> charts;
    for (Spectrogram& spectrogram : sound.readInto(
             watcher, [&] { return Spectrogram(sound.file().frames(), sound.file().sampleRate()); }))
        charts.push_back(spectrogram.chart(floor));
    return sound.figure(std::move(charts), 190.0, 420.0);
}

Figure waveformFigure(const std::filesystem::path& path, std::optional<int> channel, const Watcher& watcher) {
    PlottedSound sound(path, channel);
    const auto fullScale = static_cast<double>(fullScaleOf(ContainerFile(path).info().format));
    const auto waveforms = sound.readInto(
        watcher, [&] { return Waveform(sound.file().frames(), sound.file().sampleRate(), fullScale); });
    double top = 1.0;
    for (const Waveform& waveform : waveforms)
        top = std::max(top, waveform.peak());
    std::vector<Chart> charts;
    for (const Waveform& waveform : waveforms)
        charts.push_back(waveform.chart(top));
    return sound.figure(std::move(charts), 120.0, 300.0);
}

Figure loudnessFigure(const std::filesystem::path& path, const Watcher& watcher) {
    PlottedSound sound(path, std::nullopt);
    const ChannelLayout layout = layoutOfFile(sound.file());
    LoudnessMeter meter = makeMeter(layout, sound.file());
    sound.read(watcher, [&](ChannelBlock block) { meter.add(block); });
    const std::optional<double> integrated = meter.integrated();
    if (!integrated)
        throw CommandError(words::quoted(path.string()) +
                               " is shorter than 0.4 s, for which no loudness is defined",
                           ExitStatus::input);
    const double seconds = static_cast<double>(sound.file().frames()) / sound.file().sampleRate();
    Chart chart;
    chart.x = timeAxis(seconds);
    chart.series.push_back({.name = "Momentary (0.4 s)",
                            .colour = Palette::skyBlue,
                            .width = 1.25,
                            .points = pointsOf(meter, Window::momentary)});
    chart.y = loudnessAxis(chart.series.front().points);
    chart.series.push_back(
        {.name = "Short-term (3 s)", .width = 2.5, .points = pointsOf(meter, Window::shortTerm)});
    chart.series.push_back({.name = "Integrated: " + decimalText(*integrated) + " LUFS",
                            .colour = Palette::vermillion,
                            .dashed = true,
                            .points = {{0.0, *integrated}, {seconds, *integrated}}});
    Figure figure = sound.figure({std::move(chart)}, 300.0, 360.0);
    figure.subtitle = nameOf(layout) + ", " + std::to_string(sound.file().sampleRate()) + " Hz";
    if (const std::optional<double> range = meter.range())
        figure.subtitle += ", loudness range " + decimalText(*range) + " LU";
    return figure;
}

} // namespace audlmd::command

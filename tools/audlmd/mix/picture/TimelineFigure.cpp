#include "tools/audlmd/mix/picture/TimelineFigure.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/mix/picture/StripPeaks.hpp"
#include "tools/audlmd/mix/picture/TimelinePainter.hpp"

#include <memory>
#include <string>

namespace audlmd::command {

using namespace plot;

namespace {

/// Of a PNG.
constexpr double finePixels = 2.0;
/// Larger pictures of more lanes would take more than 130 MB of memory.
constexpr std::size_t mostLanesInFinePixels = 150;

std::string clockOf(std::int64_t samples, int sampleRate) {
    return clockText(static_cast<double>(samples) / sampleRate, 0.001);
}

std::string subtitleOf(const Timeline& timeline) {
    std::size_t strips = 0;
    for (const TimelineTrack& track : timeline.tracks)
        strips += track.strips.size();
    std::string text =
        words::counted(strips, "strip") + " on " + words::counted(timeline.tracks.size(), "track") + ", " +
        clockOf(timeline.length, timeline.sampleRate) + " at " + std::to_string(timeline.sampleRate) +
        " Hz, " + words::counted(timeline.channels, "channel");
    if (timeline.timeReference > 0)
        text += "; time 0 is " + clockOf(timeline.timeReference, timeline.sampleRate) +
                " on the timeline's clock";
    return text;
}

} // namespace

Figure drawTimeline(const Timeline& shown, const MixReport& report, const OpenMedia& openMedia,
                    const std::function<void(double share)>& progress) {
    const auto sketch = std::make_shared<TimelineSketch>(
        sketchTimeline(shown, report, static_cast<std::size_t>(finePixels * lanesWidth)));
    readPeaks(*sketch, openMedia, progress);
    Figure figure;
    figure.title = shown.name.empty() ? "Timeline" : words::printable(shown.name);
    figure.subtitle = subtitleOf(shown);
    figure.chartWidth = pictureWidth;
    figure.chartHeight = TimelineLayout(*sketch, 0.0).height();
    figure.pixelsPerPoint = sketch->tracks.size() <= mostLanesInFinePixels ? finePixels : 1.0;
    figure.drawing = [sketch](const Pen& pen, const Rectangle& area) {
        paintTimeline(pen, *sketch, TimelineLayout(*sketch, area.top));
    };
    return figure;
}

} // namespace audlmd::command

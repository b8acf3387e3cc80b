#include "tools/audlmd/mix/picture/TimelinePainter.hpp"

#include "host/signal/GainLaws.hpp"
#include "tools/plot/Axis.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace audlmd::command {

using namespace plot;

namespace {

constexpr double textSize = 12.0;
constexpr double smallSize = 10.0;

void paintLegend(const Pen& pen, const Rectangle& area) {
    double x = area.left;
    const double y = area.top + 12.0;
    const auto entry = [&](const char* text, const auto& swatch) {
        swatch(Rectangle{x, y - 6.0, 24.0, 12.0});
        pen.colour(Palette::text);
        pen.font(textSize);
        pen.write(text, x + 30.0, y, {0.0, 0.5});
        x += 30.0 + pen.widthOf(text) + 20.0;
    };
    const auto line = [&](const Colour& colour, double width) {
        return [&pen, colour, width, y](const Rectangle& swatch) {
            pen.colour(colour);
            pen.line(swatch.left, y, swatch.right(), y, width);
        };
    };
    entry("Peaks of the material", [&](const Rectangle& swatch) {
        pen.colour(PictureColours::wave);
        pen.fill(swatch);
    });
    entry("Fade", line(PictureColours::fade, 1.1));
    entry("Automation and gain", line(PictureColours::level, 1.8));
    entry("Silent, though it should sound", [&](const Rectangle& swatch) { paintSilence(pen, swatch); });
    entry("Beyond full scale", [&](const Rectangle& swatch) {
        pen.colour(PictureColours::trouble);
        pen.fill({swatch.left, y - 2.0, swatch.width, 4.0});
    });
    pen.font(smallSize);
    pen.colour(Palette::outline);
    pen.write("Peaks of clips are linear, before fades and levels. Lines are the travel of a fader: silence "
              "at the foot, "
              "0 dB at the dashed line, +10 dB at the top.",
              area.left, y + 18.0, {0.0, 0.5});
}

/// Labels stand above the lanes and below them. Labels that would touch the one before are left out.
void paintTime(const Pen& pen, const TimelineSketch& sketch, const TimelineLayout& layout) {
    const Rectangle lanes = layout.lanes();
    const double rate = sketch.sampleRate;
    const Axis axis{"", 0.0, static_cast<double>(sketch.columns.length) / rate, Scale::clock};
    double labelledTo = -1.0;
    pen.font(textSize);
    for (const Tick& tick : axis.ticks(static_cast<int>(lanes.width / 80.0))) {
        const double x = layout.x(tick.value * rate);
        pen.colour(Palette::grid);
        pen.line(x, lanes.top - 4.0, x, lanes.bottom() + 4.0, 1.0);
        const double half = pen.widthOf(tick.label) / 2.0;
        if (x - half < labelledTo + 4.0)
            continue;
        pen.colour(Palette::text);
        pen.write(tick.label, x, lanes.top - 7.0, {0.5, 1.0});
        pen.write(tick.label, x, lanes.bottom() + 9.0, {0.5, 0.0});
        labelledTo = x + half;
    }
    pen.write("Time (min:s)", lanes.left + lanes.width / 2.0, lanes.bottom() + 28.0, {0.5, 0.0});
}

/// Where the names of markers are written already, row by row.
using NamesEnd = std::array<double, markerRows>;

/// The uppermost row in which a name from `left` on is free, and so are all rows below, where the marker's
/// line runs. markerRows: none.
std::size_t freeRow(const NamesEnd& ends, double left) {
    std::size_t row = markerRows;
    while (row > 0 && ends[row - 1] <= left)
        --row;
    return row;
}

/// A name stands on the right of its line, near the end of the picture on the left. A marker whose name finds
/// no room has a short tick instead of a line.
void paintMarker(const Pen& pen, const TimelineLayout& layout, const std::string& name, double x,
                 NamesEnd& ends) {
    constexpr double widest = 160.0;
    constexpr double gap = 3.0;
    const bool leftwards = pictureWidth - x < 0.6 * widest;
    const std::string shown = pen.fitted(name, leftwards ? widest : std::min(widest, pictureWidth - x - gap));
    const double width = pen.widthOf(shown);
    const std::size_t row = freeRow(ends, leftwards ? x - gap - width : x);
    const Rectangle ticks = layout.markerTicks();
    if (row == markerRows) {
        pen.line(x, ticks.top, x, ticks.bottom(), 0.8);
        return;
    }
    const Rectangle area = layout.markerNames(row);
    pen.line(x, area.top, x, ticks.bottom(), 0.8);
    pen.line(x, layout.lanes().top, x, layout.lanes().bottom(), 0.8);
    pen.write(shown, leftwards ? x - gap : x + gap, area.top + area.height / 2.0,
              {leftwards ? 1.0 : 0.0, 0.5});
    ends[row] = leftwards ? x + gap : x + 2.0 * gap + width;
}

void paintMarkers(const Pen& pen, const TimelineSketch& sketch, const TimelineLayout& layout) {
    std::vector<TimelineMarker> markers = sketch.markers;
    std::ranges::stable_sort(markers, {}, &TimelineMarker::at);
    NamesEnd ends{};
    pen.font(smallSize);
    pen.colour(PictureColours::marker);
    for (const TimelineMarker& marker : markers)
        if (marker.at >= 0 && marker.at <= sketch.columns.length)
            paintMarker(pen, layout, marker.name, layout.x(static_cast<double>(marker.at.number())), ends);
}

void paintName(const Pen& pen, const std::string& name, const Rectangle& lane) {
    pen.font(textSize);
    pen.colour(Palette::text);
    pen.write(pen.fitted(name, trackNameWidth - 18.0), 14.0, lane.top + lane.height / 2.0, {0.0, 0.5});
}

void paintTracks(const Pen& pen, const TimelineSketch& sketch, const TimelineLayout& layout) {
    for (std::size_t track = 0; track < sketch.tracks.size(); ++track) {
        const TrackSketch& lane = sketch.tracks[track];
        paintName(pen, lane.name.empty() ? "track " + std::to_string(track + 1) : lane.name,
                  layout.lane(track));
        for (const StripSketch& strip : lane.strips)
            paintStrip(pen, layout, strip, layout.box(track, strip));
    }
    if (sketch.tracksLeftOut == 0)
        return;
    // On paper, because the lines of time and markers run through.
    pen.colour(Palette::paper);
    const Rectangle line = layout.leftOut();
    pen.fill(line);
    pen.font(textSize);
    pen.colour(Palette::text);
    pen.write("Tracks that are not drawn: " + std::to_string(sketch.tracksLeftOut), line.left + 4.0,
              line.top + line.height / 2.0, {0.0, 0.5});
}

/// The waveform of the mix, as high as full scale. Columns beyond that are red.
void paintWave(const Pen& pen, const TimelineSketch& sketch, const TimelineLayout& layout,
               const Rectangle& body) {
    const double middle = body.top + body.height / 2.0;
    const auto yOf = [&](float sample) {
        return middle - body.height / 2.0 * static_cast<double>(std::clamp(sample, -1.0F, 1.0F));
    };
    for (const bool over : {false, true}) {
        for (std::size_t column = 0; column < sketch.wave.size(); ++column) {
            const WaveRange& range = sketch.wave[column];
            if ((range.peak() > 1.0F) != over)
                continue;
            const double left = layout.x(sketch.columns.sampleAt(static_cast<double>(column)));
            const double right = layout.x(sketch.columns.sampleAt(static_cast<double>(column + 1)));
            const double top = yOf(range.highest);
            // Silence is a thin line.
            cairo_rectangle(pen.context(), left, top, right - left, std::max(yOf(range.lowest) - top, 0.4));
        }
        pen.colour(over ? PictureColours::trouble : PictureColours::wave);
        cairo_fill(pen.context());
    }
}

void paintPeak(const Pen& pen, float peak, double middle) {
    const double decibels = decibelsOfGain(static_cast<double>(peak));
    char text[64];
    std::snprintf(text, sizeof text, "peak %s%.1f dB", decibels < 0.0 ? "\u2212" : "+", std::abs(decibels));
    pen.font(smallSize);
    pen.colour(peak > 1.0F ? PictureColours::trouble : Palette::outline);
    pen.write(text, 14.0, middle, {0.0, 0.5});
}

/// What is beyond full scale has one row for each channel, above the waveform where there is one.
void paintOutput(const Pen& pen, const TimelineSketch& sketch, const TimelineLayout& layout) {
    const Rectangle lane = layout.output();
    Rectangle overloads = lane;
    if (!sketch.wave.empty()) {
        overloads.height = 8.0;
        paintWave(pen, sketch, layout,
                  {lane.left, overloads.bottom(), lane.width, lane.height - overloads.height - 1.0});
    }
    const auto channels = static_cast<double>(std::max<std::size_t>(sketch.output.size(), 1));
    const double height = overloads.height / channels;
    float peak = 0.0F;
    pen.colour(PictureColours::trouble);
    for (std::size_t channel = 0; channel < sketch.output.size(); ++channel) {
        const Rectangle row{lane.left, lane.top + height * static_cast<double>(channel), lane.width, height};
        for (const TimelineSpan& span : sketch.output[channel].spans)
            pen.fill(layout.part(row, span));
        peak = std::max(peak, sketch.output[channel].peak);
    }
    paintName(pen, "output", {0.0, lane.top, trackNameWidth, lane.height / 2.0});
    if (peak > 0.0F)
        paintPeak(pen, peak, lane.top + 0.8 * lane.height);
    pen.colour(Palette::outline);
    pen.outline(lane, 0.6);
}

} // namespace

void paintTimeline(const Pen& pen, const TimelineSketch& sketch, const TimelineLayout& layout) {
    paintLegend(pen, layout.legend());
    paintTime(pen, sketch, layout);
    // Under the strips, so that no line crosses a name.
    paintMarkers(pen, sketch, layout);
    paintTracks(pen, sketch, layout);
    paintOutput(pen, sketch, layout);
}

} // namespace audlmd::command

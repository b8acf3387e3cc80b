#include "tools/audlmd/mix/picture/TimelineLayout.hpp"

#include <algorithm>

namespace audlmd::command {

using plot::Rectangle;

namespace {

// In points.
constexpr double legendHeight = 50.0;
constexpr double markerRow = 14.0;
constexpr double markerTick = 5.0;
constexpr double axisHeight = 22.0;
constexpr double laneGap = 5.0;
constexpr double rowGap = 2.0;
constexpr double outputHeight = 26.0;
constexpr double outputHeightWithWave = 66.0;
constexpr double footHeight = 50.0;
constexpr double leftOutHeight = 20.0;
/// What the lanes share before they become lower.
constexpr double comfortableHeight = 900.0;
constexpr double lowestLane = 40.0;
constexpr double highestLane = 120.0;
/// Lower rows have no room for a text and a waveform. Strips beyond the last row share rows.
constexpr double lowestRow = 20.0;

} // namespace

TimelineLayout::TimelineLayout(const TimelineSketch& sketch, double top)
    : length_(static_cast<double>(sketch.columns.length)), top_(top) {
    const auto count = static_cast<double>(std::max<std::size_t>(sketch.tracks.size(), 1));
    laneHeight_ = std::clamp(comfortableHeight / count - laneGap, lowestLane, highestLane);
    const double markers = sketch.markers.empty() ? 0.0 : markerRows * markerRow + markerTick;
    lanesTop_ = top + legendHeight + markers + axisHeight;
    outputTop_ = lanesTop_ + static_cast<double>(sketch.tracks.size()) * (laneHeight_ + laneGap) +
                 (sketch.tracksLeftOut == 0 ? 0.0 : leftOutHeight);
    outputHeight_ = sketch.wave.empty() ? outputHeight : outputHeightWithWave;
    bottom_ = outputTop_ + outputHeight_ + footHeight;
}

Rectangle TimelineLayout::legend() const {
    return {trackNameWidth, top_, lanesWidth, legendHeight};
}

Rectangle TimelineLayout::markerNames(std::size_t row) const {
    return {trackNameWidth, top_ + legendHeight + static_cast<double>(row) * markerRow, lanesWidth,
            markerRow};
}

Rectangle TimelineLayout::markerTicks() const {
    return {trackNameWidth, top_ + legendHeight + markerRows * markerRow, lanesWidth, markerTick};
}

Rectangle TimelineLayout::lanes() const {
    return {trackNameWidth, lanesTop_, lanesWidth, outputTop_ + outputHeight_ - lanesTop_};
}

Rectangle TimelineLayout::lane(std::size_t track) const {
    const double above = static_cast<double>(track) * (laneHeight_ + laneGap);
    return {trackNameWidth, lanesTop_ + above, lanesWidth, laneHeight_};
}

Rectangle TimelineLayout::box(std::size_t track, const StripSketch& strip) const {
    const auto mostRows = static_cast<std::size_t>(laneHeight_ / lowestRow);
    const Rectangle whole = lane(track);
    const double height = whole.height / static_cast<double>(std::min(strip.rows, mostRows));
    const double above = height * static_cast<double>(strip.row % mostRows);
    const double gap = strip.rows > 1 ? rowGap : 0.0;
    return part({whole.left, whole.top + above, whole.width, height - gap}, strip.sounds);
}

Rectangle TimelineLayout::leftOut() const {
    return {trackNameWidth, outputTop_ - leftOutHeight, lanesWidth, leftOutHeight};
}

Rectangle TimelineLayout::output() const {
    return {trackNameWidth, outputTop_, lanesWidth, outputHeight_};
}

double TimelineLayout::x(double sample) const {
    return trackNameWidth + lanesWidth * sample / length_;
}

Rectangle TimelineLayout::part(const Rectangle& area, const TimelineSpan& span) const {
    constexpr double narrowest = 0.5;
    const double left = x(static_cast<double>(span.from.number()));
    const double width = std::max(narrowest, x(static_cast<double>(span.to.number())) - left);
    // A narrow part at the end of the picture stays inside.
    return {std::min(left, area.right() - width), area.top, width, area.height};
}

} // namespace audlmd::command

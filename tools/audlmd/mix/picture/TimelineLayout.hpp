#pragma once

#include "tools/audlmd/mix/picture/TimelineSketch.hpp"
#include "tools/plot/Pen.hpp"

#include <cstddef>

namespace audlmd::command {

/// The width of a picture, and of the part with the lanes. In points.
inline constexpr double pictureWidth = 1200.0;
inline constexpr double trackNameWidth = 120.0;
inline constexpr double rightMargin = 30.0;
inline constexpr double lanesWidth = pictureWidth - trackNameWidth - rightMargin;

/// Rows for the names of markers, which may stand close together.
inline constexpr std::size_t markerRows = 3;

/// Where the parts of a picture lie, in points. From above to below: legend, names of markers, time axis, one
/// lane for each track, the output's lane, time axis.
///
/// A lane is from 120 points high, with few tracks, to 40, with many.
class TimelineLayout {
public:
    /// The picture begins at the left edge of the page, `top` below the page's.
    TimelineLayout(const TimelineSketch& sketch, double top);

    double height() const { return bottom_ - top_; }

    plot::Rectangle legend() const;
    plot::Rectangle markerNames(std::size_t row) const;
    plot::Rectangle markerTicks() const;
    /// All lanes, the output's included: where gridlines run.
    plot::Rectangle lanes() const;
    plot::Rectangle lane(std::size_t track) const;
    plot::Rectangle box(std::size_t track, const StripSketch& strip) const;
    /// The line that says how many tracks are left out.
    plot::Rectangle leftOut() const;
    /// With the waveform, or of overloads alone.
    plot::Rectangle output() const;

    /// Where an output sample lies.
    double x(double sample) const;
    /// The part of an area from one output sample to another, at least half a point wide.
    plot::Rectangle part(const plot::Rectangle& area, const TimelineSpan& span) const;

private:
    /// Of the picture's time, in output samples.
    double length_;
    double top_;
    double laneHeight_;
    double lanesTop_;
    double outputTop_;
    double outputHeight_;
    double bottom_;
};

} // namespace audlmd::command

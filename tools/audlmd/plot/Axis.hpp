#pragma once

#include <string>
#include <vector>

namespace audlmd::plot {

enum class Scale {
    linear,
    /// Labels and grid at 1, 2 and 5 times the powers of ten.
    logarithmic,
    /// Linear in seconds, labelled in minutes and seconds where it is long.
    time,
    /// Linear, in steps that are round in decibels: 3, 6 and 12.
    decibels,
};

/// A gridline and what is written beside it; the label of a line between two labelled ones is empty.
struct Tick {
    double value;
    std::string label;
};

/// One side of a chart. The range is never empty, and above 0 on a logarithmic scale.
struct Axis {
    std::string title;
    double from = 0.0;
    double to = 1.0;
    Scale scale = Scale::linear;

    /// Where a value lies on the axis: 0 at `from`, 1 at `to`. Not limited to the two.
    double position(double value) const;

    /// At round values inside the range, about `count` of them on the linear scales.
    std::vector<Tick> ticks(int count) const;
};

/// The smallest of 1, 2 and 5 times a power of ten that is at least `step`; `step` is above 0.
double roundStep(double step);

} // namespace audlmd::plot

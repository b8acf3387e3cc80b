#pragma once

#include <string>
#include <vector>

namespace audlmd::plot {

enum class Scale {
    linear,
    /// Ticks at 1 to 9 times the powers of ten; those at 1, 2 and 5 times are labelled.
    logarithmic,
    /// Linear in seconds. Labels are minutes and seconds where the axis reaches beyond 120 s.
    time,
    /// Linear, in steps that are round in decibels: 3, 6, 12 and 20.
    decibels,
    /// Linear in seconds. Labels are clock texts on axes of any length, see clockText().
    clock,
};

/// A gridline and the text beside it. A line without a text has an empty label.
struct Tick {
    double value;
    std::string label;
};

/// One side of a chart. `from` is less than `to`, and both are above 0 on a logarithmic scale.
struct Axis {
    std::string title;
    double from = 0.0;
    double to = 1.0;
    Scale scale = Scale::linear;

    /// Where a value lies on the axis: 0 at `from`, 1 at `to`, and beyond these outside the range.
    double position(double value) const;

    /// Round values inside the range. `count` is about how many there are; a logarithmic axis ignores it.
    std::vector<Tick> ticks(int count) const;
};

/// An axis from 0 s to `seconds`.
Axis timeAxis(double seconds);

/// A time as m:ss, from one hour on as h:mm:ss, with the fewest decimals that distinguish times `step`
/// seconds apart. `seconds` is not negative.
std::string clockText(double seconds, double step);

} // namespace audlmd::plot

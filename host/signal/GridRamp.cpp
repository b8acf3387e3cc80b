#include "host/signal/GridRamp.hpp"

#include <algorithm>
#include <cmath>

namespace audlmd {

/// The end is taken as given, so that no rounding of a long ramp can miss the end.
std::int64_t GridRamp::valueOnLine(std::uint64_t offset) const {
    if (offset == length)
        return last;
    const double rise = static_cast<double>(last - first);
    return first + std::llround(rise * static_cast<double>(offset) / static_cast<double>(length));
}

GridRamp::Piece GridRamp::pieceAt(std::uint64_t offset) const {
    // The first interval may have begun before the ramp, and the last may end behind the ramp: both are cut.
    // Both lengths are powers of two.
    const std::uint64_t into = (start + offset) & (interval - 1);
    const std::uint64_t begin = offset - std::min(into, offset);
    const std::uint64_t end = offset + std::min(interval - into, length - offset);

    const std::int64_t value = valueOnLine(begin);
    const std::int64_t rise = valueOnLine(end) - value;
    const auto run = static_cast<std::int64_t>(end - begin);
    // The run has samples, because the offset is less than `length`. rise = slope x run + steeperSamples; the
    // slope is rounded down, for falling ramps, too.
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
    std::int64_t slope = rise / run;
    std::int64_t steeperSamples = rise % run;
    if (steeperSamples < 0) {
        steeperSamples += run;
        --slope;
    }

    // The steeper piece comes last, and starts at the nearest aligned offset inside the interval.
    const std::uint64_t wanted = start + end - static_cast<std::uint64_t>(steeperSamples);
    const std::uint64_t aligned = (wanted + alignment / 2) & ~(alignment - 1);
    const std::uint64_t change = std::clamp(aligned, start + begin, start + end) - start;

    if (offset < change)
        return {begin, change, value, slope};
    const Piece flatter{begin, change, value, slope};
    return {change, end, flatter.valueAt(change), slope + 1};
}

} // namespace audlmd

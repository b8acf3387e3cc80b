#pragma once

#include "host/signal/Clocks.hpp"

#include <cstddef>
#include <vector>

namespace audlmd {

/// Of each kind of problem: a timeline may have thousands of strips with problems.
inline constexpr std::size_t mostSpansOfAStrip = 64;

/// Spans of a clock in a list that does not grow without end: where there are too many, neighbours are
/// joined, with the gap between them.
template <class Clock>
class SpanList {
public:
    explicit SpanList(std::size_t most) : most_(most) {}

    void add(Span<Clock> span);
    /// In order.
    const std::vector<Span<Clock>>& spans() const { return spans_; }

private:
    /// Joins spans that are no further apart than gap_.
    void join();

    std::size_t most_;
    Distance<typename Clock::Rate> gap_;
    std::vector<Span<Clock>> spans_;
};

extern template class SpanList<RangeClock>;
extern template class SpanList<TimelineClock>;

} // namespace audlmd

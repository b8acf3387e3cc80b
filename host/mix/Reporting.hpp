#pragma once

#include "host/mix/MixReport.hpp"
#include "host/signal/Clocks.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
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

/// Counts what is beyond full scale in one channel.
class OverloadMeter {
public:
    /// Keeps up to `mostSpans` spans, see SpanList.
    explicit OverloadMeter(std::size_t mostSpans) : spans_(mostSpans) {}

    /// Looks at samples that are heard `gain` times as loud, from sample `at` on. `gain` is not
    /// negative.
    void measure(std::span<const float> samples, float gain, TimelineSample at);

    Overload overload() const;

private:
    Overload overload_;
    SpanList<TimelineClock> spans_;
};

/// Sums up what happened to the strips of a timeline. Takes memory for strips with problems only.
class StripReports {
public:
    /// Adds what an open strip reports, after so many seconds of rendering. A strip may be added several
    /// times.
    void add(const StripKey& key, const StripReport& report, double seconds);
    /// Adds what a mixer reports of its strips.
    void add(const MixReport& report);
    /// Adds that a strip was silent because it was not open. `failure` says why, or is empty if the strip was
    /// late.
    void addSilence(const StripKey& key, TimelineSpan span, const std::string& failure);

    /// Those with problems, in the order of the timeline.
    std::vector<StripReport> strips() const;
    const SlowestStrip& slowest() const { return slowest_; }

private:
    StripReport& sumOf(const StripKey& key);

    std::map<StripKey, StripReport> strips_;
    SlowestStrip slowest_;
};

} // namespace audlmd

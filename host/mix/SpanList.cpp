#include "host/mix/SpanList.hpp"

#include <algorithm>

namespace audlmd {

template <class Clock>
void SpanList<Clock>::add(Span<Clock> span) {
    const bool atTheEnd = spans_.empty() || span.from >= spans_.back().from;
    if (!spans_.empty() && atTheEnd && span.from <= spans_.back().to + gap_) {
        spans_.back().to = std::max(spans_.back().to, span.to);
        return;
    }
    spans_.push_back(span);
    if (!atTheEnd)
        join();
    for (; spans_.size() > most_; join())
        gap_ = std::max<std::int64_t>(1, gap_ * 2);
}

template <class Clock>
void SpanList<Clock>::join() {
    std::ranges::sort(spans_, {}, &Span<Clock>::from);
    std::size_t last = 0;
    for (const Span<Clock> span : spans_)
        if (span.from <= spans_[last].to + gap_)
            spans_[last].to = std::max(spans_[last].to, span.to);
        else
            spans_[++last] = span;
    spans_.resize(last + 1);
}

template class SpanList<RangeClock>;
template class SpanList<TimelineClock>;

} // namespace audlmd

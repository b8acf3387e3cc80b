#include "host/mix/StripSchedule.hpp"

#include <algorithm>
#include <utility>

namespace audlmd {

StripSchedule::StripSchedule(std::vector<TimelineSpan> strips) : strips_(std::move(strips)) {
    for (std::size_t strip = 0; strip < strips_.size(); ++strip)
        if (strips_[strip].from < strips_[strip].to)
            byStart_.push_back(strip);
    std::ranges::stable_sort(byStart_, {}, [this](std::size_t strip) { return strips_[strip].from; });
}

StripSchedule::Change StripSchedule::moveTo(TimelineSpan window) {
    const bool movesOn = window.from >= window_.from && window.from <= window_.to && window.to >= window_.to;
    window_ = window;
    if (!movesOn)
        return jumpTo();
    Change change;
    std::erase_if(open_, [&](std::size_t strip) {
        if (isInWindow(strip))
            return false;
        change.closed.push_back(strip);
        return true;
    });
    for (; next_ < byStart_.size() && strips_[byStart_[next_]].from < window.to; ++next_)
        if (isInWindow(byStart_[next_])) {
            open_.insert(byStart_[next_]);
            change.opened.push_back(byStart_[next_]);
        }
    return change;
}

StripSchedule::Change StripSchedule::jumpTo() {
    Change change;
    std::set<std::size_t> open;
    for (next_ = 0; next_ < byStart_.size() && strips_[byStart_[next_]].from < window_.to; ++next_)
        if (const std::size_t strip = byStart_[next_]; isInWindow(strip)) {
            open.insert(strip);
            if (!open_.contains(strip))
                change.opened.push_back(strip);
        }
    std::ranges::set_difference(open_, open, std::back_inserter(change.closed));
    open_ = std::move(open);
    return change;
}

std::size_t StripSchedule::mostOpen(Distance<OutputRate> windowLength) const {
    std::vector<TimelineSample> ends;
    std::size_t most = 0;
    // A heap with the earliest end on top.
    for (const std::size_t strip : byStart_) {
        while (!ends.empty() && ends.front() <= strips_[strip].from - windowLength) {
            std::ranges::pop_heap(ends, std::greater());
            ends.pop_back();
        }
        ends.push_back(strips_[strip].to);
        std::ranges::push_heap(ends, std::greater());
        most = std::max(most, ends.size());
    }
    return most;
}

} // namespace audlmd

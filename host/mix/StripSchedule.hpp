#pragma once

#include "host/mix/MixReport.hpp"

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

namespace audlmd {

/// Which strips a mixer keeps open while it moves over the output: those that sound in a window. Strips are
/// numbers, in the order of the timeline.
///
/// Moving on costs as much as the strips that are open and those that are met. Jumping looks at all strips.
class StripSchedule {
public:
    /// Where each strip sounds; an empty span for a strip that never does.
    explicit StripSchedule(std::vector<TimelineSpan> strips);

    struct Change {
        std::vector<std::size_t> opened;
        std::vector<std::size_t> closed;
    };
    /// Moves the window, and tells which strips it meets and which it leaves.
    Change moveTo(TimelineSpan window);

    /// The strips in the window.
    const std::set<std::size_t>& open() const { return open_; }
    TimelineSpan spanOf(std::size_t strip) const { return strips_[strip]; }

    /// The most strips that a window of so many samples meets at one time.
    std::size_t mostOpen(Distance<OutputRate> windowLength) const;

private:
    Change jumpTo();
    bool isInWindow(std::size_t strip) const {
        return strips_[strip].from < window_.to && strips_[strip].to > window_.from;
    }

    std::vector<TimelineSpan> strips_;
    /// The numbers of the strips that sound, by where they start.
    std::vector<std::size_t> byStart_;
    /// In byStart_, the first that starts behind the window.
    std::size_t next_ = 0;
    TimelineSpan window_;
    std::set<std::size_t> open_;
};

} // namespace audlmd

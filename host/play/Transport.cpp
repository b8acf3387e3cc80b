#include "host/play/Transport.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace audlmd {

RangeSample Transport::limited(RangeSample position) const {
    return std::clamp<RangeSample>(position, 0, end_);
}

void Transport::change(bool plays, std::optional<RangeSample> startAt, std::optional<RangeSample> stopAt) {
    ++order_.generation;
    order_.plays = plays;
    order_.startAt = startAt;
    order_.stopAt = stopAt;
}

void Transport::play(const Heard& heard) {
    if (isPlaying(heard))
        return;
    // At its end the sound is played again, from the other end.
    const RangeSample first = speed_ < 0.0 ? end_ : 0;
    const RangeSample last = speed_ < 0.0 ? 0 : end_;
    order_.speed = speed_;
    change(true, heard.position == last ? std::optional(first) : std::nullopt, std::nullopt);
}

void Transport::stop() {
    change(false, std::nullopt, std::nullopt);
}

void Transport::setSpeed(double speed) {
    if (std::exchange(speed_, speed) == speed || !order_.plays || order_.stopAt)
        return;
    order_.speed = speed;
    change(true, std::nullopt, std::nullopt);
}

void Transport::seek(RangeSample position, const Heard& heard) {
    change(isPlaying(heard), limited(position), std::nullopt);
}

void Transport::jog(Distance<SourceRate> samples, const Heard& heard) {
    // No farther than from one end to the other, so that no sum overflows.
    const std::int64_t length = end_ - RangeSample();
    const Distance<SourceRate> distance = std::clamp<std::int64_t>(samples, -length, length);
    if (isPlaying(heard)) {
        change(true, limited(heard.position + distance), std::nullopt);
        return;
    }
    // A jog that is still heard is cut off: the next one starts where it would have ended.
    const RangeSample from = isHeard(heard) ? *order_.stopAt : heard.position;
    order_.speed = samples < 0 ? -1.0 : 1.0;
    change(true, from, limited(from + distance));
}

void Transport::setLoop(std::optional<RangeSpan> range) {
    // In this order no difference overflows.
    if (range && (range->from < 0 || range->to < range->from || range->to > end_ ||
                  range->to - range->from < shortestLoop_))
        throw std::invalid_argument("a loop lies inside the sound and lasts at least 0.05 seconds");
    order_.loop = range;
}

} // namespace audlmd

#include "host/play/Transport.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace audlmd {

std::int64_t Transport::limited(std::int64_t position) const {
    return std::clamp<std::int64_t>(position, 0, length_);
}

void Transport::change(bool plays, std::optional<std::int64_t> startAt, std::optional<std::int64_t> stopAt) {
    ++order_.generation;
    order_.plays = plays;
    order_.startAt = startAt;
    order_.stopAt = stopAt;
}

void Transport::play(const Heard& heard) {
    if (isPlaying(heard))
        return;
    // At its end the sound is played again, from the other end.
    const std::int64_t end = speed_ < 0.0 ? 0 : length_;
    order_.speed = speed_;
    change(true, heard.position == end ? std::optional(length_ - end) : std::nullopt, std::nullopt);
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

void Transport::seek(std::int64_t position, const Heard& heard) {
    change(isPlaying(heard), limited(position), std::nullopt);
}

void Transport::jog(std::int64_t samples, const Heard& heard) {
    // No farther than from one end to the other, so that no sum overflows.
    const std::int64_t distance = std::clamp(samples, -length_, length_);
    if (isPlaying(heard)) {
        change(true, limited(heard.position + distance), std::nullopt);
        return;
    }
    // A jog that is still heard is cut off: the next one starts where it would have ended.
    const std::int64_t from = isHeard(heard) ? *order_.stopAt : heard.position;
    order_.speed = samples < 0 ? -1.0 : 1.0;
    change(true, from, limited(from + distance));
}

void Transport::setLoop(std::optional<LoopRange> range) {
    // In this order no difference overflows.
    if (range && (range->from < 0 || range->to < range->from || range->to > length_ ||
                  range->to - range->from < shortestLoop_))
        throw std::invalid_argument("a loop lies inside the sound and lasts at least 0.05 seconds");
    order_.loop = range;
}

} // namespace audlmd

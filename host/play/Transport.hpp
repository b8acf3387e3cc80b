#pragma once

#include "host/signal/Clocks.hpp"

#include <cstdint>
#include <optional>

namespace audlmd {

/// What is to be played.
struct LiveOrder {
    /// Greater after every change that can be heard at once.
    std::uint64_t generation = 0;
    bool plays = false;
    /// Negative backwards.
    double speed = 1.0;
    /// Where the generation starts. Not set: where the device is.
    std::optional<RangeSample> startAt;
    /// Playing ends here. Not set: at the end of the sound.
    std::optional<RangeSample> stopAt;
    /// Played again and again.
    std::optional<RangeSpan> loop;
};

/// Play, stop, seek, jog, speed and loop, as a state machine: makes the next order of what is asked for and
/// of what the device has come to. Knows no thread and no time.
/// \snippet play.cpp transport
class Transport {
public:
    /// What the device has come to.
    struct Heard {
        /// What the device is given next, from 0 to the length.
        RangeSample position;
        /// Whether the order in force was played to its end.
        bool hasEnded = false;
    };

    /// A loop must not be shorter than `shortestLoop`.
    Transport(Distance<SourceRate> length, Distance<SourceRate> shortestLoop)
        : end_(RangeSample() + length), shortestLoop_(shortestLoop) {}

    /// As LivePlayer::play().
    void play(const Heard& heard);
    /// As LivePlayer::stop().
    void stop();
    /// As LivePlayer::setSpeed(), for any speed.
    void setSpeed(double speed);
    /// As LivePlayer::seek().
    void seek(RangeSample position, const Heard& heard);
    /// As LivePlayer::jog().
    void jog(Distance<SourceRate> samples, const Heard& heard);
    /// Throws std::invalid_argument for a loop that is too short or not inside the sound.
    void setLoop(std::optional<RangeSpan> range);

    /// The order in force.
    const LiveOrder& order() const { return order_; }
    /// The speed of playing; a jog has one of its own in the order.
    double speed() const { return speed_; }
    /// False at the end of the sound, and while jogging.
    bool isPlaying(const Heard& heard) const { return isHeard(heard) && !order_.stopAt; }

private:
    /// Whether something sounds, a jog included.
    bool isHeard(const Heard& heard) const { return order_.plays && !heard.hasEnded; }
    RangeSample limited(RangeSample position) const;
    /// Makes a new generation of the order.
    void change(bool plays, std::optional<RangeSample> startAt, std::optional<RangeSample> stopAt);

    const RangeSample end_;
    const Distance<SourceRate> shortestLoop_;
    double speed_ = 1.0;
    LiveOrder order_;
};

} // namespace audlmd

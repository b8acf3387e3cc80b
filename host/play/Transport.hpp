#pragma once

#include <cstdint>
#include <optional>

namespace audlmd {

/// A part of a sound that is played again and again, in samples of the sound. Sample `to` is excluded.
struct LoopRange {
    std::int64_t from = 0;
    std::int64_t to = 0;

    friend bool operator==(const LoopRange&, const LoopRange&) = default;
};

/// What is to be played. Positions are samples of the sound.
struct LiveOrder {
    /// Greater after every change that can be heard at once.
    std::uint64_t generation = 0;
    bool plays = false;
    /// Negative backwards.
    double speed = 1.0;
    /// Where the generation starts. Not set: where the device is.
    std::optional<std::int64_t> startAt;
    /// Playing ends here. Not set: at the end of the sound.
    std::optional<std::int64_t> stopAt;
    std::optional<LoopRange> loop;
};

/// Play, stop, seek, jog, speed and loop, as a state machine: makes the next order of what is asked for and
/// of what the device has come to. Knows no thread and no time.
class Transport {
public:
    /// What the device has come to.
    struct Heard {
        /// What the device is given next, from 0 to the length.
        std::int64_t position = 0;
        /// Whether the order in force was played to its end.
        bool hasEnded = false;
    };

    /// In samples of the sound; a loop must not be shorter than `shortestLoop`.
    Transport(std::int64_t length, std::int64_t shortestLoop)
        : length_(length), shortestLoop_(shortestLoop) {}

    // What each order does is described in LivePlayer.

    void play(const Heard& heard);
    void stop();
    void setSpeed(double speed);
    void seek(std::int64_t position, const Heard& heard);
    void jog(std::int64_t samples, const Heard& heard);
    /// Throws std::invalid_argument for a loop that is too short or not inside the sound.
    void setLoop(std::optional<LoopRange> range);

    /// The order in force.
    const LiveOrder& order() const { return order_; }
    /// The speed of playing; a jog has one of its own in the order.
    double speed() const { return speed_; }
    /// False at the end of the sound, and while jogging.
    bool isPlaying(const Heard& heard) const { return isHeard(heard) && !order_.stopAt; }

private:
    /// Whether something sounds, a jog included.
    bool isHeard(const Heard& heard) const { return order_.plays && !heard.hasEnded; }
    std::int64_t limited(std::int64_t position) const;
    /// Makes a new generation of the order.
    void change(bool plays, std::optional<std::int64_t> startAt, std::optional<std::int64_t> stopAt);

    const std::int64_t length_;
    const std::int64_t shortestLoop_;
    double speed_ = 1.0;
    LiveOrder order_;
};

} // namespace audlmd

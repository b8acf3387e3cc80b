#pragma once

#include "host/play/LivePlayer.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace audlmd::command {

/// A key of the keyboard: the character that the key types, in lower case, or one of these.
using Key = char32_t;
inline constexpr Key leftKey = 0x110000;
inline constexpr Key rightKey = 0x110001;
inline constexpr Key homeKey = 0x110002;
inline constexpr Key endKey = 0x110003;

/// Turns what a terminal sends into keys. Escape sequences of other keys vanish.
std::vector<Key> keysIn(std::string_view bytes);

// What a transport can be told.
struct Play {};
struct Stop {};
// These four concern the program, not the player.
struct Quit {};
struct NextInput {};
struct PreviousInput {};
struct ShowKeys {};
struct SetSpeed {
    double speed;
};
struct Seek {
    RangeSample position;
};
struct Jog {
    Distance<SourceRate> samples;
};
struct SetLoop {
    std::optional<RangeSpan> range;
};
/// In decibels.
struct SetLevel {
    double decibels;
};
using TransportCommand = std::variant<Play, Stop, Quit, NextInput, PreviousInput, ShowKeys, SetSpeed, Seek,
                                      Jog, SetLoop, SetLevel>;

/// Has the player do what a command says. Does nothing for what concerns the program.
void carryOut(const TransportCommand& command, LivePlayer& player);

/// What keys do depends on where the transport stands.
struct TransportNow {
    bool isPlaying = false;
    double speed = 1.0;
    RangeSample position;
};

/// The keys of the transport: turns key after key into commands. Knows neither terminal nor player.
class TransportKeys {
public:
    /// For the user: all keys, a line or two for each group of them.
    static constexpr const char* help =
        R"(  space    play and stop
  J K L    shuttle backwards, stop, shuttle forwards: 1, 2, 4 and 8 times the
           speed on repeated presses; a fast shuttle steps down before it turns
  , .      a frame back and forth, of the timeline's frame rate or else 1/25 s;
           while stopped the frame is heard
  arrows   a second back and forth; Home and End
  I O X    start and end of a loop; no loop
  + -      the level, from -60 to +10 dB
  N P      the next and the previous input
  ?        these lines
  Ctrl-Z   stops the command until the shell's fg, or bg to play without keys
  Q        ends the command)";

    /// What a jog and a second are, in samples of a sound.
    struct Steps {
        Distance<SourceRate> length = 0;
        /// Per second.
        int sampleRate = 48000;
        /// Frames of a picture per second.
        double frameRate = 25.0;
    };

    /// `level` in decibels: where the keys have put it before.
    explicit TransportKeys(const Steps& sound, double level = 0.0)
        : end_(RangeSample() + sound.length), sampleRate_(sound.sampleRate),
          frame_(std::max(1LL, std::llround(sound.sampleRate / sound.frameRate))), level_(level) {}

    std::vector<TransportCommand> press(Key key, const TransportNow& now);

    /// In decibels.
    double level() const { return level_; }
    /// Where a loop is marked of which the other end is not: at most one of both.
    std::optional<RangeSample> loopStart() const { return loopTo_ ? std::nullopt : loopFrom_; }
    std::optional<RangeSample> loopEnd() const { return loopFrom_ ? std::nullopt : loopTo_; }

private:
    std::vector<TransportCommand> shuttle(double towards, const TransportNow& now) const;
    std::vector<TransportCommand> markLoop(Key end, RangeSample position);
    std::vector<TransportCommand> changeLevel(double decibels);

    RangeSample end_;
    int sampleRate_;
    Distance<SourceRate> frame_;
    std::optional<RangeSample> loopFrom_;
    std::optional<RangeSample> loopTo_;
    double level_;
};

} // namespace audlmd::command

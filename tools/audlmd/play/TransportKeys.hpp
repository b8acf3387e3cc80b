#pragma once

#include "host/play/LivePlayer.hpp"

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
struct Quit {};
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
using TransportCommand = std::variant<Play, Stop, Quit, SetSpeed, Seek, Jog, SetLoop, SetLevel>;

/// Has the player do what a command says. Does nothing for Quit, which concerns the program.
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
    /// A line for the user that names all keys.
    static constexpr const char* help = "space play/stop  J K L shuttle  , . frame  arrows second  Home End  "
                                        "I O loop  X no loop  + - level  Q quit";

    TransportKeys(Distance<SourceRate> length, int sampleRate)
        : end_(RangeSample() + length), sampleRate_(sampleRate) {}

    std::vector<TransportCommand> press(Key key, const TransportNow& now);

private:
    std::vector<TransportCommand> shuttle(double towards, const TransportNow& now) const;
    std::vector<TransportCommand> markLoop(Key end, RangeSample position);
    std::vector<TransportCommand> changeLevel(double decibels);

    RangeSample end_;
    int sampleRate_;
    std::optional<RangeSample> loopFrom_;
    std::optional<RangeSample> loopTo_;
    double level_ = 0.0;
};

} // namespace audlmd::command

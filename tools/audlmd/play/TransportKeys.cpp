#include "tools/audlmd/play/TransportKeys.hpp"

#include "host/signal/GainLaws.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace audlmd::command {
namespace {

constexpr double mostDecibels = 10.0;
constexpr double leastDecibels = -60.0;

constexpr std::array speeds{-8.0, -4.0, -2.0, -1.0, 1.0, 2.0, 4.0, 8.0};

/// The next speed of the shuttle in a direction, so that a fast one steps down before it turns.
double nextSpeed(double speed, double towards) {
    if (towards > 0.0) {
        const auto* const above = std::ranges::upper_bound(speeds, speed);
        return above == speeds.end() ? speeds.back() : *above;
    }
    const auto* const notBelow = std::ranges::lower_bound(speeds, speed);
    return notBelow == speeds.begin() ? speeds.front() : *std::prev(notBelow);
}

/// As terminals send them, behind ESC and one of [ and O.
constexpr std::pair<std::string_view, Key> sequences[] = {{"C", rightKey}, {"D", leftKey},  {"H", homeKey},
                                                          {"F", endKey},   {"1~", homeKey}, {"4~", endKey},
                                                          {"7~", homeKey}, {"8~", endKey}};

const std::pair<Key, TransportCommand> programKeys[] = {
    {U'q', Quit{}}, {U'n', NextInput{}}, {U'p', PreviousInput{}}, {U'?', ShowKeys{}}};

std::vector<TransportCommand> forProgram(Key key) {
    for (const auto& [name, command] : programKeys)
        if (name == key)
            return {command};
    return {};
}

struct Orders {
    LivePlayer& player;

    void operator()(Play) const { player.play(); }
    void operator()(Stop) const { player.stop(); }
    void operator()(Quit) const {}
    void operator()(NextInput) const {}
    void operator()(PreviousInput) const {}
    void operator()(ShowKeys) const {}
    void operator()(SetSpeed command) const { player.setSpeed(command.speed); }
    void operator()(Seek command) const { player.seek(command.position); }
    void operator()(Jog command) const { player.jog(command.samples); }
    void operator()(SetLoop command) const { player.setLoop(command.range); }
    void operator()(SetLevel command) const {
        player.setLevel(static_cast<float>(mixerStyleUValueOfDecibels(command.decibels)));
    }
};

} // namespace

std::vector<Key> keysIn(std::string_view bytes) {
    std::vector<Key> keys;
    while (!bytes.empty()) {
        if (!bytes.starts_with("\033[") && !bytes.starts_with("\033O")) {
            keys.push_back(static_cast<Key>(std::tolower(static_cast<unsigned char>(bytes.front()))));
            bytes.remove_prefix(1);
            continue;
        }
        bytes.remove_prefix(2);
        // A sequence ends with its first letter or tilde.
        const auto* const last = std::ranges::find_if(
            bytes, [](char byte) { return std::isalpha(static_cast<unsigned char>(byte)) || byte == '~'; });
        const auto length = static_cast<std::size_t>(last - bytes.begin()) + (last == bytes.end() ? 0 : 1);
        for (const auto& [sequence, key] : sequences)
            if (bytes.substr(0, length) == sequence)
                keys.push_back(key);
        bytes.remove_prefix(length);
    }
    return keys;
}

std::vector<TransportCommand> TransportKeys::press(Key key, const TransportNow& now) {
    const auto seek = [&](RangeSample position) -> std::vector<TransportCommand> {
        return {Seek{std::clamp<RangeSample>(position, 0, end_)}};
    };
    switch (key) {
    case U' ':
        return {now.isPlaying ? TransportCommand(Stop{}) : TransportCommand(Play{})};
    case U'j':
        return shuttle(-1.0, now);
    case U'k':
        return {Stop{}, SetSpeed{1.0}};
    case U'l':
        return shuttle(1.0, now);
    case U',':
        return {Jog{-frame_}};
    case U'.':
        return {Jog{frame_}};
    case leftKey:
        return seek(now.position - sampleRate_);
    case rightKey:
        return seek(now.position + sampleRate_);
    case homeKey:
        return seek(0);
    case endKey:
        return seek(end_);
    case U'i':
    case U'o':
    case U'x':
        return markLoop(key, now.position);
    case U'+':
    case U'=':
        return changeLevel(1.0);
    case U'-':
        return changeLevel(-1.0);
    default:
        return forProgram(key);
    }
}

std::vector<TransportCommand> TransportKeys::shuttle(double towards, const TransportNow& now) const {
    if (now.isPlaying)
        return {SetSpeed{nextSpeed(now.speed, towards)}};
    return {SetSpeed{towards}, Play{}};
}

/// An end that would leave no loop displaces the other end.
std::vector<TransportCommand> TransportKeys::markLoop(Key end, RangeSample position) {
    const Distance<SourceRate> shortest = sampleRate_ / 10;
    if (end == U'i') {
        loopFrom_ = position;
        if (loopTo_ && *loopTo_ - position < shortest)
            loopTo_.reset();
    } else if (end == U'o') {
        loopTo_ = position;
        if (loopFrom_ && position - *loopFrom_ < shortest)
            loopFrom_.reset();
    } else {
        loopFrom_.reset();
        loopTo_.reset();
    }
    if (loopFrom_ && loopTo_)
        return {SetLoop{RangeSpan{*loopFrom_, *loopTo_}}};
    return {SetLoop{std::nullopt}};
}

std::vector<TransportCommand> TransportKeys::changeLevel(double decibels) {
    level_ = std::clamp(level_ + decibels, leastDecibels, mostDecibels);
    return {SetLevel{level_}};
}

void carryOut(const TransportCommand& command, LivePlayer& player) {
    std::visit(Orders{player}, command);
}

} // namespace audlmd::command

#include "tools/audlmd/play/InputPlayer.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/TemporaryFile.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <thread>
#include <utility>

namespace audlmd::command {
namespace {

using namespace std::chrono_literals;

/// Between two looks at the keyboard, and two drawings of the status line.
constexpr auto statusInterval = 50ms;
/// Between two lines of progress where there is no terminal.
constexpr auto reported = 10s;

/// Throws CommandError where the device cannot play the input. Settles its channels.
DeviceFormat formatFor(const PlaySession& session, PlayInput& input) {
    DeviceFormat format{.channels = input.channels(),
                        .sampleRate = input.sampleRate(),
                        .block = session.options.block,
                        .latency = session.options.latency / 2000.0};
    const std::size_t wanted = format.channels;
    if (session.devices.supports(session.device, format))
        return format;
    for (const std::size_t channels : {8U, 6U, 4U, 2U, 1U}) {
        // One channel is heard on both sides of a device that has no single one.
        if (channels >= wanted && !(wanted == 1 && channels == 2))
            continue;
        format.channels = channels;
        if (!session.devices.supports(session.device, format))
            continue;
        const std::string text = input.foldDownTo(channels);
        if (channels < wanted)
            std::printf("note: the sound device does not play %zu channels: %s\n", wanted, text.c_str());
        return format;
    }
    throw CommandError("the sound device does not play " + std::to_string(wanted) + " channels at " +
                           std::to_string(format.sampleRate) +
                           " Hz; choose another --rate or --device (--list-devices shows what there is)",
                       ExitStatus::output);
}

/// How far rendering must be ahead, in seconds. A device may fill its buffer at one go, and some sound
/// servers take a few blocks more than they were opened with.
double aheadOf(const DeviceFormat& format) {
    return std::min(1.25 * format.latency + static_cast<double>(format.block) / format.sampleRate, 2.0);
}

std::unique_ptr<LivePlayer> playerOf(const PlaySession& session, const PlayInput& input,
                                     const DeviceFormat& format) {
    // The threads that the player starts leave the signals to this thread.
    const EndingSignalsBlocked blocked;
    LiveOptions live;
    live.latency = aheadOf(format);
    live.inlined = session.options.inlined();
    return input.makePlayer(live);
}

TransportKeys::Steps stepsOf(const PlayInput& input, const LivePlayer& player) {
    TransportKeys::Steps steps{.length = player.length(), .sampleRate = player.sampleRate()};
    if (input.frameRate() != 0.0)
        steps.frameRate = input.frameRate();
    return steps;
}

} // namespace

InputPlayer::InputPlayer(PlaySession& session, PlayInput& input, bool isFirst, bool isLast)
    : session_(session), input_(input), isLast_(isLast), format_(formatFor(session, input)),
      player_(playerOf(session, input, format_)), fullScale_(format_.channels),
      keys_(stepsOf(input, *player_), session.level) {
    for (const std::string& note : input_.notes())
        print(note);
    player_->setSpeed(input_.startSpeed(session.options.speed()));
    if (isFirst && session.options.from)
        player_->seek(momentIn(*session.options.from, input_.whole()));
    carryOut(SetLevel{session.level}, *player_);
}

void InputPlayer::openDevice() {
    stream_.emplace(session_.device, format_, [this](std::span<float> frames) {
        const RangeSample position = player_->position();
        player_->fill(frames);
        fullScale_.clip(frames, position);
    });
}

void InputPlayer::leaveDevice() {
    player_->stop();
    // Time to fade out.
    std::this_thread::sleep_for(statusInterval);
    deviceUnderruns_ = status().deviceUnderruns;
    stream_.reset();
}

Turn InputPlayer::play() {
    openDevice();
    player_->play();
    nextReport_ = std::chrono::steady_clock::now() + reported;
    std::optional<Turn> turn;
    while (!turn) {
        stream_->requireActive();
        if (session_.jobs.isAskedToStop())
            stopProcess();
        if (session_.terminal != nullptr && session_.terminal->hasKeys()) {
            if (!std::exchange(session_.isHelped, true))
                print("space stops and plays on, Q ends, ? shows all keys");
            bool isGone = false;
            turn = obey(session_.terminal->read(statusInterval, isGone));
            if (isGone)
                turn = Turn::quit;
            else if (!turn && hasEnded() && !isLast_)
                turn = Turn::next;
            session_.terminal->show(
                statusLine(status(), {session_.terminal->width(), session_.terminal->hasColours()}));
        } else {
            std::this_thread::sleep_for(statusInterval);
            // Nobody can start it again.
            if (!player_->isPlaying())
                turn = wasPlaying_ ? Turn::next : Turn::quit;
            reportProgress();
        }
    }
    leaveDevice();
    session_.level = keys_.level();
    return *turn;
}

void InputPlayer::stopProcess() {
    const bool plays = player_->isPlaying();
    leaveDevice();
    if (session_.terminal != nullptr)
        session_.terminal->restore();
    session_.jobs.stop();
    openDevice();
    if (plays)
        player_->play();
}

std::optional<Turn> InputPlayer::obey(const std::string& typed) {
    std::optional<Turn> turn;
    for (const Key key : keysIn(typed))
        for (const TransportCommand& command :
             keys_.press(key, {player_->isPlaying(), player_->speed(), player_->position()})) {
            if (std::holds_alternative<Quit>(command))
                turn = Turn::quit;
            else if (std::holds_alternative<NextInput>(command) && !isLast_)
                turn = Turn::next;
            else if (std::holds_alternative<PreviousInput>(command))
                turn = Turn::previous;
            else if (std::holds_alternative<ShowKeys>(command))
                print(TransportKeys::help);
            else if (std::holds_alternative<Stop>(command))
                wasPlaying_ = false;
            carryOut(command, *player_);
        }
    return turn;
}

bool InputPlayer::hasEnded() {
    const bool isPlaying = player_->isPlaying();
    const bool wasPlaying = std::exchange(wasPlaying_, isPlaying);
    return wasPlaying && !isPlaying &&
           std::signbit(player_->speed()) == std::signbit(session_.options.speed());
}

PlayStatus InputPlayer::status() {
    PlayStatus status{.name = input_.nameAt(player_->position().number()),
                      .isPlaying = player_->isPlaying(),
                      .loops = player_->loop().has_value(),
                      .loopStart = keys_.loopStart(),
                      .loopEnd = keys_.loopEnd(),
                      .speed = player_->speed(),
                      .position = player_->position().number(),
                      .length = player_->length(),
                      .sampleRate = player_->sampleRate(),
                      .frameRate = input_.frameRate(),
                      .peaks = {},
                      .level = keys_.level(),
                      .clipped = fullScale_.clipped(),
                      .underruns = player_->underruns(),
                      .deviceUnderruns = deviceUnderruns_ + (stream_ ? stream_->underruns() : 0)};
    for (std::size_t channel = 0; channel < player_->channels(); ++channel)
        status.peaks.push_back(player_->takePeak(channel));
    status.heldPeak = peak_.with(*std::ranges::max_element(status.peaks));
    return status;
}

void InputPlayer::print(const std::string& line) {
    if (session_.terminal != nullptr)
        session_.terminal->tell(line);
    else
        std::puts(line.c_str());
}

void InputPlayer::reportProgress() {
    if (session_.terminal != nullptr || std::chrono::steady_clock::now() < nextReport_)
        return;
    nextReport_ += reported;
    std::puts(statusLine(status()).c_str());
    std::fflush(stdout);
}

void InputPlayer::tell() const {
    const LiveUnderruns underruns = player_->underruns();
    for (const std::string& line : fullScale_.lines(player_->sampleRate()))
        std::puts(line.c_str());
    std::puts(underrunText(underruns, deviceUnderruns_).c_str());
    input_.tell(player_->report());
}

} // namespace audlmd::command

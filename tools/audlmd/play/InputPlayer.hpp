#pragma once

#include "tools/audlmd/play/FullScale.hpp"
#include "tools/audlmd/play/PlayInput.hpp"
#include "tools/audlmd/play/SoundDevice.hpp"
#include "tools/audlmd/play/StatusLine.hpp"
#include "tools/audlmd/play/Terminal.hpp"
#include "tools/audlmd/play/TransportKeys.hpp"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace audlmd::command {

/// What stays from one input to the next.
struct PlaySession {
    const PlayOptions& options;
    const SoundDevices& devices;
    int device;
    JobControl& jobs;
    /// Null where there is no terminal.
    KeyTerminal* terminal;
    /// Of the keys, in decibels.
    double level = 0.0;
    /// Whether the user has been told of the keys.
    bool isHelped = false;
};

/// What comes after an input.
enum class Turn { next, previous, quit };

/// One input, played on the sound device.
class InputPlayer {
public:
    /// Prints what is known of the input before it is played. Throws CommandError where the device cannot
    /// play the input, and what PlayInput and LivePlayer throw.
    InputPlayer(PlaySession& session, PlayInput& input, bool isFirst, bool isLast);

    /// Plays until there is something else to do, and leaves the device. Without keys that is the end of the
    /// sound; with keys the last input waits there. Throws CommandError where the device stops.
    Turn play();

    /// Prints what was late or clipped. Throws CommandError where a part of the sound has failed.
    void tell() const;

private:
    void openDevice();
    void leaveDevice();
    /// Stops the process, without sound and with the terminal as it was.
    void stopProcess();
    std::optional<Turn> obey(const std::string& typed);
    /// Whether the sound has just come to its end in the direction in which inputs follow one another.
    bool hasEnded();
    PlayStatus status();
    void print(const std::string& line);
    void reportProgress();

    PlaySession& session_;
    PlayInput& input_;
    const bool isLast_;
    DeviceFormat format_;
    std::unique_ptr<LivePlayer> player_;
    FullScale fullScale_;
    TransportKeys keys_;
    HeldPeak peak_;
    bool wasPlaying_ = true;
    /// Of streams that are closed.
    std::uint64_t deviceUnderruns_ = 0;
    std::chrono::steady_clock::time_point nextReport_;
    /// Declared last: its callback uses the others.
    std::optional<SoundDevices::Stream> stream_;
};

} // namespace audlmd::command

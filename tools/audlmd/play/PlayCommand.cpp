#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/files/TemporaryFile.hpp"
#include "tools/audlmd/play/PlayInput.hpp"
#include "tools/audlmd/play/PlayOptions.hpp"
#include "tools/audlmd/play/SoundDevice.hpp"
#include "tools/audlmd/play/StatusLine.hpp"
#include "tools/audlmd/play/Terminal.hpp"
#include "tools/audlmd/play/TransportKeys.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
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

PlayStatus statusOf(LivePlayer& player, const SoundDevices::Stream& stream) {
    PlayStatus status{.isPlaying = player.isPlaying(),
                      .loops = player.loop().has_value(),
                      .speed = player.speed(),
                      .position = player.position().number(),
                      .length = player.length(),
                      .sampleRate = player.sampleRate(),
                      .peaks = {},
                      .underruns = player.underruns(),
                      .deviceUnderruns = stream.underruns()};
    for (std::size_t channel = 0; channel < player.channels(); ++channel)
        status.peaks.push_back(player.takePeak(channel));
    return status;
}

/// In the background there are no keys, and the command ends as without a terminal.
void followKeys(LivePlayer& player, const SoundDevices::Stream& stream) {
    const KeyTerminal terminal;
    TransportKeys keys(player.length(), player.sampleRate());
    bool isHelped = false;
    bool quits = false;
    while (!quits) {
        stream.requireActive();
        if (!terminal.hasKeys()) {
            std::this_thread::sleep_for(statusInterval);
            quits = !player.isPlaying();
            continue;
        }
        if (!std::exchange(isHelped, true))
            std::puts(TransportKeys::help);
        for (const Key key : keysIn(terminal.read(statusInterval, quits)))
            for (const TransportCommand& command :
                 keys.press(key, {player.isPlaying(), player.speed(), player.position()}))
                if (std::holds_alternative<Quit>(command))
                    quits = true;
                else
                    carryOut(command, player);
        terminal.show(statusLine(statusOf(player, stream)));
    }
}

void playToTheEnd(LivePlayer& player, const SoundDevices::Stream& stream) {
    auto next = std::chrono::steady_clock::now() + reported;
    while (player.isPlaying()) {
        std::this_thread::sleep_for(statusInterval);
        stream.requireActive();
        if (std::chrono::steady_clock::now() < next)
            continue;
        next += reported;
        std::puts(statusLine(statusOf(player, stream)).c_str());
        std::fflush(stdout);
    }
}

/// Throws CommandError where the device cannot play the input. Settles its channels.
DeviceFormat formatFor(const SoundDevices& devices, int device, PlayInput& input,
                       const PlayOptions& options) {
    DeviceFormat format{.channels = input.channels(),
                        .sampleRate = input.sampleRate(),
                        .block = options.block,
                        .latency = options.latency / 2000.0};
    const std::size_t wanted = format.channels;
    if (devices.supports(device, format))
        return format;
    for (const std::size_t channels : {8U, 6U, 4U, 2U, 1U}) {
        // One channel is heard on both sides of a device that has no single one.
        if (channels >= wanted && !(wanted == 1 && channels == 2))
            continue;
        format.channels = channels;
        if (!devices.supports(device, format))
            continue;
        const std::string text = input.foldDownTo(channels);
        if (channels < wanted)
            std::printf("the sound device does not play %zu channels: %s\n", wanted, text.c_str());
        return format;
    }
    throw CommandError("the sound device does not play " + std::to_string(wanted) + " channels at " +
                           std::to_string(format.sampleRate) +
                           " Hz; choose another --rate or --device (--list-devices shows what there is)",
                       ExitStatus::output);
}

/// Throws CommandError where a part of the sound has failed.
void tell(LivePlayer& player, const PlayInput& input) {
    const LiveReport report = player.report();
    for (const StripReport& strip : report.strips)
        if (strip.underrunSamples != 0)
            std::printf("late: %s, %llu samples\n", input.nameOf(strip).c_str(),
                        static_cast<unsigned long long>(strip.underrunSamples));
    if (!report.sound.failure.empty())
        throw CommandError(report.sound.failure, ExitStatus::input);
    for (const StripReport& strip : report.strips)
        if (!strip.failure.empty())
            throw CommandError(input.nameOf(strip) + ": " + strip.failure, ExitStatus::incomplete);
}

/// How far rendering must be ahead, in seconds. A device may fill its buffer at one go, and some sound
/// servers take a few blocks more than they were opened with.
double aheadOf(const DeviceFormat& format) {
    return std::min(1.25 * format.latency + static_cast<double>(format.block) / format.sampleRate, 2.0);
}

void play(const PlayOptions& options) {
    options.requireCompatible();
    const SoundDevices devices;
    if (options.listDevices) {
        devices.find(std::nullopt); // Throws where there is none.
        std::fputs(devices.list().c_str(), stdout);
        return;
    }
    PlayInput input(options);
    const int device = devices.find(options.device);
    const DeviceFormat format = formatFor(devices, device, input, options);
    std::unique_ptr<LivePlayer> player;
    {
        // The threads that the player starts leave the signals to this thread.
        const EndingSignalsBlocked blocked;
        LiveOptions live;
        live.latency = aheadOf(format);
        live.inlined = options.inlined();
        player = input.makePlayer(live);
    }
    player->setSpeed(options.speed());
    if (options.from)
        player->seek(momentIn(*options.from, input.whole()));
    {
        const SoundDevices::Stream stream(device, format,
                                          [&](std::span<float> frames) { player->fill(frames); });
        player->play();
        if (KeyTerminal::isThere())
            followKeys(*player, stream);
        else
            playToTheEnd(*player, stream);
        // Time to fade out.
        player->stop();
        std::this_thread::sleep_for(statusInterval);
        std::puts(underrunText(statusOf(*player, stream)).c_str());
    }
    tell(*player, input);
}

} // namespace

void addPlayCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("play", "Play a sound file or a timeline, with keys to shuttle");
    const auto options = std::make_shared<PlayOptions>();
    options->declare(*command);
    command->callback([options] { play(*options); });
}

} // namespace audlmd::command

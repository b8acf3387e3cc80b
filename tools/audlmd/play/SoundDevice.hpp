#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace audlmd::command {

/// What a sound device is asked for.
struct DeviceFormat {
    std::size_t channels = 2;
    /// In samples per second.
    int sampleRate = 48000;
    /// Frames that the device asks for at a time.
    std::size_t block = 256;
    /// Between a callback and the loudspeaker, in seconds. The device may take more.
    double latency = 0.025;
};

/// The sound devices of the machine that can play, through PortAudio. There may be one object at a time.
class SoundDevices {
public:
    SoundDevices();
    ~SoundDevices();
    SoundDevices(const SoundDevices&) = delete;
    SoundDevices& operator=(const SoundDevices&) = delete;

    /// One line for each device, the default one with a star.
    std::string list() const;

    /// The default device, or the one whose name is, or else contains, `name`. Throws CommandError where
    /// there is none, or more than one.
    int find(const std::optional<std::string>& name) const;

    /// Whether the device takes floats in this format. Throws CommandError where another program has the
    /// device.
    bool supports(int device, const DeviceFormat& format) const;

    /// Asks for interleaved frames, on a thread of PortAudio's, until destroyed. Until then standard error is
    /// closed to the whole process: keep errors for afterwards.
    class Stream {
    public:
        using Fill = std::function<void(std::span<float>)>;

        /// `fill` must not throw, allocate or wait. Throws CommandError with PortAudio's reason.
        Stream(int device, const DeviceFormat& format, Fill fill);
        /// Plays what the device has taken already, for as long as its latency.
        ~Stream();
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;

        /// Throws CommandError where the device asks for no more frames, as when it was unplugged.
        void requireActive() const;

        /// How often the device, or the sound server, has played on without frames of ours because a callback
        /// came too late. Counts what the host interface notices; ALSA and JACK do.
        std::uint64_t underruns() const;

        struct Callback;

    private:
        std::unique_ptr<Callback> callback_;
        void* stream_ = nullptr;
    };
};

} // namespace audlmd::command

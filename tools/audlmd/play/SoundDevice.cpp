#include "tools/audlmd/play/SoundDevice.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/TemporaryFile.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <portaudio.h>
#include <unistd.h>
#include <utility>

namespace audlmd::command {

/// The sound libraries, PortAudio among them, write a page about devices that are not there, and lines about
/// what they meet while they play. Standard error is closed to them, so that the user sees our line alone.
/// That holds for the whole process; no thread of ours writes errors meanwhile. Where a call fails, standard
/// error stays as it is.
class QuietLibraries {
public:
    QuietLibraries() : errors_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
        std::fflush(stderr);
        const int nowhere = errors_ == -1 ? -1 : open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDERR_FILENO);
        close(nowhere);
    }
    ~QuietLibraries() {
        std::fflush(stderr);
        dup2(errors_, STDERR_FILENO);
        close(errors_);
    }
    QuietLibraries(const QuietLibraries&) = delete;
    QuietLibraries& operator=(const QuietLibraries&) = delete;

private:
    int errors_;
};

namespace {

void require(PaError result, const std::string& what) {
    if (result == paNoError)
        return;
    // The sound system below may have said more.
    const PaHostErrorInfo* const host = Pa_GetLastHostErrorInfo();
    const bool knowsMore = result == paUnanticipatedHostError && host != nullptr &&
                           host->errorText != nullptr && *host->errorText != '\0';
    throw CommandError(what + ": " + (knowsMore ? host->errorText : Pa_GetErrorText(result)),
                       ExitStatus::output);
}

PaStreamParameters parametersFor(int device, const DeviceFormat& format) {
    return {.device = device,
            .channelCount = static_cast<int>(format.channels),
            .sampleFormat = paFloat32,
            .suggestedLatency = format.latency,
            .hostApiSpecificStreamInfo = nullptr};
}

/// Indices, in PortAudio's order.
std::vector<int> playingDevices() {
    std::vector<int> devices;
    for (int device = 0; device < Pa_GetDeviceCount(); ++device)
        if (Pa_GetDeviceInfo(device)->maxOutputChannels > 0)
            devices.push_back(device);
    return devices;
}

} // namespace

SoundDevices::SoundDevices() {
    // PortAudio's threads leave the signals to this thread.
    const EndingSignalsBlocked blocked;
    const QuietLibraries quiet;
    require(Pa_Initialize(), "the sound devices cannot be listed");
}

SoundDevices::~SoundDevices() {
    const QuietLibraries quiet;
    Pa_Terminate();
}

std::string SoundDevices::list() const {
    std::string lines;
    for (const int device : playingDevices()) {
        const PaDeviceInfo& info = *Pa_GetDeviceInfo(device);
        lines += (device == Pa_GetDefaultOutputDevice() ? "* " : "  ") + std::string(info.name) + "  (" +
                 Pa_GetHostApiInfo(info.hostApi)->name + ", " + std::to_string(info.maxOutputChannels) +
                 " channels, " + std::to_string(static_cast<int>(info.defaultSampleRate)) + " Hz)\n";
    }
    return lines;
}

int SoundDevices::find(const std::optional<std::string>& name) const {
    const std::vector<int> devices = playingDevices();
    if (devices.empty())
        throw CommandError("this machine has no sound device to play on", ExitStatus::output);
    if (!name)
        return std::max(Pa_GetDefaultOutputDevice(), devices.front());
    std::vector<int> found;
    for (const int device : devices) {
        const std::string candidate = Pa_GetDeviceInfo(device)->name;
        if (candidate == *name)
            return device;
        if (words::lowered(candidate).find(words::lowered(*name)) != std::string::npos)
            found.push_back(device);
    }
    if (found.size() != 1)
        throw CommandError(
            (found.empty() ? "no sound device is called '" : "several sound devices are called '") + *name +
            "'; --list-devices shows the names");
    return found.front();
}

bool SoundDevices::supports(int device, const DeviceFormat& format) const {
    const QuietLibraries quiet;
    const PaStreamParameters parameters = parametersFor(device, format);
    const PaError result = Pa_IsFormatSupported(nullptr, &parameters, format.sampleRate);
    if (result == paDeviceUnavailable)
        throw CommandError("the sound device '" + std::string(Pa_GetDeviceInfo(device)->name) +
                               "' is in use; end what uses it, or choose another with --device",
                           ExitStatus::output);
    return result == paFormatIsSupported;
}

struct SoundDevices::Stream::Callback {
    QuietLibraries quiet{};
    Fill fill;
    std::size_t channels;
    std::atomic<std::uint64_t> underruns{0};
};

namespace {

int callBack(const void*, void* output, unsigned long frames, const PaStreamCallbackTimeInfo*,
             PaStreamCallbackFlags flags, void* user) {
    auto& callback = *static_cast<SoundDevices::Stream::Callback*>(user);
    if ((flags & paOutputUnderflow) != 0)
        callback.underruns.fetch_add(1, std::memory_order_relaxed);
    callback.fill({static_cast<float*>(output), frames * callback.channels});
    return paContinue;
}

} // namespace

SoundDevices::Stream::Stream(int device, const DeviceFormat& format, Fill fill)
    : callback_(new Callback{.fill = std::move(fill), .channels = format.channels}) {
    const std::string what =
        std::string("the sound device '") + Pa_GetDeviceInfo(device)->name + "' does not play";
    const PaStreamParameters parameters = parametersFor(device, format);
    const EndingSignalsBlocked blocked;
    // Without dithering and clipping of PortAudio's own, the device gets the samples as they are.
    require(Pa_OpenStream(&stream_, nullptr, &parameters, format.sampleRate, format.block,
                          paClipOff | paDitherOff, &callBack, callback_.get()),
            what);
    if (const PaError result = Pa_StartStream(stream_); result != paNoError) {
        Pa_CloseStream(stream_);
        require(result, what);
    }
}

SoundDevices::Stream::~Stream() {
    // To stop a stream plays it to its end, but some sound servers drop what they have not played yet.
    Pa_Sleep(std::lround(1000.0 * Pa_GetStreamInfo(stream_)->outputLatency));
    Pa_StopStream(stream_);
    Pa_CloseStream(stream_);
}

void SoundDevices::Stream::requireActive() const {
    if (Pa_IsStreamActive(stream_) != 1)
        throw CommandError("the sound device has stopped; is it still connected?", ExitStatus::output);
}

std::uint64_t SoundDevices::Stream::underruns() const {
    return callback_->underruns.load(std::memory_order_relaxed);
}

} // namespace audlmd::command

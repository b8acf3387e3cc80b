#pragma once

#include <cstddef>
#include <memory>
#include <span>

namespace audlmd {

/// A sound from one position on, at one speed. Positions are samples of the sound.
class LiveVoice {
public:
    LiveVoice() = default;
    virtual ~LiveVoice() = default;
    LiveVoice(const LiveVoice&) = delete;
    LiveVoice& operator=(const LiveVoice&) = delete;

    /// Renders the next frames: a buffer for each channel, all of one length. Returns how many, which may be
    /// fewer before the end of the sound, too. Does not wait for samples.
    virtual std::size_t render(std::span<const std::span<float>> channels) = 0;

    virtual bool isAtEnd() const = 0;
    /// Where the next frame lies.
    virtual double position() const = 0;
    /// How far each frame moves on; negative backwards.
    virtual double step() const = 0;
};

} // namespace audlmd

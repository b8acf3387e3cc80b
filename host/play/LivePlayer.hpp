#pragma once

#include "host/mix/Media.hpp"
#include "host/mix/Timeline.hpp"
#include "host/play/LiveOptions.hpp"
#include "host/play/LiveReport.hpp"
#include "host/play/Transport.hpp"
#include "host/signal/StripSettings.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace audlmd {

/// Plays a sound or a timeline live, forwards and backwards, at any speed, from any place. Knows no audio
/// device: the program's audio callback calls fill(), all other functions are for the program's other
/// threads.
///
/// A render thread keeps a short ring filled; fill() copies from the ring, fades and counts. Nothing waits
/// for a slow disk: samples that are not loaded in time are silent, and counted as late. Frames that the
/// render thread did not deliver in time are counted apart, as starved. All changes fade out and in for some
/// milliseconds. Nothing is clipped: samples beyond full scale are for the program to clip, behind
/// setLevel(), where its device needs that.
///
/// Positions are samples of the sound: of a material, source samples from the start of the strip's range, in
/// the order in which the strip is played; of a timeline, output samples. At a steady speed the device gets
/// the bytes of a StripPlayer, or at speed 1 of a Mixer, from the position at which that speed began.
///
/// Functions without a note may be called from any thread, and wait at most for a mutex held for an instant.
/// \snippet play.cpp player
class LivePlayer {
public:
    /// Plays all channels of the media with the same settings, whose cookie, sample rate and waiting are
    /// ignored. An empty range stands for all of the media. Stands at position 0 and does not play yet.
    /// Throws std::invalid_argument for options out of range and for what StripPlan refuses.
    LivePlayer(const Media& media, StripSettings settings, const LiveOptions& options = {});
    /// Plays a timeline, which must not be empty. Strips that fail are silent, and reported. `open` is called
    /// by two threads at the same time. Throws what Mixer throws.
    ///
    /// At speed 1 a mixer that does not wait takes over after a second or so: then a slow disk silences the
    /// strips that lie on the disk, and the report names them. Before, at other speeds, and while strips
    /// sound that carry state, late samples are those of the whole mix.
    LivePlayer(Timeline timeline, OpenMedia open, const LiveOptions& options = {});
    /// Calls a start off that is loading, and waits for reads that have begun. The callback must not run any
    /// more.
    ~LivePlayer();
    LivePlayer(const LivePlayer&) = delete;
    LivePlayer& operator=(const LivePlayer&) = delete;

    /// Samples in a frame.
    std::size_t channels() const;
    /// In frames per second.
    int sampleRate() const;
    /// In samples.
    std::int64_t length() const;

    /// The audio callback's: fills a buffer of interleaved frames, with silence where nothing plays.
    /// Allocates nothing, takes no lock, makes no system call. From one thread at a time.
    void fill(std::span<float> interleaved) noexcept;

    /// Plays on from position(). At the end of the sound, in the direction of the speed, plays it again.
    void play();
    /// Fades out, and keeps the position.
    void stop();
    /// 1 is the sound's own speed, -1 plays backwards. Takes effect at once while playing. Throws
    /// std::invalid_argument for 0, and for speeds that together with the strip's own are beyond slowestSpeed
    /// and fastestSpeed.
    void setSpeed(double speed);
    /// Jumps; a player that plays goes on playing. Positions beyond the sound count as its ends.
    void seek(RangeSample position);
    /// While stopped, plays so many samples of the sound, backwards where negative, and stops behind them.
    /// While playing, jumps by as many.
    void jog(Distance<SourceRate> samples);
    /// Plays a part again and again: from its end on the sound goes on at its start. Throws
    /// std::invalid_argument for parts shorter than 0.05 seconds, or outside the sound.
    void setLoop(std::optional<RangeSpan> range);
    /// A u-value of the mixer-style curve; 1 is full level.
    void setLevel(float uValue);

    // What the device was given last.

    /// The next sample of the sound that the device is given.
    RangeSample position() const;
    /// That of the last setSpeed(); 1 before.
    double speed() const;
    /// False at the end of the sound, and while jogging.
    bool isPlaying() const;
    /// Of the last setLoop().
    std::optional<RangeSpan> loop() const;
    /// The largest magnitude of a channel since the last call.
    float takePeak(std::size_t channel);
    /// Waits for nothing.
    LiveUnderruns underruns() const;

    /// All that was late or failed. May wait until some blocks are rendered, but not for a start that loads.
    LiveReport report() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace audlmd

#pragma once

#include "host/play/LivePlayer.hpp"
#include "tools/audlmd/mix/MediaFinder.hpp"
#include "tools/audlmd/play/PlayOptions.hpp"

#include <memory>
#include <string>

namespace audlmd::command {

/// What `play` plays: a sound file with the sound options, or a timeline.
class PlayInput {
public:
    /// Reads the file. Throws CommandError, SoundFileError and what reading a timeline throws.
    explicit PlayInput(const PlayOptions& options);

    std::size_t channels() const;
    int sampleRate() const;
    /// What moments on the command line are in.
    RangeOf whole() const;
    /// Plays the one channel of the input on two, for devices that have no single one.
    void doubleChannel();

    /// Names a strip of the timeline.
    std::string nameOf(const StripReport& strip) const;

    /// Throws what LivePlayer throws.
    std::unique_ptr<LivePlayer> makePlayer(const LiveOptions& live) const;

private:
    void openSound();
    void openTimeline();

    const PlayOptions& options_;
    const bool isTimeline_;
    std::unique_ptr<MediaFinder> finder_;
    Media media_;
    StripSettings settings_;
    Timeline timeline_;
};

} // namespace audlmd::command

#pragma once

#include "host/play/LivePlayer.hpp"
#include "tools/audlmd/mix/MediaFinder.hpp"
#include "tools/audlmd/play/PlayOptions.hpp"

#include <memory>
#include <string>
#include <vector>

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
    /// Plays the input on another number of channels, for a device that does not have as many. Returns what
    /// becomes of the channels, in words. Throws CommandError where they cannot be folded down.
    std::string foldDownTo(std::size_t channels);

    /// Names a strip of the timeline.
    std::string nameOf(const StripReport& strip) const;

    /// Throws what LivePlayer throws.
    std::unique_ptr<LivePlayer> makePlayer(const LiveOptions& live) const;

private:
    void openSound();
    void openTimeline();
    ChannelLayout layout() const;

    const PlayOptions& options_;
    const bool isTimeline_;
    std::unique_ptr<MediaFinder> finder_;
    Media media_;
    StripSettings settings_;
    Timeline timeline_;
    std::vector<Marker> markers_;
};

} // namespace audlmd::command

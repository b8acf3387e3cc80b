#pragma once

#include "host/play/LivePlayer.hpp"
#include "host/timeline/MediaFinder.hpp"
#include "tools/audlmd/play/PlayOptions.hpp"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace audlmd::command {

/// One of what `play` plays: a sound file with the sound options, or a timeline.
class PlayInput {
public:
    /// Reads the file, which may be the copy of a stream; `name` is what the user has named. Throws
    /// CommandError, SoundFileError and what reading a timeline throws.
    PlayInput(const PlayOptions& options, const std::filesystem::path& name, const PlayableFile& file);

    std::size_t channels() const;
    int sampleRate() const;
    /// In frames of pictures per second; 0 where it is not known.
    double frameRate() const { return timeline_.frameRate; }
    /// What the transport starts at, for a speed that the user has asked for.
    double startSpeed(double asked) const { return asked / settings_.speed; }
    /// What moments on the command line are in.
    RangeOf whole() const;
    /// Plays the input on another number of channels, for a device that does not have as many. Returns what
    /// becomes of the channels, in words. Throws CommandError where they cannot be folded down.
    std::string foldDownTo(std::size_t channels);

    /// What is not played as it was written: lines for the user, known before anything is played.
    const std::vector<std::string>& notes() const { return notes_; }
    /// What is heard there: the clip of a timeline that began last, and how many more there are; else the
    /// file.
    std::string nameAt(TimelineSample position) const;

    /// Throws what LivePlayer throws.
    std::unique_ptr<LivePlayer> makePlayer(const LiveOptions& live) const;

    /// Prints what was late. Throws CommandError where a part of the sound has failed.
    void tell(const LiveReport& report) const;

private:
    void openSound(const PlayableFile& file);
    void openTimeline();
    /// Makes the timeline's channels louder or softer.
    void amplify(double decibels);
    void addTimelineNotes();
    ChannelLayout layout() const;
    std::string nameOf(const StripReport& strip) const;

    const PlayOptions& options_;
    const std::filesystem::path name_;
    const bool isTimeline_;
    std::unique_ptr<timeline::MediaFinder> finder_;
    Media media_;
    StripSettings settings_;
    Timeline timeline_;
    std::vector<Marker> markers_;
    std::vector<std::string> notes_;
    /// Clips that are silent by themselves, as the notes say.
    std::ptrdiff_t silences_ = 0;
};

} // namespace audlmd::command

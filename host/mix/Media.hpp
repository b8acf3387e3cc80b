#pragma once

#include "host/cache/SampleSource.hpp"
#include "host/cache/SoundFile.hpp"
#include "host/mix/Routing.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace audlmd {

/// All channels of a recording, which have one length and one sample rate.
/// \snippet timeline.cpp media
struct Media {
    std::vector<std::shared_ptr<SampleSource>> channels;
    /// In samples per second.
    int sampleRate = 48000;
    /// What the channels are. Empty: unknown.
    ChannelLayout layout = {};
    /// Whether the recording is shorter than it says itself.
    bool isTruncated = false;
};

/// What the channels of media are, of which there are as many.
ChannelLayout layoutOf(const Media& media);

/// Media whose channels are sums of others: each sample is summed in double precision in the order of the
/// channels, and rounded once. A sum of one channel at full level is that channel, bit for bit. Do this
/// before rates are converted: fewer channels are left. The routing must be as wide as the media.
Media foldedDown(const Media& media, const FoldDown& foldDown);

/// The names in a name of several files, as in "L.wav#with=R.wav", whose channels are one recording in the
/// order of the files. Only the name itself where it holds no such mark.
std::vector<std::string> namesIn(const std::string& media);
/// The name of several files. There must be one.
std::string jointName(const std::vector<std::string>& files);

/// Opens what a strip names as its media. A mixer calls this on a thread of its own, for one medium at a
/// time, shortly before the medium sounds. A std::exception makes the strip silent; its text goes to the
/// report.
using OpenMedia = std::function<Media(const std::string& media)>;

/// Takes the name as a path, or as those of several files, see namesIn(), and opens sound files, by itself an
/// OpenMedia. Throws SoundFileError, also for several files of which one has another length or rate.
Media openSoundFile(const std::string& path);
/// The same, of recordings that may be truncated.
Media openRecording(const std::string& path, Truncated truncated);

/// What users are told of a recording that is shorter than it says, by its name for messages. In frames, and
/// frames per second.
std::string truncatedText(const std::string& name, std::int64_t frames, int sampleRate);

} // namespace audlmd

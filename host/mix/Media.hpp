#pragma once

#include "host/cache/SampleSource.hpp"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace audlmd {

/// All channels of a recording, which have one length and one sample rate.
struct Media {
    std::vector<std::shared_ptr<SampleSource>> channels;
    /// In samples per second.
    int sampleRate = 48000;
};

/// Opens what a strip names as its media. A mixer calls this on a thread of its own, for one medium at a
/// time, shortly before the medium sounds. A std::exception makes the strip silent; its text goes to the
/// report.
using OpenMedia = std::function<Media(const std::string& media)>;

/// Takes the name as a path and opens a sound file. Throws SoundFileError.
Media openSoundFile(const std::string& path);

} // namespace audlmd

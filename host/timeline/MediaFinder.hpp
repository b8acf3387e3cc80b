#pragma once

#include "host/media/DecodedCache.hpp"
#include "host/mix/Media.hpp"
#include "host/services/Threads.hpp"
#include "host/timeline/TimelineFiles.hpp"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::timeline {

/// What has become of the search for a medium.
struct FoundMedium {
    /// What stands there under the medium's name, if only a folder. Empty: nothing was found.
    std::filesystem::path path;
    /// What is opened: the path, or what is decoded of it.
    std::filesystem::path file = {};
    /// Why the medium cannot be played, in one line that names the medium or its file. Empty: it can.
    std::string failure;
    /// How many files fit the medium's path as well as the one that was taken, that one included.
    std::size_t equallyGood = 0;
    /// Not set where the medium cannot be played.
    std::optional<MediaFacts> facts;
    /// Empty where the medium cannot be played.
    ChannelLayout layout = {};
    /// What is not as the medium states it, in a line that names the medium. Empty: nothing.
    std::string note = {};
    /// The paths of a medium's other files, where it has several.
    std::vector<std::filesystem::path> others = {};
};

/// How media are looked for.
struct MediaSearch {
    /// Below them is looked for media that are not where the timeline says.
    std::vector<std::filesystem::path> folders = {};
    /// What is opened of a medium that was found, as by DecodedCache::playable(), but that streams are
    /// counted from 1 and need not be named. Not set: the medium itself, and no film is played.
    std::function<PlayableFile(const std::filesystem::path& medium, std::optional<int> stream)> playable = {};
    Truncated truncated = Truncated::refused;
    /// Called with each place where a medium is looked for by its whole path, before, and with what is found.
    std::function<void(const std::filesystem::path&)> looksAt = {};
};

/// Finds and opens the media of a timeline. Opens each medium once to look at it, and keeps what was found.
///
/// A medium that is not where the timeline says is looked for by file name in the folders, and below them.
/// Among several of that name the one is taken whose path ends most like the timeline's; paths of Windows are
/// compared by their names, too. In place of a film container, and of a missing one, a sound file of the same
/// name is taken, where there is one; a medium that is a name without an extension for sound is found in the
/// same way. Other films are decoded when they are found; "film.mov#stream=2" means the
/// second stream with sound, unless a file has this name, and never a sound file beside the film. Several
/// files are one medium, see namesIn().
///
/// Thread safe.
/// \snippet timeline.cpp finder
class MediaFinder {
public:
    explicit MediaFinder(MediaSearch search) : search_(std::move(search)) {}

    /// The first call for a medium looks at files. The reference stays valid.
    const FoundMedium& find(const std::string& media);

    /// Length, rate and recorder's clock, for ReadOptions; nothing for a medium that is not there. Throws
    /// SoundFileError for one that is there and cannot be played.
    std::optional<MediaFacts> factsOf(const std::string& media);

    /// For a mixer. Throws SoundFileError for media that are not there or cannot be played.
    Media open(const std::string& media);

private:
    FoundMedium searchAll(const std::string& media) AUDLMD_REQUIRES(mutex_);
    /// Of a medium with one file.
    FoundMedium searchFile(const std::string& media) AUDLMD_REQUIRES(mutex_);
    /// Opens the file once, for its facts. Decodes it where that must be.
    void look(FoundMedium& medium, std::optional<int> stream) const;
    /// Tries sound files that are named like the medium, but for the extension.
    std::optional<FoundMedium> searchSoundOf(const std::string& media) AUDLMD_REQUIRES(mutex_);
    /// The file of exactly this name: at the path, or else below the folders.
    FoundMedium locate(const std::string& media) AUDLMD_REQUIRES(mutex_);
    void listFolders() AUDLMD_REQUIRES(mutex_);

    const MediaSearch search_;
    Mutex mutex_;
    bool listed_ AUDLMD_GUARDED_BY(mutex_) = false;
    /// All files below the folders, by file name.
    std::multimap<std::string, std::filesystem::path> files_ AUDLMD_GUARDED_BY(mutex_);
    std::map<std::string, FoundMedium> found_ AUDLMD_GUARDED_BY(mutex_);
};

} // namespace audlmd::timeline

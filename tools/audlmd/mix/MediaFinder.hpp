#pragma once

#include "host/mix/Media.hpp"
#include "host/mix/Timeline.hpp"
#include "host/services/Threads.hpp"
#include "host/timeline/TimelineFiles.hpp"
#include "tools/audlmd/options/OutputOptions.hpp"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

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
    std::optional<timeline::MediaFacts> facts;
    /// Empty where the medium cannot be played.
    ChannelLayout layout = {};
    /// What is not as the medium states it, in a line that names the medium. Empty: nothing.
    std::string note = {};
    /// The paths of a medium's other files, where it has several.
    std::vector<std::filesystem::path> others = {};
};

/// Finds and opens the media of a timeline. Opens each medium once to look at it, and keeps what was found.
///
/// A medium that is not where the timeline says is looked for by file name in the folders, and below them.
/// Among several of that name the one is taken whose path ends most like the timeline's; paths of Windows are
/// compared by their names, too. In place of a film container, and of a missing one, a sound file of the same
/// name is taken, where there is one; a medium that is a name without an extension for sound is found in the
/// same way. Other films are decoded when they are found, see DecodedCache; "film.mov#stream=2" means the
/// second stream with sound, unless a file has this name, and never a sound file beside the film. Several
/// files are one medium, see namesIn().
///
/// Thread safe.
class MediaFinder {
public:
    /// The options, which must outlive the finder, say how films are decoded. `looksAt` is called with each
    /// place where a medium is looked for by its whole path, before, and with what is found.
    MediaFinder(std::vector<std::filesystem::path> folders, const RenderingOptions& options,
                std::function<void(const std::filesystem::path&)> looksAt = {})
        : options_(options), folders_(std::move(folders)), looksAt_(std::move(looksAt)) {}

    /// The first call for a medium looks at files. The reference stays valid.
    const FoundMedium& find(const std::string& media);

    /// Length, rate and recorder's clock of a sound file; nothing for a file that cannot be played.
    std::optional<timeline::MediaFacts> factsOf(const std::string& media) { return find(media).facts; }

    /// Throws CommandError for media that cannot be played, and SoundFileError.
    Media open(const std::string& media);

private:
    FoundMedium search(const std::string& media) AUDLMD_REQUIRES(mutex_);
    /// Of a medium with one file.
    FoundMedium searchFile(const std::string& media) AUDLMD_REQUIRES(mutex_);
    /// Opens the file once, for its facts. Decodes it where that must be.
    void look(FoundMedium& medium, std::optional<int> stream) const;
    /// Tries sound files that are named like the medium, but for the extension.
    std::optional<FoundMedium> searchSoundOf(const std::string& media) AUDLMD_REQUIRES(mutex_);
    /// The file of exactly this name: at the path, or else below the folders.
    FoundMedium locate(const std::string& media) AUDLMD_REQUIRES(mutex_);
    void listFolders() AUDLMD_REQUIRES(mutex_);

    const RenderingOptions& options_;
    std::vector<std::filesystem::path> folders_;
    std::function<void(const std::filesystem::path&)> looksAt_;
    Mutex mutex_;
    bool listed_ AUDLMD_GUARDED_BY(mutex_) = false;
    /// All files below the folders, by file name.
    std::multimap<std::string, std::filesystem::path> files_ AUDLMD_GUARDED_BY(mutex_);
    std::map<std::string, FoundMedium> found_ AUDLMD_GUARDED_BY(mutex_);
};

} // namespace audlmd::command

#pragma once

#include "standalone/mix/Media.hpp"
#include "standalone/mix/Timeline.hpp"
#include "tools/timeline/ReadOptions.hpp"

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// Finds and opens the media of a timeline.
///
/// A medium that is not where the timeline says is looked for by file name in the folders, and below them.
/// Among several of that name the one is taken whose path ends most like the timeline's. Of a video file that
/// this program cannot read, a .wav of the same name is taken instead, where there is one.
///
/// Thread safe.
class MediaFinder {
public:
    explicit MediaFinder(std::vector<std::filesystem::path> folders) : folders_(std::move(folders)) {}

    /// The file to open, or nothing where there is none.
    std::optional<std::filesystem::path> find(const std::string& media);

    /// Length, rate and recorder's clock of a sound file; nothing for a file that is missing or unreadable.
    std::optional<timeline::MediaFacts> factsOf(const std::string& media);

    /// Throws CommandError for media that are not found, and SoundFileError.
    Media open(const std::string& media);

    /// Throws CommandError, with the command that extracts the sound, if the medium is a video file that has
    /// no sound file beside it. `where` names the strip.
    void requireNoVideo(const std::string& media, const std::string& where);

private:
    std::optional<std::filesystem::path> search(const std::filesystem::path& media);
    /// Where a file may be: beside the path, then below the folders.
    std::vector<std::filesystem::path> candidates(const std::filesystem::path& path);
    void listFolders();

    std::vector<std::filesystem::path> folders_;
    /// Guards all members below.
    std::mutex mutex_;
    bool listed_ = false;
    /// All files below the folders, by file name.
    std::multimap<std::string, std::filesystem::path> files_;
    std::map<std::string, std::optional<std::filesystem::path>> found_;
};

} // namespace audlmd::command

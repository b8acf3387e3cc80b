#pragma once

#include "host/mix/Timeline.hpp"

#include <filesystem>
#include <string_view>
#include <vector>

namespace audlmd::command {

/// The files of all tracks in a folder, in order, named by number and track: "01 dialogue.wav". What cannot
/// stand in a name everywhere becomes an underscore.
std::vector<std::filesystem::path> stemFiles(const Timeline& timeline, const std::filesystem::path& folder,
                                             std::string_view extension);

/// A folder that is made where there is none. The destructor removes it again where nothing has come to stand
/// in it.
class MadeFolder {
public:
    /// Throws CommandError.
    explicit MadeFolder(const std::filesystem::path& path);
    ~MadeFolder();
    MadeFolder(const MadeFolder&) = delete;
    MadeFolder& operator=(const MadeFolder&) = delete;

private:
    std::filesystem::path path_;
    bool isNew_ = false;
};

} // namespace audlmd::command

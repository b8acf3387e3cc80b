#include "tools/audlmd/mix/Stems.hpp"

#include "tools/audlmd/files/OutputPath.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <system_error>

namespace audlmd::command {
namespace {

/// In bytes: with number and extension it fits into the 255 of file systems.
constexpr std::size_t longestName = 200;

/// Windows takes neither these characters nor a point or a space at the end.
std::string safe(std::string name) {
    constexpr std::string_view forbidden = R"(/\:*?"<>|)";
    std::ranges::replace_if(
        name,
        [=](unsigned char c) {
            return c < ' ' || c == 0x7F || forbidden.find(static_cast<char>(c)) != forbidden.npos;
        },
        '_');
    if (name.size() > longestName) {
        std::size_t end = longestName;
        // Not in the middle of a character of UTF-8.
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
            --end;
        name.resize(end);
    }
    const std::size_t last = name.find_last_not_of(". ");
    return name.substr(0, last == std::string::npos ? 0 : last + 1);
}

} // namespace

std::vector<std::filesystem::path> stemFiles(const Timeline& timeline, const std::filesystem::path& folder,
                                             std::string_view extension) {
    const std::size_t digits = std::max<std::size_t>(2, std::to_string(timeline.tracks.size()).size());
    std::vector<std::filesystem::path> files;
    for (const TimelineTrack& track : timeline.tracks) {
        const std::string number = std::to_string(files.size() + 1);
        const std::string name = safe(track.name);
        files.push_back(folder / (std::string(digits - number.size(), '0') + number +
                                  (name.empty() ? "" : " " + name) + "." + std::string(extension)));
    }
    return files;
}

MadeFolder::MadeFolder(const std::filesystem::path& path) : path_(path) {
    std::error_code error;
    isNew_ = std::filesystem::create_directory(path_, error);
    if (error)
        failToWrite(path_, error.value());
}

/// Only an empty folder can be removed so.
MadeFolder::~MadeFolder() {
    std::error_code none;
    if (isNew_)
        std::filesystem::remove(path_, none);
}

} // namespace audlmd::command

#include "host/timeline/TimelineText.hpp"

#include "host/cache/SoundFile.hpp"
#include "host/cache/ZipArchive.hpp"

#include <array>
#include <cerrno>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace audlmd::timeline {
namespace {

std::string readFile(const std::filesystem::path& path) {
    const auto refuse = [](int error) { throw std::system_error(error, std::generic_category()); };
    // A folder opens, and fails only when it is read.
    if (std::filesystem::is_directory(path))
        refuse(EISDIR);
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (!file.is_open() || (file.peek() != std::ifstream::traits_type::eof() && !(text << file.rdbuf())) ||
        file.bad())
        refuse(errno);
    return std::move(text).str();
}

} // namespace

std::filesystem::path contentOfBundle(const std::filesystem::path& path) {
    std::error_code none;
    const std::filesystem::path content = path / "content.otio";
    if (std::filesystem::is_regular_file(content, none))
        return content;
    std::array<char, 4> start{};
    if (std::filesystem::is_regular_file(path, none))
        std::ifstream(path, std::ios::binary).read(start.data(), start.size());
    if (std::string_view(start.data(), start.size()) != "PK\x03\x04")
        return {};
    // What is no archive at its end is told where it is read.
    return content;
}

TimelineText readTimelineText(const std::filesystem::path& path) {
    const std::filesystem::path whole = std::filesystem::absolute(path);
    const std::filesystem::path content = contentOfBundle(whole);
    if (content.empty())
        return {readFile(whole), whole.parent_path()};
    if (std::filesystem::is_directory(whole))
        return {readFile(content), whole};
    const std::optional<ZipMember> member = findZipMember(content);
    if (!member)
        throw SoundFileError("'" + path.string() + "': a zip archive without content.otio, and so no bundle");
    return {textOf(*member, content), whole};
}

} // namespace audlmd::timeline

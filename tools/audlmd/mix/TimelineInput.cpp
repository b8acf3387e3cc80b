#include "tools/audlmd/mix/TimelineInput.hpp"

#include "host/cache/FilmContainer.hpp"
#include "host/cache/SoundFile.hpp"
#include "host/timeline/TimelineFiles.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace audlmd::command {
namespace {

std::string readText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    // A folder opens, and fails only when it is read.
    if (!file.is_open() || file.bad() || std::filesystem::is_directory(path))
        throw CommandError(
            "cannot read '" + words::printable(path.string()) +
            "': " + std::generic_category().message(std::filesystem::is_directory(path) ? EISDIR : errno));
    return text;
}

bool isSound(const std::filesystem::path& path) {
    try {
        const SoundFile file(path);
        return true;
    } catch (const SoundFileError&) {
        return false;
    }
}

/// Names the file, and what can be read in its place where the file is something else.
[[noreturn]] void refuse(const std::filesystem::path& path, const std::string& text, const char* reason) {
    const std::string name = "'" + words::printable(path.string()) + "'";
    const bool isJson = timeline::mayBeTimeline(text);
    if (!isJson && isFilmContainer(path))
        throw CommandError(name + " is a film container, not a timeline; " + filmContainerAdvice(path));
    if (!isJson && isSound(path))
        throw CommandError(name + " is a sound file, not a timeline; use audlmd render for it");
    const bool isOurs =
        text.find("\"OTIO_SCHEMA\"") != std::string::npos || text.find("\"audlmd\"") != std::string::npos;
    throw CommandError(name + ": " + words::printable(reason, std::string::npos) +
                       (isOurs ? ""
                               : "; what can be read is OpenTimelineIO JSON (.otio), which otioconvert "
                                 "makes of other timelines, and what mix --list --as json writes"));
}

/// Throws CommandError where an option asks for something else than the timeline says.
template <class Number>
void requireSame(const char* option, std::optional<Number> asked, Number told) {
    if (asked && *asked != told)
        throw CommandError(std::string(option) + ": the timeline itself says " + std::to_string(told) +
                           ", and its times depend on that; leave the option out");
}

} // namespace

bool isTimelineFile(const std::filesystem::path& path) {
    const bool isNamedSo = path.extension() == ".otio" || path.extension() == ".json";
    std::error_code none;
    // What is read from a pipe is gone.
    if (!std::filesystem::is_regular_file(path, none))
        return isNamedSo;
    std::string start(64, ' ');
    std::ifstream(path, std::ios::binary).read(start.data(), std::ssize(start));
    return timeline::mayBeTimeline(start) || (isNamedSo && !isSound(path));
}

Timeline readTimelineFile(const std::filesystem::path& path, const AskedOutput& asked, MediaFinder& finder) {
    const auto factsOf = [&finder](const std::string& media) {
        const FoundMedium& medium = finder.find(media);
        if (!medium.facts && !medium.path.empty())
            throw CommandError(medium.failure);
        return medium.facts;
    };
    const timeline::ReadOptions how{.sampleRate = asked.rate.value_or(48000),
                                    .channels = asked.channels.value_or(2),
                                    .folder = std::filesystem::absolute(path).parent_path(),
                                    .timeline = asked.timeline,
                                    .media = factsOf};
    const std::string text = readText(path);
    try {
        Timeline read = timeline::readTimeline(text, how);
        requireSame("--rate", asked.rate, read.sampleRate);
        requireSame("--channels", asked.channels, read.channels);
        return read;
    } catch (const std::runtime_error& error) {
        refuse(path, text, error.what());
    }
}

} // namespace audlmd::command

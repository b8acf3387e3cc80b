#include "tools/audlmd/mix/TimelineInput.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/Parsers.hpp"
#include "tools/timeline/TimelineFiles.hpp"

#include <cerrno>
#include <fstream>
#include <iterator>
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
            "cannot read '" + path.string() +
            "': " + std::generic_category().message(std::filesystem::is_directory(path) ? EISDIR : errno));
    return text;
}

/// Throws CommandError where an option asks for something else than the timeline says.
template <class Number>
void requireSame(const char* option, std::optional<Number> asked, Number told) {
    if (asked && *asked != told)
        throw CommandError(std::string(option) + ": the timeline itself says " + std::to_string(told) +
                           ", and its times depend on that; leave the option out");
}

} // namespace

Timeline readTimelineFile(const std::filesystem::path& path, const AskedOutput& asked, MediaFinder& finder) {
    const timeline::ReadOptions how{
        .sampleRate = asked.rate.value_or(48000),
        .channels = asked.channels.value_or(2),
        .folder = std::filesystem::absolute(path).parent_path(),
        .media = [&finder](const std::string& media) { return finder.factsOf(media); },
        .band = [](std::string_view text) { return parseBand(text, "equaliser"); }};
    Timeline read = timeline::readTimeline(readText(path), how);
    requireSame("--rate", asked.rate, read.sampleRate);
    requireSame("--channels", asked.channels, read.channels);
    return read;
}

} // namespace audlmd::command

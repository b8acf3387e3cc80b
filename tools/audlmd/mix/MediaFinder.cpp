#include "tools/audlmd/mix/MediaFinder.hpp"

#include "standalone/cache/SoundFile.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/OutputFile.hpp"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <system_error>

namespace audlmd::command {
namespace {

using Path = std::filesystem::path;

bool isFile(const Path& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

/// Whether a file begins like one of the containers that hold pictures beside sound.
bool isVideo(const Path& path) {
    std::array<char, 16> start{};
    std::ifstream(path, std::ios::binary).read(start.data(), start.size());
    const std::string_view bytes(start.data(), start.size());
    const auto has = [&](std::size_t at, std::string_view mark) {
        return bytes.substr(at).starts_with(mark);
    };
    using namespace std::literals;
    const bool isQuickTime = has(4, "ftyp") || has(4, "moov") || has(4, "mdat") || has(4, "wide");
    const bool isMatroska = has(0, "\x1A\x45\xDF\xA3"sv);
    const bool isAvi = has(0, "RIFF") && has(8, "AVI ");
    const bool isMxf = has(0, "\x06\x0E\x2B\x34"sv);
    const bool isMpeg = has(0, "\x00\x00\x01\xBA"sv) || has(0, "\x00\x00\x01\xB3"sv);
    const bool isWindowsMedia = has(0, "\x30\x26\xB2\x75"sv);
    return isQuickTime || isMatroska || isAvi || isMxf || isMpeg || isWindowsMedia || has(0, "FLV\x01"sv);
}

Path asWav(Path path) {
    return path.replace_extension(".wav");
}

/// How many names two paths have in common, counted from their ends.
std::size_t commonNames(const Path& a, const Path& b) {
    const std::vector<Path> left(a.begin(), a.end());
    const std::vector<Path> right(b.begin(), b.end());
    std::size_t common = 0;
    while (common < std::min(left.size(), right.size()) &&
           left[left.size() - 1 - common] == right[right.size() - 1 - common])
        ++common;
    return common;
}

/// For a shell.
std::string quoted(const Path& path) {
    std::string text = "'";
    for (const char letter : path.string())
        text += letter == '\'' ? "'\\''" : std::string(1, letter);
    return text + "'";
}

/// The time of the first sample on the recorder's clock, from a broadcast wave file. 0 in others.
std::int64_t timeReferenceOf(const Path& path) {
    SF_INFO info{};
    const SoundFileHandle file(sf_open(path.c_str(), SFM_READ, &info));
    SF_BROADCAST_INFO broadcast{};
    if (file == nullptr ||
        sf_command(file.get(), SFC_GET_BROADCAST_INFO, &broadcast, sizeof broadcast) != SF_TRUE)
        return 0;
    return static_cast<std::int64_t>(std::uint64_t{broadcast.time_reference_high} << 32 |
                                     broadcast.time_reference_low);
}

} // namespace

std::optional<Path> MediaFinder::find(const std::string& media) {
    const std::lock_guard lock(mutex_);
    const auto [entry, isNew] = found_.try_emplace(media);
    if (isNew)
        entry->second = search(media);
    return entry->second;
}

std::optional<Path> MediaFinder::search(const Path& media) {
    bool hasVideo = false;
    for (const Path& candidate : candidates(media))
        if (isFile(candidate)) {
            if (!isVideo(candidate))
                return candidate;
            hasVideo = true;
        }
    if (hasVideo && media != asWav(media))
        return search(asWav(media));
    return std::nullopt;
}

std::vector<Path> MediaFinder::candidates(const Path& path) {
    std::vector<Path> paths;
    if (!folders_.empty()) {
        listFolders();
        const auto [first, last] = files_.equal_range(path.filename().string());
        for (auto file = first; file != last; ++file)
            paths.push_back(file->second);
    }
    // Sorted by path first, so that the choice does not depend on the order of a folder's entries.
    std::ranges::sort(paths);
    std::ranges::stable_sort(paths, std::greater(),
                             [&](const Path& file) { return commonNames(file, path); });
    paths.insert(paths.begin(), path);
    return paths;
}

void MediaFinder::listFolders() {
    if (listed_)
        return;
    listed_ = true;
    for (const Path& folder : folders_) {
        std::error_code error;
        auto file = std::filesystem::recursive_directory_iterator(
            folder, std::filesystem::directory_options::skip_permission_denied, error);
        for (; !error && file != std::filesystem::recursive_directory_iterator(); file.increment(error))
            if (isFile(file->path()))
                files_.emplace(file->path().filename().string(), file->path());
    }
}

std::optional<timeline::MediaFacts> MediaFinder::factsOf(const std::string& media) {
    const std::optional<Path> path = find(media);
    if (!path)
        return std::nullopt;
    try {
        const SoundFile file(*path);
        return timeline::MediaFacts{.length = file.frames(),
                                    .sampleRate = file.sampleRate(),
                                    .timeReference = timeReferenceOf(*path)};
    } catch (const SoundFileError&) {
        return std::nullopt;
    }
}

Media MediaFinder::open(const std::string& media) {
    const std::optional<Path> path = find(media);
    if (!path)
        throw CommandError("'" + media + "' is not there");
    return openSoundFile(*path);
}

void MediaFinder::requireNoVideo(const std::string& media, const std::string& where) {
    if (find(media))
        return;
    const std::lock_guard lock(mutex_);
    for (const Path& candidate : candidates(media))
        if (isFile(candidate) && isVideo(candidate))
            throw CommandError(
                where + ": '" + candidate.string() +
                "' is a video file; extract its sound, which is then found by itself: ffmpeg -i " +
                quoted(candidate) + " -vn -c:a pcm_s24le " + quoted(asWav(candidate)));
}

} // namespace audlmd::command

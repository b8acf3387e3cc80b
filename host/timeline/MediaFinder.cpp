#include "host/timeline/MediaFinder.hpp"

#include "host/cache/FilmContainer.hpp"
#include "host/cache/SoundFile.hpp"
#include "host/cache/ZipArchive.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <system_error>
#include <utility>

namespace audlmd::timeline {
namespace {

using Path = std::filesystem::path;

/// In the order of preference. What extracts sound from films writes one of these.
constexpr std::array<std::string_view, 11> soundExtensions{".wav", ".w64", ".rf64", ".flac", ".aiff", ".aif",
                                                           ".caf", ".bwf", ".ogg",  ".mp3",  ".opus"};
/// Whoever names one of these means sound, too.
constexpr std::array<std::string_view, 6> otherSoundExtensions{".wave", ".oga", ".au",
                                                               ".snd",  ".raw", ".pcm"};

/// The names of a path. A backslash separates names, too: what was a path of Windows is one name here.
std::vector<std::string> namesOf(std::string_view path) {
    std::vector<std::string> names;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
        if (end != 0)
            names.emplace_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return names;
}

std::string lastNameOf(std::string_view path) {
    const std::size_t separator = path.find_last_of("/\\");
    return std::string(separator == std::string_view::npos ? path : path.substr(separator + 1));
}

/// How many names two paths have in common, counted from their ends.
std::size_t commonNames(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    std::size_t common = 0;
    while (common < std::min(a.size(), b.size()) && a[a.size() - 1 - common] == b[b.size() - 1 - common])
        ++common;
    return common;
}

/// A medium for which no file was found, with the reason.
FoundMedium noFile(const std::string& media) {
    FoundMedium medium{.path = media, .failure = "'" + media + "' is ", .equallyGood = 0, .facts = {}};
    std::error_code ignored;
    const auto status = std::filesystem::status(media, ignored);
    if (std::filesystem::is_directory(status))
        medium.failure += "a folder, not a sound file";
    else if (std::filesystem::is_fifo(status))
        medium.failure += "a pipe; timelines play files only";
    else if (std::filesystem::exists(status))
        medium.failure += "a device; timelines play files only";
    else
        medium = {.path = {},
                  .failure = media.empty() ? "the clip names no file" : medium.failure + "not there",
                  .equallyGood = 0,
                  .facts = {}};
    return medium;
}

bool isFile(const Path& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

/// Whether a path leads to a file inside an archive that can be read.
bool isMember(const Path& path) {
    try {
        return findZipMember(path).has_value();
    } catch (const SoundFileError&) {
        return false;
    }
}

/// Whether the extension promises sound, so that a file with another extension would be another recording.
bool namesSound(const std::string& name) {
    const std::string extension = words::lowered(Path(name).extension().string());
    return std::ranges::find(soundExtensions, extension) != soundExtensions.end() ||
           std::ranges::find(otherSoundExtensions, extension) != otherSoundExtensions.end();
}

/// The name before "#stream=2", and the number. Only the name where no stream stands there.
std::pair<std::string, std::optional<int>> partsOf(const std::string& media) {
    constexpr std::string_view mark = "#stream=";
    const std::size_t at = media.rfind(mark);
    const std::optional<int> stream =
        at == std::string::npos ? std::nullopt
                                : words::wholeIn<int>(std::string_view(media).substr(at + mark.size()));
    if (!stream || *stream < 1 || isFile(media))
        return {media, std::nullopt};
    return {media.substr(0, at), stream};
}

} // namespace

void MediaFinder::look(FoundMedium& medium, std::optional<int> stream) const {
    try {
        const PlayableFile playable =
            search_.playable ? search_.playable(medium.path, stream) : PlayableFile{medium.path};
        medium.file = playable.path;
        medium.note = playable.note;
        const SoundFile file(medium.file, search_.truncated);
        if (file.isTruncated())
            medium.note =
                truncatedText(words::quoted(medium.path.string()), file.frames(), file.sampleRate());
        medium.facts = MediaFacts{
            .length = file.frames(), .sampleRate = file.sampleRate(), .timeReference = file.timeReference()};
        medium.layout = file.layout();
    } catch (const SoundFileError& error) {
        medium.failure = error.what();
    }
}

const FoundMedium& MediaFinder::find(const std::string& media) {
    const Lock lock(mutex_);
    const auto found = found_.find(media);
    if (found != found_.end())
        return found->second;
    if (search_.looksAt)
        search_.looksAt(partsOf(media).first);
    const FoundMedium& medium = found_.emplace(media, searchAll(media)).first->second;
    if (search_.looksAt && !medium.path.empty())
        search_.looksAt(medium.path);
    return medium;
}

FoundMedium MediaFinder::searchAll(const std::string& media) {
    const std::vector<std::string> names = namesIn(media);
    FoundMedium whole = searchFile(names.front());
    std::vector<std::string> files{whole.file.string()};
    for (std::size_t name = 1; name < names.size() && whole.failure.empty(); ++name) {
        const FoundMedium part = searchFile(names[name]);
        whole.failure = part.failure;
        whole.others.push_back(part.path);
        files.push_back(part.file.string());
        whole.equallyGood = std::max(whole.equallyGood, part.equallyGood);
        if (whole.note.empty())
            whole.note = part.note;
    }
    if (names.size() == 1 || !whole.failure.empty())
        return whole;
    whole.file = jointName(files);
    try {
        whole.layout = layoutOf(openRecording(whole.file.string(), search_.truncated));
    } catch (const SoundFileError& error) {
        whole.failure = error.what();
        whole.facts.reset();
    }
    return whole;
}

FoundMedium MediaFinder::searchFile(const std::string& media) {
    const auto [name, stream] = partsOf(media);
    FoundMedium medium = locate(name);
    const bool isThere = !medium.path.empty();
    // Somebody has extracted that sound to be used.
    if (!stream && (isThere ? isFilmContainer(medium.path) : !namesSound(lastNameOf(name))))
        if (std::optional<FoundMedium> sound = searchSoundOf(name))
            return *std::move(sound);
    if (!isThere)
        return noFile(name);
    look(medium, stream);
    return medium;
}

std::optional<FoundMedium> MediaFinder::searchSoundOf(const std::string& media) {
    const std::size_t nameLength = lastNameOf(media).size();
    if (nameLength == 0)
        return std::nullopt;
    const std::string stem = Path(lastNameOf(media)).stem().string();
    // The name itself is a stem where its point begins no extension, as in "take 1.2".
    for (const std::string& base : {media.substr(0, media.size() - nameLength) + stem, media})
        for (const std::string_view extension : soundExtensions)
            if (FoundMedium sound = locate(base + std::string(extension)); !sound.path.empty()) {
                look(sound, std::nullopt);
                return sound;
            }
    return std::nullopt;
}

FoundMedium MediaFinder::locate(const std::string& media) {
    if (isFile(media) || isMember(media))
        return {.path = media, .failure = {}, .equallyGood = 1, .facts = {}};
    FoundMedium best;
    std::size_t mostCommon = 0;
    if (!search_.folders.empty()) {
        listFolders();
        const std::vector<std::string> names = namesOf(media);
        const auto [first, last] = files_.equal_range(lastNameOf(media));
        for (auto file = first; file != last; ++file) {
            const std::size_t common = commonNames(namesOf(file->second.string()), names);
            if (common < mostCommon)
                continue;
            best.equallyGood = common == mostCommon ? best.equallyGood + 1 : 1;
            // By path where several are equal, so that the choice does not depend on the order in a folder.
            if (common > mostCommon || file->second < best.path)
                best.path = file->second;
            mostCommon = common;
        }
    }
    return best;
}

void MediaFinder::listFolders() {
    if (listed_)
        return;
    listed_ = true;
    for (const Path& folder : search_.folders) {
        std::error_code error;
        auto file = std::filesystem::recursive_directory_iterator(
            folder, std::filesystem::directory_options::skip_permission_denied, error);
        for (; !error && file != std::filesystem::recursive_directory_iterator(); file.increment(error))
            if (isFile(file->path()))
                files_.emplace(file->path().filename().string(), file->path());
    }
}

std::optional<MediaFacts> MediaFinder::factsOf(const std::string& media) {
    const FoundMedium& medium = find(media);
    if (!medium.facts && !medium.path.empty())
        throw SoundFileError(medium.failure);
    return medium.facts;
}

Media MediaFinder::open(const std::string& media) {
    const FoundMedium& medium = find(media);
    if (!medium.failure.empty())
        throw SoundFileError(medium.failure);
    return openRecording(medium.file.string(), search_.truncated);
}

} // namespace audlmd::timeline

#include "host/media/DecodedCache.hpp"

#include "host/cache/SoundFile.hpp"
#include "host/media/CacheFolder.hpp"
#include "host/media/DecodedFile.hpp"
#include "host/media/ForeignSound.hpp"
#include "host/services/Threads.hpp"

#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <span>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace audlmd {
namespace {

/// The note of a file that is whole and belongs to the origin.
std::optional<std::string> noteOfWhole(const std::filesystem::path& path, const Origin& origin) {
    const std::optional<DecodedLabel> label = readLabel(path);
    try {
        if (label && label->origin == origin && SoundFile(path).frames() == label->frames)
            return label->note;
    } catch (const SoundFileError&) {
        return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

struct DecodedCache::Impl {
    explicit Impl(DecodedCacheOptions given) : options(std::move(given)) {}

    PlayableFile decoded(ForeignSound sound) AUDLMD_EXCLUDES(mutex) {
        const Lock lock(mutex);
        const Origin origin = originOf(sound.path, sound.stream);
        try {
            if (folder == nullptr)
                folder = std::make_unique<CacheFolder>(options.folder);
            return decoded(sound, origin);
        } catch (const std::filesystem::filesystem_error& error) {
            throw std::system_error(error.code(), "'" + sound.path.string() +
                                                      "': what is decoded of it cannot be kept in '" +
                                                      options.folder.string() + "'");
        }
    }

    PlayableFile decoded(const ForeignSound& sound, const Origin& origin) AUDLMD_REQUIRES(mutex) {
        const std::uint64_t hash = hashOf(origin);
        PlayableFile file{.path = folder->pathOf(hash), .isDecoded = true};
        folder->use(hash);
        const auto isThere = [&] {
            const std::optional<std::string> note = noteOfWhole(file.path, origin);
            file.note = note.value_or("");
            return note.has_value();
        };
        if (!isThere()) {
            const CacheFolder::Decoding decoding(*folder, hash);
            if (!isThere())
                file.note = decode(sound, origin, file.path);
            folder->reduceTo(options.limit);
        }
        // The time of the last use.
        utimensat(AT_FDCWD, file.path.c_str(), nullptr, 0);
        return file;
    }

    /// Returns the note.
    std::string decode(const ForeignSound& sound, const Origin& origin,
                       const std::filesystem::path& path) const {
        NewCachedFile file(path);
        std::optional<DecodedFile> samples;
        std::function<void(std::int64_t)> watcher;
        const auto begin = [&](const ForeignFormat& format, std::int64_t expected) {
            samples.emplace(file.descriptor(), format);
            if (options.watch)
                watcher = options.watch(sound.path, expected, format.sampleRate);
        };
        const auto take = [&](std::span<const std::byte> bytes) {
            samples->take(bytes);
            if (watcher)
                watcher(samples->frames());
        };
        const std::string note = sound.decode({.begin = begin, .take = take});
        samples->finish(origin, note);
        if (originOf(sound.path, sound.stream) != origin)
            throw SoundFileError("'" + sound.path.string() + "': it has changed while it was decoded");
        file.commit();
        return note;
    }

    const DecodedCacheOptions options;
    Mutex mutex;
    /// Null until a file is decoded.
    std::unique_ptr<CacheFolder> folder AUDLMD_GUARDED_BY(mutex);
};

std::filesystem::path DecodedCacheOptions::defaultFolder() {
    const char* const caches = std::getenv("XDG_CACHE_HOME");
    // Relative paths there are to be ignored (XDG Base Directory Specification).
    if (caches != nullptr && caches[0] == '/')
        return std::filesystem::path(caches) / "audlmd";
    const char* const home = std::getenv("HOME");
    return home != nullptr && home[0] != '\0' ? std::filesystem::path(home) / ".cache" / "audlmd" : "";
}

DecodedCache::DecodedCache(DecodedCacheOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {}

DecodedCache::~DecodedCache() = default;

PlayableFile DecodedCache::playable(const std::filesystem::path& medium, int stream) {
    std::string reason;
    try {
        const SoundFile file(medium);
    } catch (const UnknownFormat& unknown) {
        reason = std::string(unknown.what()).substr(std::string_view("'': ").size() + medium.string().size());
    } catch (const SoundFileError&) {
        // Whoever opens the file is told.
    }
    if (reason.empty() && stream != 0)
        throw SoundFileError("'" + medium.string() + "': there is no sound stream " +
                             std::to_string(stream + 1) + ", it has 1");
    if (reason.empty())
        return {.path = medium};
    return impl_->decoded(
        {.path = medium, .stream = stream, .patience = impl_->options.patience, .reason = reason});
}

std::vector<DecodedMedium> DecodedCache::contents() const {
    std::vector<DecodedMedium> media;
    for (const CachedFile& file : CacheFolder::filesIn(impl_->options.folder)) {
        const DecodedLabel label = readLabel(file.path).value_or(DecodedLabel());
        media.push_back({.medium = label.origin.path,
                         .stream = label.origin.stream,
                         .bytes = file.bytes,
                         .used = std::chrono::file_clock::to_sys(file.used)});
    }
    return media;
}

std::size_t DecodedCache::clear() {
    return CacheFolder::filesIn(impl_->options.folder).empty()
               ? 0
               : CacheFolder(impl_->options.folder).reduceTo(0);
}

} // namespace audlmd

#include "host/media/CacheFolder.hpp"

#include "host/words/Numbers.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace audlmd {
namespace {

constexpr const char* extension = ".rf64";
constexpr const char* partExtension = ".part";

/// What the two bytes of a file stand for.
enum class Purpose { use, decoding };

/// By open file, not by process, so that threads of a process exclude each other as processes do. Returns
/// whether the lock was taken.
bool setLock(int lock, std::uint64_t hash, Purpose purpose, short type, bool waits) {
    struct flock range {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = static_cast<off_t>((hash >> 2) * 2) + (purpose == Purpose::decoding ? 1 : 0);
    range.l_len = 1;
    int result = -1;
    do
        result = fcntl(lock, waits ? F_OFD_SETLKW : F_OFD_SETLK, &range);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

int openLock(const std::filesystem::path& folder) {
    return open((folder / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
}

[[noreturn]] void fail(const std::filesystem::path& path) {
    throw std::filesystem::filesystem_error("", path, std::error_code(errno, std::generic_category()));
}

std::optional<std::uint64_t> hashIn(const std::filesystem::path& path) {
    constexpr std::size_t digits = 16;
    const std::string name = path.stem().string();
    const bool isPart = path.extension() == partExtension && name.size() > digits;
    return isPart || name.size() == digits ? words::wholeIn<std::uint64_t>(name.substr(0, digits), 16)
                                           : std::nullopt;
}

} // namespace

CacheFolder::CacheFolder(const std::filesystem::path& path) : path_(path) {
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    if (!error && mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        error = std::error_code(errno, std::generic_category());
    if (!error && (lock_ = openLock(path)) < 0)
        error = std::error_code(errno, std::generic_category());
    if (error)
        throw std::filesystem::filesystem_error("", path, error);
}

CacheFolder::~CacheFolder() {
    if (lock_ >= 0)
        close(lock_);
}

std::filesystem::path CacheFolder::pathOf(std::uint64_t hash) const {
    std::array<char, 24> name{};
    std::snprintf(name.data(), name.size(), "%016llx", static_cast<unsigned long long>(hash));
    return path_ / (std::string(name.data()) + extension);
}

void CacheFolder::use(std::uint64_t hash) const {
    setLock(lock_, hash, Purpose::use, F_RDLCK, true);
}

CacheFolder::Decoding::Decoding(const CacheFolder& folder, std::uint64_t hash)
    : folder_(folder), hash_(hash) {
    setLock(folder_.lock_, hash_, Purpose::decoding, F_WRLCK, true);
}

CacheFolder::Decoding::~Decoding() {
    setLock(folder_.lock_, hash_, Purpose::decoding, F_UNLCK, false);
}

std::size_t CacheFolder::reduceTo(std::uintmax_t bytes) const {
    // Another open file, for which the locks of this process are those of another one.
    const int lock = openLock(path_);
    const std::vector<CachedFile> files = filesIn(path_);
    std::uintmax_t total = 0;
    for (const CachedFile& file : files)
        total += file.bytes;
    std::size_t removed = 0;
    for (const CachedFile& file : files) {
        const bool isPart = file.path.extension() == partExtension;
        const Purpose purpose = isPart ? Purpose::decoding : Purpose::use;
        // A part that nobody decodes was left by a process that was killed.
        if ((!isPart && total <= bytes) || !setLock(lock, file.hash, purpose, F_WRLCK, false))
            continue;
        if (unlink(file.path.c_str()) == 0) {
            total -= file.bytes;
            ++removed;
        }
        setLock(lock, file.hash, purpose, F_UNLCK, false);
    }
    close(lock);
    return removed;
}

std::vector<CachedFile> CacheFolder::filesIn(const std::filesystem::path& folder) {
    std::vector<CachedFile> files;
    std::error_code error;
    auto entry = std::filesystem::directory_iterator(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::filesystem::path& path = entry->path();
        const std::optional<std::uint64_t> hash = hashIn(path);
        struct stat status {};
        if (hash && (path.extension() == extension || path.extension() == partExtension) &&
            lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
            std::error_code none;
            files.push_back({.path = path,
                             .hash = *hash,
                             .bytes = static_cast<std::uintmax_t>(status.st_size),
                             .used = std::filesystem::last_write_time(path, none)});
        }
    }
    std::ranges::sort(files, {}, [](const CachedFile& file) { return std::pair(file.used, file.path); });
    return files;
}

NewCachedFile::NewCachedFile(std::filesystem::path path) : path_(std::move(path)) {
    descriptor_ = open(path_.parent_path().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (descriptor_ < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == ENOENT)) {
        // Two processes may decode side by side on a file system without locks.
        std::string part = path_.string() + "-XXXXXX" + partExtension;
        descriptor_ = mkostemps(part.data(), static_cast<int>(std::strlen(partExtension)), O_CLOEXEC);
        part_ = part;
    }
    if (descriptor_ < 0)
        fail(path_);
}

NewCachedFile::~NewCachedFile() {
    close(descriptor_);
    if (!part_.empty())
        unlink(part_.c_str());
}

void NewCachedFile::commit() {
    int result = -1;
    if (part_.empty()) {
        // A link replaces nothing, such as a damaged file of this name.
        unlink(path_.c_str());
        const std::string unnamed = "/proc/self/fd/" + std::to_string(descriptor_);
        result = linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, path_.c_str(), AT_SYMLINK_FOLLOW);
    } else {
        result = rename(part_.c_str(), path_.c_str());
    }
    if (result != 0)
        fail(path_);
    part_.clear();
}

} // namespace audlmd

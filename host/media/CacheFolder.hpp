#pragma once

#include "host/media/DecodedFile.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace audlmd {

/// A file of a cache folder.
struct CachedFile {
    std::filesystem::path path;
    /// Names the file, and its locks.
    std::uint64_t hash = 0;
    std::uintmax_t bytes = 0;
    std::filesystem::file_time_type used;
};

/// The folder in which decoded files stand, for several processes at once. Each file has two bytes of the
/// file `lock` in the folder, which processes lock: one while they decode the file, one as long as they use
/// it. So nothing of a lock remains where a process is killed. On file systems without locks, each process
/// decodes for itself.
class CacheFolder {
public:
    /// Makes the folder, for the user alone, where it is not there. Throws std::filesystem::filesystem_error.
    explicit CacheFolder(const std::filesystem::path& path);
    ~CacheFolder();
    CacheFolder(const CacheFolder&) = delete;
    CacheFolder& operator=(const CacheFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path pathOf(std::uint64_t hash) const;

    /// From now on no process removes the file.
    void use(std::uint64_t hash) const;
    /// While this is there, no other process decodes the file. Waits for one that does.
    class Decoding {
    public:
        Decoding(const CacheFolder& folder, std::uint64_t hash);
        ~Decoding();
        Decoding(const Decoding&) = delete;
        Decoding& operator=(const Decoding&) = delete;

    private:
        const CacheFolder& folder_;
        std::uint64_t hash_;
    };

    /// Removes what was used least recently, until there are so many bytes at most. What a process uses
    /// stays. Returns how many files it has removed.
    std::size_t reduceTo(std::uintmax_t bytes) const;

    /// All files of a folder, least recently used first. None where there is no folder.
    static std::vector<CachedFile> filesIn(const std::filesystem::path& folder);

private:
    std::filesystem::path path_;
    int lock_ = -1;
};

/// A file that gets its name when it is whole, and is gone where it does not.
class NewCachedFile {
public:
    /// Throws std::filesystem::filesystem_error.
    explicit NewCachedFile(std::filesystem::path path);
    ~NewCachedFile();
    NewCachedFile(const NewCachedFile&) = delete;
    NewCachedFile& operator=(const NewCachedFile&) = delete;

    int descriptor() const { return descriptor_; }
    /// Throws std::filesystem::filesystem_error.
    void commit();

private:
    std::filesystem::path path_;
    /// The name until then, on file systems that have no files without a name. Empty: none.
    std::filesystem::path part_;
    int descriptor_ = -1;
};

} // namespace audlmd

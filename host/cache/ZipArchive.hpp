#pragma once

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace audlmd {

/// A part of a file that can be read in place.
struct FilePart {
    std::filesystem::path file;
    /// Both in bytes. The part lies inside the file.
    std::int64_t offset = 0;
    std::int64_t length = 0;
};

/// A file inside a zip archive.
struct ZipMember {
    /// As it stands in the archive: compressed, unless `method` is 0.
    FilePart part;
    int method = 0;
    bool isEncrypted = false;
    std::uint32_t checksum = 0;
};

/// The member that a path leads to as if its archive were a folder: "film.otioz/media/a.wav". Nothing where
/// no file stands in the path's way, and where the archive has no such member. Reads archives of any size
/// (zip64), and only the directory at their end. Throws SoundFileError, which names the archive, for files
/// that are none or are damaged.
std::optional<ZipMember> findZipMember(const std::filesystem::path& path);

/// Where a member can be read in place. Throws SoundFileError for one that is compressed or encrypted.
FilePart storedPartOf(const ZipMember& member, const std::filesystem::path& path);

/// All of a member, inflated. Throws SoundFileError for one that is damaged, encrypted, compressed by another
/// method than deflate, or longer than 256 MiB.
std::string textOf(const ZipMember& member, const std::filesystem::path& path);

/// Reads a part of a file for libsndfile, as a file of its own.
class FilePartReader {
public:
    /// Throws SoundFileError where the file cannot be opened.
    explicit FilePartReader(FilePart part);
    ~FilePartReader();
    FilePartReader(const FilePartReader&) = delete;
    FilePartReader& operator=(const FilePartReader&) = delete;

    /// This object must outlive the file. Null as sf_open() is.
    SNDFILE* open(SF_INFO& info);
    /// From the start of the part on; fewer bytes than asked for at its end, and where reading fails.
    std::int64_t read(void* bytes, std::int64_t count);

private:
    FilePart part_;
    int descriptor_ = -1;
    std::int64_t position_ = 0;
};

} // namespace audlmd

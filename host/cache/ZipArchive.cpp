#include "host/cache/ZipArchive.hpp"

#include "host/cache/SoundFile.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <new>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <zlib.h>

namespace audlmd {
namespace {

/// After PKWARE's APPNOTE.TXT 6.3, section 4.3. Lengths without the texts behind them.
constexpr std::size_t endLength = 22;
constexpr std::size_t end64Length = 56;
constexpr std::size_t locatorLength = 20;
constexpr std::size_t entryLength = 46;
constexpr std::size_t headLength = 30;
constexpr std::size_t longestComment = 65535;
/// About a million members.
constexpr std::uint64_t longestDirectory = std::uint64_t{128} << 20;
constexpr std::size_t longestText = std::size_t{256} << 20;

SoundFileError damaged(const std::filesystem::path& archive, const std::string& what) {
    return SoundFileError{"'" + archive.string() + "': " + what};
}

/// Little-endian numbers of a text. What lies beyond its end is 0.
std::uint64_t numberAt(std::string_view bytes, std::size_t at, std::size_t count) {
    std::uint64_t number = 0;
    for (std::size_t n = count; n-- > 0;)
        number = number << 8 | (at + n < bytes.size() ? static_cast<unsigned char>(bytes[at + n]) : 0U);
    return number;
}

std::string bytesOf(const FilePart& part) {
    FilePartReader reader(part);
    std::string bytes(static_cast<std::size_t>(part.length), '\0');
    if (reader.read(bytes.data(), part.length) != part.length)
        throw damaged(part.file, "cannot be read");
    return bytes;
}

/// A zip archive that is being searched.
class Archive {
public:
    explicit Archive(const std::filesystem::path& path)
        : path_(path), length_(std::filesystem::file_size(path)) {}

    std::optional<ZipMember> find(std::string_view name) const {
        const std::string directory = readDirectory();
        for (std::size_t at = 0; at + entryLength <= directory.size();) {
            const std::string_view entry = std::string_view(directory).substr(at);
            if (!entry.starts_with("PK\x01\x02"))
                break;
            const std::size_t nameLength = numberAt(entry, 28, 2);
            const std::size_t extraLength = numberAt(entry, 30, 2);
            if (entry.substr(entryLength).substr(0, nameLength) == name)
                return memberOf(
                    entry,
                    entry.substr(std::min(entryLength + nameLength, entry.size())).substr(0, extraLength));
            at += entryLength + nameLength + extraLength + numberAt(entry, 32, 2);
        }
        return std::nullopt;
    }

private:
    /// Throws unless the part lies inside the file.
    std::string bytesAt(std::uint64_t offset, std::uint64_t count) const {
        return bytesOf(partAt(offset, count));
    }
    FilePart partAt(std::uint64_t offset, std::uint64_t count) const {
        if (offset > length_ || count > length_ - offset)
            throw damaged(path_, "damaged: the archive's directory tells of bytes beyond its end");
        return {path_, static_cast<std::int64_t>(offset), static_cast<std::int64_t>(count)};
    }

    /// The record at the end tells where the directory is; where its numbers do not suffice, a longer one
    /// does.
    std::string readDirectory() const {
        const std::uint64_t tailLength =
            std::min<std::uint64_t>(length_, endLength + longestComment + locatorLength);
        const std::string tail = bytesAt(length_ - tailLength, tailLength);
        const std::size_t at = tail.rfind("PK\x05\x06");
        if (at == std::string::npos || tail.size() - at < endLength)
            throw damaged(path_, "not a zip archive, or its end is missing");
        const std::string_view end = std::string_view(tail).substr(at);
        std::uint64_t length = numberAt(end, 12, 4);
        std::uint64_t offset = numberAt(end, 16, 4);
        if ((length == 0xFFFFFFFF || offset == 0xFFFFFFFF || numberAt(end, 10, 2) == 0xFFFF) &&
            at >= locatorLength &&
            std::string_view(tail).substr(at - locatorLength).starts_with("PK\x06\x07")) {
            const std::string end64 = bytesAt(numberAt(tail, at - locatorLength + 8, 8), end64Length);
            length = numberAt(end64, 40, 8);
            offset = numberAt(end64, 48, 8);
        }
        if (length > longestDirectory)
            throw damaged(path_, "the archive has too many members");
        return bytesAt(offset, length);
    }

    /// `extra` has the numbers that are too large for the entry, in the order of the entry.
    ZipMember memberOf(std::string_view entry, std::string_view extra) const {
        // Inflated, as it is stored, and where it begins.
        std::array<std::uint64_t, 3> large{numberAt(entry, 24, 4), numberAt(entry, 20, 4),
                                           numberAt(entry, 42, 4)};
        while (extra.size() >= 4) {
            const std::size_t count = numberAt(extra, 2, 2);
            if (numberAt(extra, 0, 2) == 1) {
                const std::string_view numbers = extra.substr(4).substr(0, count);
                std::size_t at = 0;
                for (std::uint64_t& number : large)
                    if (number == 0xFFFFFFFF)
                        number = numberAt(numbers, std::exchange(at, at + 8), 8);
            }
            extra.remove_prefix(std::min(4 + count, extra.size()));
        }
        const std::uint64_t head = large[2];
        const std::string header = bytesAt(head, headLength);
        if (!header.starts_with("PK\x03\x04"))
            throw damaged(path_, "damaged: the archive's directory tells of a member that is not there");
        const std::uint64_t start = head + headLength + numberAt(header, 26, 2) + numberAt(header, 28, 2);
        return {.part = partAt(start, large[1]),
                .method = static_cast<int>(numberAt(entry, 10, 2)),
                .isEncrypted = (numberAt(entry, 8, 2) & 1U) != 0,
                .checksum = static_cast<std::uint32_t>(numberAt(entry, 16, 4))};
    }

    const std::filesystem::path& path_;
    std::uint64_t length_;
};

/// Grows with what there is, not with what a header says.
std::string inflated(const std::string& packed, const std::filesystem::path& path) {
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        throw std::bad_alloc();
    const std::unique_ptr<z_stream, int (*)(z_stream*)> ending(&stream, &inflateEnd);
    // Zlib does not write there.
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    std::string text;
    std::array<char, 65536> piece{};
    for (int result = Z_OK; result != Z_STREAM_END;) {
        stream.next_out = reinterpret_cast<Bytef*>(piece.data());
        stream.avail_out = piece.size();
        result = inflate(&stream, Z_NO_FLUSH);
        text.append(piece.data(), piece.size() - stream.avail_out);
        if (text.size() > longestText)
            throw damaged(path, "longer than 256 MiB");
        if (result != Z_OK && result != Z_STREAM_END)
            throw damaged(path, "damaged: it cannot be inflated");
    }
    return text;
}

} // namespace

std::optional<ZipMember> findZipMember(const std::filesystem::path& path) {
    std::error_code none;
    std::filesystem::path archive = path.parent_path();
    while (archive.has_relative_path() && !std::filesystem::exists(archive, none))
        archive = archive.parent_path();
    if (!std::filesystem::is_regular_file(archive, none))
        return std::nullopt;
    const std::string name = path.string().substr(archive.string().size());
    return Archive(archive).find(
        std::string_view(name).substr(std::min(name.find_first_not_of('/'), name.size())));
}

FilePart storedPartOf(const ZipMember& member, const std::filesystem::path& path) {
    if (member.isEncrypted)
        throw damaged(path, "encrypted inside its archive");
    if (member.method != 0)
        throw damaged(path,
                      "compressed inside its archive, where sound is read only as it is; store it (zip -0), "
                      "or unpack the archive");
    return member.part;
}

std::string textOf(const ZipMember& member, const std::filesystem::path& path) {
    if (member.method != Z_DEFLATED || member.isEncrypted)
        static_cast<void>(storedPartOf(member, path));
    if (static_cast<std::uint64_t>(member.part.length) > longestText)
        throw damaged(path, "longer than 256 MiB");
    std::string text = bytesOf(member.part);
    if (member.method == Z_DEFLATED)
        text = inflated(text, path);
    if (crc32(0, reinterpret_cast<const Bytef*>(text.data()), static_cast<uInt>(text.size())) !=
        member.checksum)
        throw damaged(path, "damaged: its checksum is wrong");
    return text;
}

FilePartReader::FilePartReader(FilePart part)
    : part_(std::move(part)), descriptor_(::open(part_.file.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0)
        throw damaged(part_.file, std::generic_category().message(errno));
}

FilePartReader::~FilePartReader() {
    close(descriptor_);
}

SNDFILE* FilePartReader::open(SF_INFO& info) {
    SF_VIRTUAL_IO calls{
        .get_filelen = [](void* self) -> sf_count_t {
            return static_cast<FilePartReader*>(self)->part_.length;
        },
        .seek = [](sf_count_t offset, int whence, void* self) -> sf_count_t {
            auto& reader = *static_cast<FilePartReader*>(self);
            const std::int64_t base = whence == SEEK_SET   ? 0
                                      : whence == SEEK_CUR ? reader.position_
                                                           : reader.part_.length;
            return reader.position_ = std::clamp<std::int64_t>(
                       base + std::clamp<std::int64_t>(offset, -reader.part_.length, reader.part_.length), 0,
                       reader.part_.length);
        },
        .read = [](void* bytes, sf_count_t count, void* self) -> sf_count_t {
            return static_cast<FilePartReader*>(self)->read(bytes, count);
        },
        .write = [](const void*, sf_count_t, void*) -> sf_count_t { return 0; },
        .tell = [](void* self) -> sf_count_t { return static_cast<FilePartReader*>(self)->position_; }};
    position_ = 0;
    return sf_open_virtual(&calls, SFM_READ, &info, this);
}

std::int64_t FilePartReader::read(void* bytes, std::int64_t count) {
    count = std::min(count, part_.length - position_);
    std::int64_t done = 0;
    while (done < count) {
        const ssize_t got = pread(descriptor_, static_cast<char*>(bytes) + done,
                                  static_cast<std::size_t>(count - done), part_.offset + position_);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += got;
        position_ += got;
    }
    return done;
}

} // namespace audlmd

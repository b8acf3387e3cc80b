#include "host/media/DecodedFile.hpp"

#include "host/cache/SoundFile.hpp"
#include "host/cache/ZipArchive.hpp"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace audlmd {
namespace {

/// The name of the last chunk, which is also what such a file ends with.
constexpr std::string_view mark = "audl";
/// The length of the label, and the mark.
constexpr std::uint32_t endLength = 8;

[[noreturn]] void failToWrite() {
    throw std::filesystem::filesystem_error(
        "", std::error_code(errno != 0 ? errno : EIO, std::generic_category()));
}

/// Of 32 bits, little-endian.
std::string bytesOf(std::uint32_t number) {
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

/// Paths may hold every character, so the path comes last.
std::string textOf(const Origin& origin) {
    std::ostringstream text;
    text << origin.size << ' ' << origin.modified << ' ' << origin.stream << ' ' << origin.path.string();
    return text.str();
}

/// The text is padded, so that it has an even length, as chunks have.
std::string chunkOf(std::string label) {
    label.resize(label.size() + label.size() % 2, '\0');
    const auto length = static_cast<std::uint32_t>(label.size());
    return std::string(mark) + bytesOf(length + endLength) + label + bytesOf(length) + std::string(mark);
}

/// libsndfile writes the usual mask for channels of which nobody says what they are.
void removeMask(int descriptor) {
    constexpr std::size_t fromChunk = 28;
    constexpr std::string_view chunk = "fmt ";
    constexpr std::array<char, 4> none{};
    std::array<char, 256> start{};
    const ssize_t count = pread(descriptor, start.data(), start.size(), 0);
    const std::size_t at = std::string_view(start.data(), start.size()).find(chunk);
    if (count < 0 || at == std::string_view::npos ||
        pwrite(descriptor, none.data(), none.size(), static_cast<off_t>(at + fromChunk)) < 0)
        failToWrite();
}

} // namespace

Origin originOf(const std::filesystem::path& path, int stream) {
    std::error_code error;
    if (const auto member = std::filesystem::exists(path, error) ? std::nullopt : findZipMember(path)) {
        // What is in an archive is as old as the archive.
        Origin origin = originOf(member->part.file, stream);
        origin.path /= path.lexically_relative(member->part.file);
        origin.size = static_cast<std::uintmax_t>(member->part.length);
        return origin;
    }
    const std::filesystem::path plain = std::filesystem::canonical(path, error);
    struct stat status {};
    if (error || stat(plain.c_str(), &status) != 0)
        throw SoundFileError("'" + path.string() + "': " +
                             (error ? error : std::error_code(errno, std::generic_category())).message());
    constexpr std::int64_t second = 1'000'000'000;
    return {.path = plain,
            .size = static_cast<std::uintmax_t>(status.st_size),
            .modified = status.st_mtim.tv_sec * second + status.st_mtim.tv_nsec,
            .stream = stream};
}

/// Fowler, Noll and Vo's, of 64 bits (FNV-1a).
std::uint64_t hashOf(const Origin& origin) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char letter : textOf(origin))
        hash = (hash ^ static_cast<unsigned char>(letter)) * 0x100000001B3U;
    return hash;
}

std::optional<DecodedLabel> readLabel(const std::filesystem::path& path) {
    constexpr std::uint32_t longest = 65536;
    std::ifstream file(path, std::ios::binary);
    std::array<char, endLength> end{};
    std::uint32_t length = 0;
    file.seekg(-std::streamoff{endLength}, std::ios::end);
    file.read(end.data(), end.size());
    std::memcpy(&length, end.data(), sizeof length);
    if (!file || std::string_view(&end[sizeof length], mark.size()) != mark || length > longest)
        return std::nullopt;
    std::string label(length, '\0');
    file.seekg(-std::streamoff{endLength} - std::streamoff{length}, std::ios::end);
    const std::streamoff start = file.tellg();
    file.read(label.data(), length);
    std::istringstream text(label.substr(0, label.find('\0')));
    DecodedLabel found;
    std::string source;
    std::streamoff written = 0;
    text >> written >> found.frames;
    std::getline(text.ignore(), found.note);
    text >> found.origin.size >> found.origin.modified >> found.origin.stream;
    std::getline(text.ignore(), source, '\0');
    found.origin.path = source;
    return file && start == written && !source.empty() ? std::optional(found) : std::nullopt;
}

DecodedFile::DecodedFile(int descriptor, const ForeignFormat& format)
    : descriptor_(descriptor), frameBytes_(static_cast<std::size_t>(format.channels) * sizeof(float)),
      hasLayout_(isKnown(format.layout)) {
    SF_INFO info{};
    info.channels = format.channels;
    info.samplerate = format.sampleRate;
    info.format = SF_FORMAT_RF64 | SF_FORMAT_FLOAT;
    file_.reset(sf_open_fd(descriptor, SFM_WRITE, &info, SF_FALSE));
    if (file_ == nullptr)
        failToWrite();
    if (hasLayout_) {
        std::vector<int> map = mapOf(format.layout);
        sf_command(file_.get(), SFC_SET_CHANNEL_MAP_INFO, map.data(),
                   static_cast<int>(map.size() * sizeof(int)));
    }
    if (format.timeReference) {
        const auto time = static_cast<std::uint64_t>(*format.timeReference);
        SF_BROADCAST_INFO broadcast{};
        broadcast.version = 1;
        broadcast.time_reference_low = static_cast<std::uint32_t>(time);
        broadcast.time_reference_high = static_cast<std::uint32_t>(time >> 32U);
        sf_command(file_.get(), SFC_SET_BROADCAST_INFO, &broadcast, sizeof broadcast);
    }
}

void DecodedFile::take(std::span<const std::byte> bytes) {
    begun_.insert(begun_.end(), bytes.begin(), bytes.end());
    const std::size_t whole = begun_.size() / frameBytes_ * frameBytes_;
    const auto count = static_cast<sf_count_t>(whole);
    errno = 0;
    if (sf_write_raw(file_.get(), begun_.data(), count) != count)
        failToWrite();
    frames_ += static_cast<std::int64_t>(whole / frameBytes_);
    begun_.erase(begun_.begin(), begun_.begin() + static_cast<std::ptrdiff_t>(whole));
}

void DecodedFile::finish(const Origin& origin, const std::string& note) {
    errno = 0;
    if (sf_close(file_.release()) != 0)
        failToWrite();
    if (!hasLayout_)
        removeMask(descriptor_);
    const off_t start = lseek(descriptor_, 0, SEEK_END) + off_t{endLength};
    const std::string chunk =
        chunkOf(std::to_string(start) + ' ' + std::to_string(frames_) + ' ' + note + '\n' + textOf(origin));
    if (write(descriptor_, chunk.data(), chunk.size()) != static_cast<ssize_t>(chunk.size()) ||
        fsync(descriptor_) != 0)
        failToWrite();
}

} // namespace audlmd

#include "tools/audlmd/files/SpooledInput.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/CheckedDescriptor.hpp"
#include "tools/audlmd/files/FileKind.hpp"
#include "tools/audlmd/files/NamelessFile.hpp"
#include "tools/audlmd/files/OutputFile.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <limits>
#include <span>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace audlmd::command {
namespace {

using Take = std::function<void(std::span<std::byte>)>;

std::string nameOf(const std::filesystem::path& input) {
    return input == "-" ? "standard input" : "'" + input.string() + "'";
}

[[noreturn]] void failToKeep(int error) {
    throw CommandError("'" + std::filesystem::temp_directory_path().string() +
                           "' cannot keep what is read: " + std::generic_category().message(error) +
                           "; TMPDIR names another folder",
                       ExitStatus::failed);
}

void writeAll(int descriptor, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            failToKeep(errno);
        bytes = bytes.subspan(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
}

/// Hands an input over to its end, in pieces of whole units but for the last. A unit has so many bytes.
void readAll(const std::filesystem::path& input, std::size_t unit, const Take& take) {
    const auto fail = [&input](const std::string& why) {
        throw CommandError(nameOf(input) + " cannot be read: " + why, ExitStatus::input);
    };
    const int descriptor =
        input == "-" ? dup(STDIN_FILENO) : open(input.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0)
        fail(std::generic_category().message(errno));
    if (isatty(descriptor) == 1)
        fail("it is a terminal; send sound through a pipe");
    constexpr std::size_t piece = std::size_t{1} << 20;
    std::vector<std::byte> bytes(piece / unit * unit);
    std::size_t filled = 0;
    for (ssize_t count = 1; count != 0;) {
        count = read(descriptor, bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno != EINTR) {
            const int error = errno;
            close(descriptor);
            fail(std::generic_category().message(error));
        }
        filled += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        if (filled == bytes.size() || count == 0) {
            take(std::span(bytes).first(filled));
            filled = 0;
        }
    }
    close(descriptor);
}

/// Behind a header: W64 holds all formats but signed bytes, which CAF holds.
void spoolRaw(const std::filesystem::path& input, const RawLayout& raw, int spool) {
    SF_INFO info{};
    info.channels = raw.channels;
    info.samplerate = raw.sampleRate;
    const FormatId kept = raw.format == FormatId::s24in32 ? FormatId::s32 : raw.format;
    const FileKind& kind = fileKindOf(kept == FormatId::s8 ? "x.caf" : "x.w64");
    info.format = kind.type | *subtypeIn(kind, kept);
    CheckedDescriptor checked(spool);
    SoundFileHandle file(checked.open(SFM_WRITE, info));
    const std::size_t frameBytes = static_cast<std::size_t>(raw.channels) * outputFormat(raw.format).bytes;
    std::uint64_t bytesRead = 0;
    bool written = file != nullptr;
    readAll(input, frameBytes, [&](std::span<std::byte> bytes) {
        bytesRead += bytes.size();
        if (raw.format == FormatId::s24in32)
            for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
                std::uint32_t container = 0;
                std::memcpy(&container, &bytes[at], sizeof container);
                container <<= 8U;
                std::memcpy(&bytes[at], &container, sizeof container);
            }
        const auto count = static_cast<sf_count_t>(bytes.size() / frameBytes * frameBytes);
        written = written && sf_write_raw(file.get(), bytes.data(), count) == count;
    });
    file.reset();
    if (!written || checked.error() != 0)
        failToKeep(checked.error());
    if (bytesRead % frameBytes != 0)
        throw CommandError(nameOf(input) + ": its " + std::to_string(bytesRead) +
                               " bytes are not a whole number of frames of " + std::to_string(frameBytes) +
                               " bytes",
                           ExitStatus::input);
}

/// The number of a little-endian field of a header, or nothing beyond the end.
std::optional<std::uint32_t> fieldAt(int descriptor, std::int64_t position) {
    std::uint32_t value = 0;
    return pread(descriptor, &value, sizeof value, position) == sizeof value ? std::optional(value)
                                                                             : std::nullopt;
}

/// Writes the true lengths into the header of a WAV that was made before its length was known. Such a header
/// states none, or more than a pipe will ever bring; where it states a possible length, it is left alone, so
/// that a WAV that was cut off stays one.
void stateLengths(int descriptor, const std::filesystem::path& input) {
    constexpr std::uint32_t riff = 0x46464952;
    constexpr std::uint32_t data = 0x61746164;
    constexpr std::uint32_t impossible = 0x7FFFF000;
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || fieldAt(descriptor, 0) != riff)
        return;
    for (std::int64_t at = 12; const auto name = fieldAt(descriptor, at);) {
        const std::uint32_t length = fieldAt(descriptor, at + 4).value_or(0);
        if (*name != data) {
            at += 8 + std::int64_t{length} + length % 2;
            continue;
        }
        const std::int64_t left = status.st_size - at - 8;
        if ((length != 0 && length < impossible) || left == length)
            return;
        if (status.st_size > std::numeric_limits<std::uint32_t>::max())
            throw CommandError(
                nameOf(input) + ": a WAV without its length ends at 4 GiB; send samples with --input-format",
                ExitStatus::input);
        const std::array lengths{static_cast<std::uint32_t>(status.st_size - 8),
                                 static_cast<std::uint32_t>(left)};
        if (pwrite(descriptor, lengths.data(), 4, 4) != 4 || pwrite(descriptor, &lengths[1], 4, at + 4) != 4)
            failToKeep(errno);
        return;
    }
}

} // namespace

bool isStream(const std::filesystem::path& input) {
    std::error_code none;
    const auto status = std::filesystem::status(input, none);
    return input == "-" || std::filesystem::is_fifo(status) || std::filesystem::is_character_file(status) ||
           std::filesystem::is_socket(status);
}

std::filesystem::path spooled(const std::filesystem::path& input, const std::optional<RawLayout>& raw) {
    const int spool = makeNamelessFile(std::filesystem::temp_directory_path());
    if (spool < 0)
        failToKeep(errno);
    if (raw) {
        spoolRaw(input, *raw, spool);
    } else {
        readAll(input, 1, [spool](std::span<const std::byte> bytes) { writeAll(spool, bytes); });
        stateLengths(spool, input);
    }
    return "/proc/self/fd/" + std::to_string(spool);
}

SoundFileError failureOf(const std::filesystem::path& input, const std::filesystem::path& copy,
                         const SoundFileError& failure) {
    // The copy stands in quotes.
    std::string why = std::string(failure.what()).substr(copy.string().size() + 2);
    if (dynamic_cast<const UnknownFormat*>(&failure) != nullptr)
        why += " ffmpeg decodes films from files only: save it as one";
    return SoundFileError(nameOf(input) + why);
}

} // namespace audlmd::command

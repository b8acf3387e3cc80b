#include "tools/audlmd/files/OutputFile.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"

#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace audlmd::command {
namespace {

/// A WAV with more bytes of samples is written as RF64: the lengths in a WAV header have 32 bits.
constexpr std::uint64_t largestWavData = 0xFFFF0000;

/// The number of the descriptor that a path names, or nothing for a path that names none.
std::optional<int> inheritedDescriptor(const std::filesystem::path& path) {
    const std::string text = path.lexically_normal().string();
    if (text == "-" || text == "/dev/stdout")
        return STDOUT_FILENO;
    if (text == "/dev/stderr")
        return STDERR_FILENO;
    for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
        int number = -1;
        if (text.starts_with(folder) &&
            std::from_chars(text.data() + folder.size(), text.data() + text.size(), number).ec == std::errc())
            return number;
    }
    return std::nullopt;
}

} // namespace

OutputTarget::OutputTarget(const std::filesystem::path& given)
    : path(given), inherited(inheritedDescriptor(given)) {
    std::error_code unknown;
    const std::filesystem::file_status status = std::filesystem::status(path, unknown);
    if (std::filesystem::is_directory(status))
        throw CommandError("cannot write '" + path.string() + "': it is a folder");
    isStream = inherited || (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status));
    kind = findFileKind(path);
    if (kind == nullptr)
        // A stream without an extension has no header; a file without one is a mistake of the user.
        kind = isStream ? &rawFileKind() : &fileKindOf(path);
    if (!isStream && std::filesystem::is_symlink(std::filesystem::symlink_status(path, unknown)))
        // Renaming onto a link would replace the link, so the file behind the link is the target.
        path = std::filesystem::weakly_canonical(path);
}

OutputFile::OutputFile(const OutputTarget& target, const OutputLayout& layout)
    : target_(target), layout_(layout) {
    requireHolds(*target_.kind, layout_.format, layout_.dataBytes(), target_.path);
    openDescriptor();
    openSoundFile();
}

/// The sound file is closed first, because closing still writes to the descriptor.
OutputFile::~OutputFile() {
    file_.reset();
    if (target_.isStream && descriptor_ >= 0)
        close(descriptor_);
}

void OutputFile::openDescriptor() {
    if (!target_.isStream) {
        descriptor_ = temporary_.emplace(target_.path).descriptor();
        return;
    }
    descriptor_ = target_.inherited ? dup(*target_.inherited)
                                    : open(target_.path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (descriptor_ < 0)
        fail(std::generic_category().message(errno));
}

void OutputFile::openSoundFile() {
    SF_INFO info{};
    info.channels = layout_.channels;
    info.samplerate = layout_.sampleRate;
    int type = target_.kind->type;
    if (type == SF_FORMAT_WAV && layout_.dataBytes() > largestWavData)
        type = SF_FORMAT_RF64;
    info.format = type | *subtypeIn(*target_.kind, layout_.format);
    file_.reset(sf_open_fd(descriptor_, SFM_WRITE, &info, SF_FALSE));
    if (file_ == nullptr)
        fail("as a " + std::string(target_.kind->name) + " file of " + std::to_string(info.channels) +
             " channel(s) at " + std::to_string(info.samplerate) + " Hz: " + sf_strerror(nullptr));
    // The chunk holds the time of writing: with it, equal renders would differ.
    sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    if (layout_.timeReference > 0 && (type == SF_FORMAT_WAV || type == SF_FORMAT_RF64))
        setTimeReference();
}

/// A chunk of the Broadcast Wave Format (EBU Tech 3285). Date and time of writing stay empty: with them,
/// equal renders would differ.
void OutputFile::setTimeReference() {
    SF_BROADCAST_INFO broadcast{};
    const auto reference = static_cast<std::uint64_t>(layout_.timeReference);
    broadcast.time_reference_low = static_cast<std::uint32_t>(reference);
    broadcast.time_reference_high = static_cast<std::uint32_t>(reference >> 32);
    broadcast.version = 1;
    if (sf_command(file_.get(), SFC_SET_BROADCAST_INFO, &broadcast, sizeof broadcast) != SF_TRUE)
        fail(sf_strerror(file_.get()));
}

/// A file in the byte order of the machine takes the bytes as they are, which cannot change a
/// bit.
void OutputFile::write(const std::byte* interleaved, std::size_t frames) {
    const auto bytes = static_cast<sf_count_t>(frames * layout_.frameBytes());
    const bool whole = target_.kind->littleEndian ? sf_write_raw(file_.get(), interleaved, bytes) == bytes
                                                  : writeConverted(interleaved, frames);
    if (!whole)
        fail(sf_strerror(file_.get()));
}

bool OutputFile::writeConverted(const std::byte* interleaved, std::size_t frames) {
    const auto count = frames * static_cast<std::size_t>(layout_.channels);
    const auto items = static_cast<sf_count_t>(count);
    switch (layout_.format) {
    case FormatId::f32:
        return sf_write_float(file_.get(), reinterpret_cast<const float*>(interleaved), items) == items;
    case FormatId::s16:
        return sf_write_short(file_.get(), reinterpret_cast<const short*>(interleaved), items) == items;
    case FormatId::s24in32:
    case FormatId::s32:
        return sf_write_int(file_.get(), reinterpret_cast<const int*>(interleaved), items) == items;
    case FormatId::s24:
    case FormatId::s8:
    case FormatId::u8:
        wide_.resize(count);
        widen(layout_.format, interleaved, wide_);
        return sf_write_int(file_.get(), wide_.data(), items) == items;
    }
    return false;
}

void OutputFile::commit() {
    // libsndfile does not report all errors of closing, so the file is read back.
    file_.reset();
    if (temporary_) {
        checkWhole();
        temporary_->commit();
    } else if (close(std::exchange(descriptor_, -1)) != 0) {
        fail(std::generic_category().message(errno));
    }
}

/// The size or the last frame is enough: a disk that is full cuts a file at the end.
void OutputFile::checkWhole() {
    if (target_.kind == &rawFileKind()) {
        struct stat written {};
        if (fstat(descriptor_, &written) != 0 ||
            static_cast<std::uint64_t>(written.st_size) != layout_.dataBytes())
            fail("it does not read back whole; is the disk full?");
        return;
    }
    SF_INFO info{};
    lseek(descriptor_, 0, SEEK_SET);
    const SoundFileHandle file(sf_open_fd(descriptor_, SFM_READ, &info, SF_FALSE));
    std::vector<float> lastFrame(static_cast<std::size_t>(layout_.channels));
    if (file == nullptr || info.frames != layout_.frames ||
        sf_seek(file.get(), layout_.frames - 1, SEEK_SET) != layout_.frames - 1 ||
        sf_readf_float(file.get(), lastFrame.data(), 1) != 1)
        fail("it does not read back whole; is the disk full?");
}

void OutputFile::fail(const std::string& why) const {
    throw CommandError("cannot write '" + target_.path.string() + "': " + why);
}

} // namespace audlmd::command

#include "tools/audlmd/files/OutputFile.hpp"

#include "host/cache/StatedLayout.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/ChannelMap.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <limits>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace audlmd::command {
namespace {

/// A WAV with more bytes of samples is written as RF64: the lengths in a WAV header have 32 bits.
constexpr std::uint64_t largestWavData = 0xFFFF0000;

/// Of a coding history, in bytes: libsndfile adds a line.
constexpr std::size_t mostHistory = 16 * 1024 - 256;

/// Longer than any header.
constexpr std::int64_t pretendedBytes = std::int64_t{1} << 20;

/// Where the header of a file of libsndfile's type states the size of the whole file.
struct SizeField {
    off_t position = 0;
    /// 0: there is none, or libsndfile reads it.
    std::size_t bytes = 0;
    /// What of the file does not count.
    std::int64_t before = 0;
};

SizeField sizeFieldOf(int type) {
    switch (type & SF_FORMAT_TYPEMASK) {
    case SF_FORMAT_WAV:
    case SF_FORMAT_WAVEX:
        return {4, 4, 8};
    case SF_FORMAT_RF64:
        return {20, 8, 8};
    case SF_FORMAT_W64:
        return {16, 8, 0};
    default:
        return {};
    }
}

/// In hundredths. The largest number stands for what is not defined.
std::int16_t hundredthsOf(const std::optional<double>& level) {
    constexpr double least = -99.99;
    constexpr double most = 99.99;
    return level ? static_cast<std::int16_t>(std::lround(std::clamp(*level, least, most) * 100.0))
                 : std::numeric_limits<std::int16_t>::max();
}

/// From version 2 on, a broadcast extension holds them.
void setLoudness(Metadata::Broadcast& broadcast, const ProgrammeLevels& levels) {
    broadcast.version = 2;
    broadcast.loudness_value = hundredthsOf(levels.integrated);
    broadcast.loudness_range = hundredthsOf(levels.range);
    broadcast.max_true_peak_level = hundredthsOf(levels.truePeak);
    broadcast.max_momentary_loudness = hundredthsOf(levels.highestMomentary);
    broadcast.max_shortterm_loudness = hundredthsOf(levels.highestShortTerm);
}

bool statesItsSize(int descriptor, const SizeField& field) {
    struct stat status {};
    std::int64_t stated = 0;
    return fstat(descriptor, &status) == 0 &&
           pread(descriptor, &stated, field.bytes, field.position) == static_cast<ssize_t>(field.bytes) &&
           (field.bytes == 0 || stated == status.st_size - field.before);
}

} // namespace

OutputTarget::OutputTarget(const std::filesystem::path& given, const FileKind* wanted)
    : OutputPath(given), kind(wanted != nullptr ? wanted : findFileKind(given)) {
    if (inherited && isatty(*inherited) == 1)
        throw CommandError("'" + given.string() +
                           "' is a terminal, which cannot play samples; name a file, or send them "
                           "through a pipe");
    if (kind == nullptr)
        // A stream without an extension has no header; a file without one is a mistake of the user.
        kind = isStream ? &rawFileKind() : &fileKindOf(given);
}

OutputFile::OutputFile(const OutputTarget& target, const OutputLayout& layout)
    : target_(target), layout_(layout), missing_(missingIn({}, layout.metadata)) {
    requireHolds(*target_.kind, layout_.format, layout_.dataBytes(), target_.path);
    if (isRiff(target_.kind->type))
        chunks_ = riffChunksOf(layout_.metadata);
    output_.emplace(target_);
    if (target_.isStream && target_.kind->type == SF_FORMAT_WAV)
        writeStreamedHeader();
    else
        openSoundFile();
}

SF_INFO OutputFile::info() const {
    SF_INFO info{};
    info.channels = layout_.channels;
    info.samplerate = layout_.sampleRate;
    const bool isLarge = layout_.dataBytes() + chunks_.size() > largestWavData && !target_.isStream;
    const int type = target_.kind->type == SF_FORMAT_WAV && isLarge ? SF_FORMAT_RF64 : target_.kind->type;
    if (const std::string why = whyLayoutDoesNotFit(type, layout_.speakers); !why.empty())
        throw CommandError("'" + target_.path.string() + "' cannot be written: " + why);
    info.format = typeFor(type, layout_.speakers) | *subtypeIn(*target_.kind, layout_.format);
    return info;
}

void OutputFile::openSoundFile() {
    SF_INFO opened = info();
    type_ = opened.format;
    if (target_.isStream)
        // libsndfile then knows that it cannot go back to the header.
        file_.reset(sf_open_fd(output_->descriptor(), SFM_WRITE, &opened, SF_FALSE));
    else
        file_.reset(checked_.emplace(output_->descriptor()).open(SFM_WRITE, opened));
    if (file_ == nullptr)
        fail("as a " + std::string(target_.kind->name) + " file of " + std::to_string(layout_.channels) +
             " channel(s) at " + std::to_string(layout_.sampleRate) + " Hz: " + sf_strerror(nullptr));
    describe(file_.get());
}

void OutputFile::writeStreamedHeader() {
    const int memory = memfd_create("header", MFD_CLOEXEC);
    if (memory < 0)
        failToWrite(target_.path, errno);
    SF_INFO opened = info();
    type_ = opened.format;
    {
        const SoundFileHandle file(sf_open_fd(memory, SFM_WRITE, &opened, SF_FALSE));
        if (file != nullptr)
            describe(file.get());
    }
    std::string header(static_cast<std::size_t>(lseek(memory, 0, SEEK_END)), '\0');
    const bool isRead = pread(memory, header.data(), header.size(), 0) == std::ssize(header);
    // Without samples, the header ends with the name of their chunk and its length.
    const bool isHeader = isRead && header.size() >= 44 && header.compare(header.size() - 8, 4, "data") == 0;
    if (isHeader) {
        header.insert(header.size() - 8, chunks_);
        CheckedDescriptor content(memory);
        const SoundFileHandle file(
            pwrite(memory, header.data(), header.size(), 0) < 0 ? nullptr : content.open(SFM_READ, opened));
        if (file != nullptr)
            findMissing(file.get(), memory);
    }
    close(memory);
    if (!isHeader)
        fail("its header cannot be made");
    header.replace(4, 4, 4, '\xFF');
    header.replace(header.size() - 4, 4, 4, '\xFF');
    output_->write(header);
}

/// The chunk of peaks holds the time of writing: with it, equal renders would differ.
void OutputFile::describe(SNDFILE* file) {
    sf_command(file, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    const int type = type_ & SF_FORMAT_TYPEMASK;
    isLayoutStated_ = stateLayout(file, type, layout_.speakers);
    writeTags(file, type, layout_.metadata);
    if (isRiff(type) && (layout_.timeReference > 0 || layout_.metadata.broadcast))
        setBroadcast(file);
}

/// A chunk of the Broadcast Wave Format (EBU Tech 3285). Where it is a new one, date and time of writing stay
/// empty: with them, equal renders would differ.
void OutputFile::setBroadcast(SNDFILE* file) const {
    Metadata::Broadcast broadcast{};
    if (layout_.metadata.broadcast)
        broadcast = *layout_.metadata.broadcast;
    else {
        broadcast.version = 1;
        std::string_view("audlmd").copy(broadcast.originator, sizeof broadcast.originator);
        if (const auto title = layout_.metadata.tags.find(SF_STR_TITLE); title != layout_.metadata.tags.end())
            title->second.copy(broadcast.description, sizeof broadcast.description);
    }
    const auto reference = static_cast<std::uint64_t>(layout_.timeReference);
    broadcast.time_reference_low = static_cast<std::uint32_t>(reference);
    broadcast.time_reference_high = static_cast<std::uint32_t>(reference >> 32);
    if (layout_.levels && layout_.levels->integrated)
        setLoudness(broadcast, *layout_.levels);
    const auto bytes = static_cast<int>(offsetof(Metadata::Broadcast, coding_history) +
                                        std::min<std::size_t>(broadcast.coding_history_size, mostHistory));
    if (sf_command(file, SFC_SET_BROADCAST_INFO, &broadcast, bytes) != SF_TRUE)
        fail(sf_strerror(file));
}

/// A file in the byte order of the machine takes the bytes as they are, which cannot change a
/// bit.
void OutputFile::write(const std::byte* interleaved, std::size_t frames) {
    if (file_ == nullptr)
        return output_->write({reinterpret_cast<const char*>(interleaved), frames * layout_.frameBytes()});
    const auto bytes = static_cast<sf_count_t>(frames * layout_.frameBytes());
    const bool whole = target_.kind->littleEndian ? sf_write_raw(file_.get(), interleaved, bytes) == bytes
                                                  : writeConverted(interleaved, frames);
    requireNoError();
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

/// There they may be of any length, while libsndfile makes a header in 50 KiB.
void OutputFile::appendChunks() {
    const int descriptor = output_->descriptor();
    const SizeField field = sizeFieldOf(type_);
    const off_t end = lseek(descriptor, 0, SEEK_END);
    if (end < 0)
        failToWrite(target_.path, errno);
    output_->write(std::string(static_cast<std::size_t>(end % 2), '\0') + chunks_);
    const std::int64_t size = lseek(descriptor, 0, SEEK_CUR) - field.before;
    if (lseek(descriptor, field.position, SEEK_SET) < 0)
        failToWrite(target_.path, errno);
    output_->write({reinterpret_cast<const char*>(&size), field.bytes});
}

void OutputFile::complete() {
    // Closing still writes.
    file_.reset();
    requireNoError();
    if (!chunks_.empty() && !target_.isStream)
        appendChunks();
    if (!target_.isStream && target_.kind != &rawFileKind()) {
        requireHeader();
        requireLastFrame();
    }
    output_->complete();
}

std::vector<std::string> OutputFile::notes() const {
    std::vector<std::string> notes;
    if (std::string note = layoutNote(target_.path.string(), layout_.speakers, isLayoutStated_);
        !note.empty())
        notes.push_back(std::move(note));
    if (!missing_.empty())
        notes.push_back("note: " + words::quoted(target_.path.string()) + " does not keep " + missing_);
    return notes;
}

void OutputFile::requireNoError() const {
    if (checked_ && checked_->error() != 0)
        failToWrite(target_.path, checked_->error());
}

/// The header is read with a length of the file that is not true, so that only a header that states its own
/// length is right. libsndfile takes the length of a W64 from the file, finds that of encoded samples at the
/// end, and looks at no RIFF file's: there the header's own is read.
void OutputFile::requireHeader() const {
    const bool isRead = (type_ & SF_FORMAT_TYPEMASK) == SF_FORMAT_W64 || target_.kind->lossy != 0;
    CheckedDescriptor header(output_->descriptor(), isRead ? 0 : pretendedBytes);
    SF_INFO found{};
    const SoundFileHandle file(header.open(SFM_READ, found));
    constexpr int compared = SF_FORMAT_TYPEMASK | SF_FORMAT_SUBMASK;
    if (file == nullptr || header.error() != 0 || ((found.format ^ type_) & compared) != 0 ||
        found.channels != layout_.channels || found.samplerate != layout_.sampleRate ||
        found.frames != layout_.frames ||
        (isLayoutStated_ && !areAlike(statedLayout(file.get(), found), layout_.speakers)) ||
        !statesItsSize(output_->descriptor(), sizeFieldOf(type_)))
        fail("its header does not read back as it was written");
}

void OutputFile::requireLastFrame() {
    CheckedDescriptor content(output_->descriptor());
    SF_INFO info{};
    const SoundFileHandle file(content.open(SFM_READ, info));
    std::vector<float> lastFrame(static_cast<std::size_t>(layout_.channels));
    if (file == nullptr || sf_seek(file.get(), layout_.frames - 1, SEEK_SET) != layout_.frames - 1 ||
        sf_readf_float(file.get(), lastFrame.data(), 1) != 1 || content.error() != 0)
        fail("its last frame does not read back");
    findMissing(file.get(), output_->descriptor());
}

void OutputFile::findMissing(SNDFILE* file, int descriptor) {
    try {
        missing_ = missingIn(metadataOf(file, descriptor), layout_.metadata);
    } catch (const std::system_error& error) {
        failToWrite(target_.path, error.code().value());
    }
}

void OutputFile::fail(const std::string& why) const {
    throw CommandError("'" + target_.path.string() + "' cannot be written: " + why, ExitStatus::output);
}

} // namespace audlmd::command

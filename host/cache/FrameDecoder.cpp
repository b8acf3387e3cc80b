#include "host/cache/FrameDecoder.hpp"

#include "host/cache/SoundFile.hpp"
#include "host/cache/StatedLayout.hpp"
#include "host/services/SampleRates.hpp"
#include "host/services/Threads.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <fcntl.h>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace audlmd {
namespace {

/// How many frames before the wanted one decoding starts in formats that need a run-up. Measured: with half
/// of them, Vorbis and Opus give the very samples of decoding without a jump. MPEG layers keep a rounding
/// error of a few 1e-7, however long the run-up is.
constexpr std::int64_t runUpFrames = 49152;

/// Whether the samples after a jump depend on those before it, which the decoder has not seen.
bool needsRunUp(const SF_INFO& info) {
    const int coding = info.format & SF_FORMAT_SUBMASK;
    return coding == SF_FORMAT_VORBIS || coding == SF_FORMAT_OPUS || coding == SF_FORMAT_MPEG_LAYER_I ||
           coding == SF_FORMAT_MPEG_LAYER_II || coding == SF_FORMAT_MPEG_LAYER_III;
}

/// Reads the number at the start of the text, after blanks. Nothing if there is none of up to 64 bits.
std::optional<std::uint64_t> leadingNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

/// Whether a length in a header stands for "not known yet". Programs then write the largest number of the
/// field, with or without the sign bit, less the length of the header.
bool isPlaceholder(std::uint64_t bytes) {
    constexpr std::uint64_t largestHeader = 0x1000;
    const auto liesBelow = [bytes](std::uint64_t limit) {
        return bytes <= limit && bytes > limit - largestHeader;
    };
    return liesBelow(0x7FFFFFFF) || liesBelow(0xFFFFFFFF) || bytes > 0x7FFFFFFF00000000;
}

/// Whether a line of libsndfile's log reports that the file is shorter than its header says. libsndfile then
/// goes on with the shorter length. Such a line reads: "data : 400000 (should be 239982)".
bool saysShortened(std::string_view line) {
    constexpr std::array<std::string_view, 4> dataSizes{"data : ", "SSND : ", "Data Size   : ", "riff : "};
    constexpr std::string_view correction = " (should be ";
    const std::size_t corrected = line.find(correction);
    if (corrected == std::string_view::npos)
        return line.find("does not match value from 'ds64' chunk") != std::string_view::npos;
    for (const std::string_view name : dataSizes)
        if (const std::size_t at = line.find(name); at != std::string_view::npos) {
            const auto claimed = leadingNumber(line.substr(at + name.size()));
            const auto there = leadingNumber(line.substr(corrected + correction.size()));
            return claimed && there && *there < *claimed && !isPlaceholder(*claimed);
        }
    return false;
}

/// Whether an open file was longer when its header was written. False where the header leaves the length
/// open, as in a file that was written into a pipe. The trap: not all formats tell, so a file may be
/// truncated all the same.
bool isShorterThanItsHeaderSays(SNDFILE* file) {
    std::array<char, 16384> log{};
    sf_command(file, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    std::string_view text(log.data());
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1);
        if (saysShortened(text.substr(0, end)))
            return true;
        text.remove_prefix(end + 1);
    }
    return false;
}

/// 0 for a file that is no broadcast wave file.
std::int64_t timeReferenceOf(SNDFILE* file) {
    SF_BROADCAST_INFO broadcast{};
    if (sf_command(file, SFC_GET_BROADCAST_INFO, &broadcast, sizeof broadcast) != SF_TRUE)
        return 0;
    return static_cast<std::int64_t>(std::uint64_t{broadcast.time_reference_high} << 32 |
                                     broadcast.time_reference_low);
}

SoundFileError failure(const std::filesystem::path& path, const std::string& reason) {
    // In front of the system's own words libsndfile writes this.
    constexpr std::string_view system = "System error : ";
    const bool isSystems = reason.starts_with(system);
    return SoundFileError{"'" + path.string() + "': " + (isSystems ? reason.substr(system.size()) : reason)};
}

/// Reads the start of a file once: where that fails, libsndfile says that it does not know the format. What
/// cannot be opened is left to libsndfile, which says why.
void requireReadable(const std::filesystem::path& path) {
    std::array<char, 4096> start{};
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    const int error = read(descriptor, start.data(), start.size()) < 0 ? errno : 0;
    close(descriptor);
    if (error != 0)
        throw failure(path, std::generic_category().message(error));
}

} // namespace

FrameDecoder::FrameDecoder(const std::filesystem::path& path, Truncated truncated) : path_(path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw failure(path_, "not a regular file");
    if (const auto member = error || !std::filesystem::exists(status) ? findZipMember(path_) : std::nullopt)
        part_ = std::make_unique<FilePartReader>(storedPartOf(*member, path_));
    file_ = open(info_);
    if (info_.samplerate < lowestSampleRate || info_.samplerate > highestSampleRate)
        throw failure(path_, "its sample rate of " + std::to_string(info_.samplerate) + " Hz is outside " +
                                 std::to_string(lowestSampleRate) + " to " +
                                 std::to_string(highestSampleRate) + " Hz");
    timeReference_ = timeReferenceOf(file_.get());
    layout_ = statedLayout(file_.get(), info_);
    if (info_.seekable == 0)
        throw failure(path_, "its format does not allow reading from any position");
    // libsndfile gives an unfinished Ogg stream no end.
    const bool hasNoEnd = info_.frames == std::numeric_limits<sf_count_t>::max();
    isTruncated_ = hasNoEnd || isShorterThanItsHeaderSays(file_.get());
    if (truncated == Truncated::taken)
        takeWhatIsThere();
    else if (isTruncated_)
        throw failure(path_, "truncated: it is shorter than its header says");
}

void FrameDecoder::takeWhatIsThere() {
    constexpr std::int64_t atOnce = 65536;
    std::vector<float> frames(static_cast<std::size_t>(atOnce * info_.channels));
    std::int64_t there = 0;
    while (const sf_count_t got = std::max<sf_count_t>(sf_readf_float(file_.get(), frames.data(), atOnce), 0))
        there += got;
    if (there == 0 && info_.frames != 0)
        throw failure(path_, "truncated: none of its samples are there");
    isTruncated_ = isTruncated_ || there < info_.frames;
    info_.frames = there;
    // Behind a failure libsndfile may not find its way.
    file_.reset();
}

void FrameDecoder::decode(std::int64_t position, std::span<float> interleaved) {
    if (file_ == nullptr)
        reopen();
    try {
        goTo(position);
        decodeNext(interleaved);
    } catch (...) {
        file_.reset();
        throw;
    }
}

FrameDecoder::File FrameDecoder::open(SF_INFO& info) const {
    // libsndfile says why it could not open a file in one place for the whole process.
    static Mutex opening;
    const Lock lock(opening);
    requireReadable(path_);
    File file(part_ ? part_->open(info) : sf_open(path_.c_str(), SFM_READ, &info));
    const std::string reason = sf_strerror(file.get());
    if (file == nullptr && sf_error(nullptr) != SF_ERR_SYSTEM)
        throw UnknownFormat(failure(path_, reason).what());
    if (file == nullptr)
        throw failure(path_, reason);
    // libsndfile goes on after a part of the header that could not be read, and takes the part for zeros.
    if (sf_error(file.get()) == SF_ERR_SYSTEM)
        throw failure(path_, sf_strerror(file.get()));
    return file;
}

void FrameDecoder::reopen() {
    SF_INFO info{};
    File file = open(info);
    // Frames of another size would not fit the buffers.
    if (info.channels != info_.channels)
        throw failure(path_, "another file has taken its place");
    file_ = std::move(file);
    next_ = 0;
}

void FrameDecoder::goTo(std::int64_t position) {
    if (position == next_)
        return;
    const std::int64_t runUp = needsRunUp(info_) ? std::min(position, runUpFrames) : 0;
    if (sf_seek(file_.get(), position - runUp, SEEK_SET) != position - runUp)
        throw failure(path_,
                      "cannot go to frame " + std::to_string(position) + ": " + sf_strerror(file_.get()));
    next_ = position - runUp;
    if (runUp != 0) {
        std::vector<float> unused(static_cast<std::size_t>(runUp * info_.channels));
        decodeNext(unused);
    }
}

void FrameDecoder::decodeNext(std::span<float> interleaved) {
    const auto frames = static_cast<sf_count_t>(interleaved.size()) / info_.channels;
    const sf_count_t got = sf_readf_float(file_.get(), interleaved.data(), frames);
    if (got == frames) {
        next_ += frames;
        return;
    }
    const bool knowsWhy = sf_error(file_.get()) != SF_ERR_NO_ERROR;
    throw failure(path_, "cannot be read at frame " + std::to_string(next_ + std::max<sf_count_t>(got, 0)) +
                             " of " + std::to_string(info_.frames) + ": " +
                             (knowsWhy ? sf_strerror(file_.get()) : "the file ends there"));
}

} // namespace audlmd

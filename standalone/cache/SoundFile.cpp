#include "standalone/cache/SoundFile.hpp"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <deque>
#include <limits>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace audlmd {
namespace {

/// Frames that have been decoded, interleaved.
struct Stretch {
    std::int64_t position;
    std::vector<float> samples;
};

/// The number at the start of the text, after blanks. Larger than any if it does not fit.
std::optional<std::uint64_t> leadingNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::result_out_of_range)
        return std::numeric_limits<std::uint64_t>::max();
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

/// What programs write for a length that they do not know yet: all bits of a 32-bit field, with or without
/// the sign, less a header.
bool isPlaceholder(std::uint64_t bytes) {
    constexpr std::uint64_t largestHeader = 0x1000;
    const auto liesBelow = [bytes](std::uint64_t limit) {
        return bytes <= limit && bytes > limit - largestHeader;
    };
    return liesBelow(0x7FFFFFFF) || liesBelow(0xFFFFFFFF) || bytes > 0x7FFFFFFF00000000;
}

/// libsndfile shortens the length to what is there, and says so only in its log: "data : 400000 (should be
/// 239982)".
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

} // namespace

class SoundFile::Decoder {
public:
    explicit Decoder(const std::filesystem::path& path) : path_(path) {
        std::error_code error;
        const auto status = std::filesystem::status(path, error);
        if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
            throw failure("not a regular file");
        {
            // libsndfile says why it could not open a file in one place for the whole process.
            static std::mutex opening;
            const std::lock_guard lock(opening);
            file_.reset(sf_open(path.c_str(), SFM_READ, &info_));
            if (file_ == nullptr)
                throw failure(sf_strerror(nullptr));
        }
        if (info_.seekable == 0)
            throw failure("its format does not allow reading from any position");
        // An unfinished Ogg stream is given no end.
        if (info_.frames == std::numeric_limits<sf_count_t>::max() || isShorterThanItsHeaderSays(file_.get()))
            throw failure("truncated: it is shorter than its header says");
    }

    const std::filesystem::path& path() const { return path_; }
    const SF_INFO& info() const { return info_; }

    std::uint64_t decodedStretches() const {
        const std::lock_guard lock(mutex_);
        return decoded_;
    }

    /// The lock is held throughout: whoever needs the same stretch for another channel waits until it is
    /// there.
    void read(int channel, std::int64_t position, std::span<float> samples) {
        const std::lock_guard lock(mutex_);
        if (info_.channels == 1)
            return decode(position, samples);
        const Stretch& stretch = find(position, samples.size());
        const auto channels = static_cast<std::size_t>(info_.channels);
        const float* from = stretch.samples.data() + static_cast<std::size_t>(channel) +
                            static_cast<std::size_t>(position - stretch.position) * channels;
        for (float& sample : samples) {
            sample = *from;
            from += channels;
        }
    }

private:
    struct Closer {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };

    SoundFileError failure(const std::string& reason) const {
        return SoundFileError(path_.string() + ": " + reason);
    }

    /// A kept stretch that holds the frames, else a new one, in the memory of those that it displaces.
    const Stretch& find(std::int64_t position, std::size_t frames) {
        const auto channels = static_cast<std::size_t>(info_.channels);
        const auto holdsAll = [&](const Stretch& stretch) {
            const auto kept = static_cast<std::int64_t>(stretch.samples.size() / channels);
            return stretch.position <= position &&
                   position + static_cast<std::int64_t>(frames) <= stretch.position + kept;
        };
        const auto found = std::find_if(kept_.begin(), kept_.end(), holdsAll);
        if (found != kept_.end())
            return *found;

        Stretch stretch{};
        while (kept_.size() >= 2 && keptSamples_ + frames * channels > mostKeptSamples) {
            stretch = std::move(kept_.front());
            kept_.pop_front();
            keptSamples_ -= stretch.samples.size();
        }
        stretch.position = position;
        stretch.samples.resize(frames * channels);
        decode(position, stretch.samples);
        keptSamples_ += stretch.samples.size();
        return kept_.emplace_back(std::move(stretch));
    }

    void decode(std::int64_t position, std::span<float> interleaved) {
        ++decoded_;
        if (position != next_ && sf_seek(file_.get(), position, SEEK_SET) != position) {
            next_ = unknown;
            throw failure("cannot go to frame " + std::to_string(position) + ": " + sf_strerror(file_.get()));
        }
        const auto frames = static_cast<sf_count_t>(interleaved.size()) / info_.channels;
        const sf_count_t got = sf_readf_float(file_.get(), interleaved.data(), frames);
        if (got == frames) {
            next_ = position + frames;
            return;
        }
        next_ = unknown;
        throw failure(
            "cannot be read at frame " + std::to_string(position + std::max<sf_count_t>(got, 0)) + " of " +
            std::to_string(info_.frames) + ": " +
            (sf_error(file_.get()) != SF_ERR_NO_ERROR ? sf_strerror(file_.get()) : "the file ends there"));
    }

    static constexpr std::size_t mostKeptSamples = (std::size_t{8} << 20) / sizeof(float);
    static constexpr std::int64_t unknown = -1;

    std::filesystem::path path_;
    SF_INFO info_{};

    mutable std::mutex mutex_;
    std::unique_ptr<SNDFILE, Closer> file_;
    /// The frame that would be decoded next without seeking.
    std::int64_t next_ = 0;
    /// The one decoded first comes first.
    std::deque<Stretch> kept_;
    std::size_t keptSamples_ = 0;
    std::uint64_t decoded_ = 0;
};

SoundFile::SoundFile(const std::filesystem::path& path) : decoder_(std::make_unique<Decoder>(path)) {}

SoundFile::~SoundFile() = default;

const std::filesystem::path& SoundFile::path() const {
    return decoder_->path();
}

int SoundFile::channels() const {
    return decoder_->info().channels;
}

int SoundFile::sampleRate() const {
    return decoder_->info().samplerate;
}

std::int64_t SoundFile::frames() const {
    return decoder_->info().frames;
}

void SoundFile::read(int channel, std::int64_t position, std::span<float> samples) {
    decoder_->read(channel, position, samples);
}

std::uint64_t SoundFile::decodedStretches() const {
    return decoder_->decodedStretches();
}

SoundFileSource::SoundFileSource(std::shared_ptr<SoundFile> file, int channel)
    : file_(std::move(file)), channel_(channel) {
    if (channel < 0 || channel >= file_->channels())
        throw std::out_of_range(file_->path().string() + ": there is no channel " + std::to_string(channel) +
                                ", it has " + std::to_string(file_->channels()));
}

} // namespace audlmd

#include "standalone/cache/SoundFile.hpp"

#include "standalone/cache/TruncatedFile.hpp"

#include <sndfile.h>

#include <algorithm>
#include <deque>
#include <limits>
#include <mutex>
#include <string>
#include <vector>

namespace audlmd {
namespace {

/// Frames that have been decoded, interleaved.
struct Stretch {
    std::int64_t position;
    std::vector<float> samples;
};

/// Whether the samples after a jump depend on those before it, which the decoder has not seen.
bool needsRunUp(const SF_INFO& info) {
    const int coding = info.format & SF_FORMAT_SUBMASK;
    return coding == SF_FORMAT_VORBIS || coding == SF_FORMAT_OPUS || coding == SF_FORMAT_MPEG_LAYER_I ||
           coding == SF_FORMAT_MPEG_LAYER_II || coding == SF_FORMAT_MPEG_LAYER_III;
}

} // namespace

class SoundFile::Decoder {
public:
    explicit Decoder(const std::filesystem::path& path) : path_(path) {
        std::error_code error;
        const auto status = std::filesystem::status(path, error);
        if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
            throw failure("not a regular file");
        open();
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
        return SoundFileError{path_.string() + ": " + reason};
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

    /// After a failure libsndfile may not find its way again: the file is then opened anew.
    void decode(std::int64_t position, std::span<float> interleaved) {
        ++decoded_;
        if (file_ == nullptr)
            open();
        try {
            goTo(position);
            decodeNext(interleaved);
        } catch (...) {
            file_.reset();
            throw;
        }
    }

    void open() {
        // libsndfile says why it could not open a file in one place for the whole process.
        static std::mutex opening;
        const std::lock_guard lock(opening);
        info_ = {};
        file_.reset(sf_open(path_.c_str(), SFM_READ, &info_));
        if (file_ == nullptr)
            throw failure(sf_strerror(nullptr));
        next_ = 0;
    }

    void goTo(std::int64_t position) {
        if (position == next_)
            return;
        const std::int64_t runUp = needsRunUp(info_) ? std::min(position, runUpFrames) : 0;
        if (sf_seek(file_.get(), position - runUp, SEEK_SET) != position - runUp)
            throw failure("cannot go to frame " + std::to_string(position) + ": " + sf_strerror(file_.get()));
        next_ = position - runUp;
        if (runUp != 0) {
            std::vector<float> unused(static_cast<std::size_t>(runUp * info_.channels));
            decodeNext(unused);
        }
    }

    void decodeNext(std::span<float> interleaved) {
        const auto frames = static_cast<sf_count_t>(interleaved.size()) / info_.channels;
        const sf_count_t got = sf_readf_float(file_.get(), interleaved.data(), frames);
        if (got == frames) {
            next_ += frames;
            return;
        }
        const bool knowsWhy = sf_error(file_.get()) != SF_ERR_NO_ERROR;
        throw failure("cannot be read at frame " + std::to_string(next_ + std::max<sf_count_t>(got, 0)) +
                      " of " + std::to_string(info_.frames) + ": " +
                      (knowsWhy ? sf_strerror(file_.get()) : "the file ends there"));
    }

    static constexpr std::size_t mostKeptSamples = (std::size_t{8} << 20) / sizeof(float);
    /// Measured: with half of it, Vorbis and Opus give the very samples of an uninterrupted run. MPEG layers
    /// are left with a rounding error of a few 1e-7, however long it is.
    static constexpr std::int64_t runUpFrames = 49152;

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

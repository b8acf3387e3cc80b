#include "host/cache/SoundFile.hpp"

#include "host/cache/FrameDecoder.hpp"
#include "host/services/Threads.hpp"

#include <algorithm>
#include <deque>
#include <utility>
#include <vector>

namespace audlmd {
namespace {

/// The most samples that are kept, of all channels together: 8 MiB.
constexpr std::size_t mostKeptSamples = (std::size_t{8} << 20) / sizeof(float);

} // namespace

/// The decoder and the excerpts that were decoded last.
class SoundFile::KeptExcerpts {
public:
    explicit KeptExcerpts(const std::filesystem::path& path) : decoder_(path) {}

    const FrameDecoder& decoder() const AUDLMD_UNCHECKED("its const functions give what never changes") {
        return decoder_;
    }

    std::uint64_t decodedExcerpts() const {
        const Lock lock(mutex_);
        return decodedExcerpts_;
    }

    /// Holds the lock while it decodes, so that a thread that needs the same excerpt for another channel
    /// waits until the excerpt is there.
    void read(int channel, std::int64_t position, std::span<float> samples) {
        const Lock lock(mutex_);
        // No other channel will ask for the frames: they need not be kept.
        if (channels_ == 1)
            return decode(position, samples);
        Excerpt& excerpt = find(position, samples.size());
        excerpt.read += samples.size();
        const float* from = excerpt.samples.data() + static_cast<std::size_t>(channel) +
                            static_cast<std::size_t>(position - excerpt.position) * channels_;
        for (float& sample : samples) {
            sample = *from;
            from += channels_;
        }
    }

private:
    /// Frames that were decoded at one go, interleaved.
    struct Excerpt {
        /// Of the first frame.
        std::int64_t position;
        std::vector<float> samples;
        /// How many samples were read from it, of all channels together.
        std::size_t read = 0;
    };

    /// A kept excerpt that holds all the frames, else one decoded for them.
    Excerpt& find(std::int64_t position, std::size_t frames) AUDLMD_REQUIRES(mutex_) {
        const auto holdsAll = [&](const Excerpt& excerpt) {
            const auto kept = static_cast<std::int64_t>(excerpt.samples.size() / channels_);
            return excerpt.position <= position &&
                   position + static_cast<std::int64_t>(frames) <= excerpt.position + kept;
        };
        const auto found = std::find_if(kept_.begin(), kept_.end(), holdsAll);
        return found != kept_.end() ? *found : decodeExcerpt(position, frames);
    }

    /// Displaces an excerpt that all channels have read, whose memory is still in the processor's caches;
    /// else the oldest ones, to make room. Reuses the memory of the last one displaced. The two newest are
    /// kept however long they are, for two readers that stand at a border between segments.
    Excerpt& decodeExcerpt(std::int64_t position, std::size_t frames) AUDLMD_REQUIRES(mutex_) {
        Excerpt excerpt{};
        const auto wasRead = [](const Excerpt& kept) { return kept.read >= kept.samples.size(); };
        if (const auto done = std::find_if(kept_.begin(), kept_.end(), wasRead); done != kept_.end())
            excerpt = take(done);
        while (kept_.size() >= 2 && keptSamples_ + frames * channels_ > mostKeptSamples)
            excerpt = take(kept_.begin());
        excerpt.read = 0;
        excerpt.position = position;
        excerpt.samples.resize(frames * channels_);
        decode(position, excerpt.samples);
        keptSamples_ += excerpt.samples.size();
        return kept_.emplace_back(std::move(excerpt));
    }

    Excerpt take(const std::deque<Excerpt>::iterator& place) AUDLMD_REQUIRES(mutex_) {
        Excerpt taken = std::move(*place);
        keptSamples_ -= taken.samples.size();
        kept_.erase(place);
        return taken;
    }

    void decode(std::int64_t position, std::span<float> interleaved) AUDLMD_REQUIRES(mutex_) {
        ++decodedExcerpts_;
        decoder_.decode(position, interleaved);
    }

    mutable Mutex mutex_;
    FrameDecoder decoder_ AUDLMD_GUARDED_BY(mutex_);
    const std::size_t channels_ = static_cast<std::size_t>(decoder_.info().channels);
    /// The excerpt that was decoded first comes first.
    std::deque<Excerpt> kept_ AUDLMD_GUARDED_BY(mutex_);
    std::size_t keptSamples_ AUDLMD_GUARDED_BY(mutex_) = 0;
    std::uint64_t decodedExcerpts_ AUDLMD_GUARDED_BY(mutex_) = 0;
};

SoundFile::SoundFile(const std::filesystem::path& path) : excerpts_(std::make_unique<KeptExcerpts>(path)) {}

SoundFile::~SoundFile() = default;

const std::filesystem::path& SoundFile::path() const {
    return excerpts_->decoder().path();
}

int SoundFile::channels() const {
    return excerpts_->decoder().info().channels;
}

int SoundFile::sampleRate() const {
    return excerpts_->decoder().info().samplerate;
}

std::int64_t SoundFile::frames() const {
    return excerpts_->decoder().info().frames;
}

std::int64_t SoundFile::timeReference() const {
    return excerpts_->decoder().timeReference();
}

void SoundFile::read(int channel, std::int64_t position, std::span<float> samples) {
    excerpts_->read(channel, position, samples);
}

std::uint64_t SoundFile::decodedExcerpts() const {
    return excerpts_->decodedExcerpts();
}

SoundFileSource::SoundFileSource(std::shared_ptr<SoundFile> file, int channel)
    : file_(std::move(file)), channel_(channel) {
    if (channel < 0 || channel >= file_->channels())
        throw std::out_of_range(file_->path().string() + ": there is no channel " + std::to_string(channel) +
                                ", it has " + std::to_string(file_->channels()));
}

} // namespace audlmd

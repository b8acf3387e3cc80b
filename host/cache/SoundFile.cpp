#include "host/cache/SoundFile.hpp"

#include "host/cache/ChannelExcerpts.hpp"
#include "host/cache/FrameDecoder.hpp"

#include <string>
#include <utility>

namespace audlmd {
namespace {

constexpr ChannelExcerpts::Limits ofAFile{.samples = (std::size_t{8} << 20) / sizeof(float), .excerpts = 2};

} // namespace

struct SoundFile::Impl {
    Impl(const std::filesystem::path& path, Truncated truncated)
        : decoder(path, truncated),
          excerpts(static_cast<std::size_t>(decoder.info().channels), ChannelExcerpts::Layout::interleaved,
                   ofAFile, [this](std::int64_t position, std::span<float> interleaved) {
                       decoder.decode(position, interleaved);
                   }) {}

    /// The excerpts alone decode, one thread at a time. The rest of it never changes.
    FrameDecoder decoder;
    ChannelExcerpts excerpts;
};

SoundFile::SoundFile(const std::filesystem::path& path, Truncated truncated)
    : impl_(std::make_unique<Impl>(path, truncated)) {}

SoundFile::~SoundFile() = default;

const std::filesystem::path& SoundFile::path() const {
    return impl_->decoder.path();
}

int SoundFile::channels() const {
    return impl_->decoder.info().channels;
}

int SoundFile::sampleRate() const {
    return impl_->decoder.info().samplerate;
}

std::int64_t SoundFile::frames() const {
    return impl_->decoder.info().frames;
}

bool SoundFile::isTruncated() const {
    return impl_->decoder.isTruncated();
}

std::int64_t SoundFile::timeReference() const {
    return impl_->decoder.timeReference();
}

const ChannelLayout& SoundFile::layout() const {
    return impl_->decoder.layout();
}

void SoundFile::read(int channel, std::int64_t position, std::span<float> samples) {
    impl_->excerpts.read(static_cast<std::size_t>(channel), position, samples);
}

void SoundFile::read(std::int64_t position, std::span<const Stretch> stretches) {
    impl_->excerpts.read(position, stretches);
}

SoundFileSource::SoundFileSource(std::shared_ptr<SoundFile> file, int channel)
    : file_(std::move(file)), channel_(channel) {
    if (channel < 0 || channel >= file_->channels())
        throw std::out_of_range(file_->path().string() + ": there is no channel " + std::to_string(channel) +
                                ", it has " + std::to_string(file_->channels()));
}

} // namespace audlmd

#include "host/mix/Media.hpp"

#include <algorithm>
#include <utility>

namespace audlmd {
namespace {

/// A weighted sum of channels of one recording. There must be one.
class SummedSource final : public SampleSource {
public:
    struct Term {
        std::shared_ptr<SampleSource> source;
        double gain;
    };

    explicit SummedSource(std::vector<Term> terms) : terms_(std::move(terms)) {}

    std::int64_t length() const override { return terms_.front().source->length(); }

    void read(std::int64_t position, std::span<float> samples) override {
        std::vector<double> sums(samples.size());
        for (const Term& term : terms_) {
            term.source->read(position, samples);
            for (std::size_t n = 0; n < samples.size(); ++n)
                sums[n] += term.gain * double{samples[n]};
        }
        std::ranges::transform(sums, samples.begin(), [](double sum) { return static_cast<float>(sum); });
    }

    const void* exclusiveResource() const override { return terms_.front().source->exclusiveResource(); }

private:
    std::vector<Term> terms_;
};

/// A channel into which nothing is routed.
class SilentSource final : public SampleSource {
public:
    explicit SilentSource(std::int64_t length) : length_(length) {}

    std::int64_t length() const override { return length_; }
    void read(std::int64_t /*position*/, std::span<float> samples) override {
        std::ranges::fill(samples, 0.0F);
    }

private:
    std::int64_t length_;
};

std::shared_ptr<SampleSource> sumOf(const Media& media, const std::vector<float>& gains) {
    std::vector<SummedSource::Term> terms;
    for (std::size_t channel = 0; channel < gains.size(); ++channel)
        if (gains[channel] != 0.0F)
            terms.push_back({.source = media.channels[channel], .gain = double{gains[channel]}});
    if (terms.empty())
        return std::make_shared<SilentSource>(media.channels.front()->length());
    if (terms.size() == 1 && terms.front().gain == 1.0)
        return terms.front().source;
    return std::make_shared<SummedSource>(std::move(terms));
}

} // namespace

ChannelLayout layoutOf(const Media& media) {
    return media.layout.empty() ? unknownLayout(media.channels.size()) : media.layout;
}

Media foldedDown(const Media& media, const FoldDown& foldDown) {
    Media folded{.channels = {},
                 .sampleRate = media.sampleRate,
                 .layout = foldDown.layout,
                 .isTruncated = media.isTruncated};
    for (const std::vector<float>& gains : foldDown.routing.rows)
        folded.channels.push_back(sumOf(media, gains));
    return folded;
}

Media openSoundFile(const std::string& path) {
    return openRecording(path, Truncated::refused);
}

Media openRecording(const std::string& path, Truncated truncated) {
    const auto file = std::make_shared<SoundFile>(path, truncated);
    Media media{.channels = {},
                .sampleRate = file->sampleRate(),
                .layout = file->layout(),
                .isTruncated = file->isTruncated()};
    for (int channel = 0; channel < file->channels(); ++channel)
        media.channels.push_back(std::make_shared<SoundFileSource>(file, channel));
    return media;
}

} // namespace audlmd

#include "host/mix/Media.hpp"

#include "host/words/Times.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>
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

constexpr std::string_view withMark = "#with=";

Media openFile(const std::string& path, Truncated truncated) {
    const auto file = std::make_shared<SoundFile>(path, truncated);
    Media media{.channels = {},
                .sampleRate = file->sampleRate(),
                .layout = file->layout(),
                .isTruncated = file->isTruncated()};
    for (int channel = 0; channel < file->channels(); ++channel)
        media.channels.push_back(std::make_shared<SoundFileSource>(file, channel));
    return media;
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

std::vector<std::string> namesIn(const std::string& media) {
    std::vector<std::string> names;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = media.find(withMark, begin)) != std::string::npos;
         begin = end + withMark.size())
        names.push_back(media.substr(begin, end - begin));
    names.push_back(media.substr(begin));
    return names;
}

std::string jointName(const std::vector<std::string>& files) {
    std::string name = files.front();
    for (std::size_t file = 1; file < files.size(); ++file)
        name.append(withMark).append(files[file]);
    return name;
}

Media openRecording(const std::string& path, Truncated truncated) {
    const std::vector<std::string> files = namesIn(path);
    Media whole = openFile(files.front(), truncated);
    for (std::size_t file = 1; file < files.size(); ++file) {
        Media more = openFile(files[file], truncated);
        const std::int64_t length = whole.channels.front()->length();
        if (more.sampleRate != whole.sampleRate || more.channels.front()->length() != length)
            throw SoundFileError("'" + files[file] + "' has " +
                                 std::to_string(more.channels.front()->length()) + " samples at " +
                                 std::to_string(more.sampleRate) + " Hz, '" + files.front() + "' " +
                                 std::to_string(length) + " at " + std::to_string(whole.sampleRate) +
                                 " Hz; files of one recording must be equally long and of one rate");
        std::ranges::move(more.channels, std::back_inserter(whole.channels));
        whole.layout = unknownLayout(whole.channels.size());
        whole.isTruncated |= more.isTruncated;
    }
    return whole;
}

std::string truncatedText(const std::string& name, std::int64_t frames, int sampleRate) {
    return name + " is truncated: what is there is taken, " + words::clock(frames, sampleRate);
}

} // namespace audlmd

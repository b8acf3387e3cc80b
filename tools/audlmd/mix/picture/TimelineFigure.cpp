#include "tools/audlmd/mix/picture/TimelineFigure.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/mix/picture/TimelinePainter.hpp"

#include <algorithm>
#include <cmath>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace audlmd::command {

using namespace plot;

namespace {

constexpr std::int64_t blockLength = 65536;

/// Samples of a medium, at the medium's own rate, from `from` to `to`.
struct SampleSpan {
    std::int64_t from;
    std::int64_t to;
};

/// A strip that waits for its samples. Columns are taken in the order of the material.
class WaitingStrip {
public:
    /// `samplesPerSample` is the medium's rate divided by the timeline's.
    WaitingStrip(StripSketch& sketch, double samplesPerSample, std::int64_t mediumLength)
        : sketch_(&sketch), samplesPerSample_(samplesPerSample),
          mediumLength_(mediumLength), wanted_{inColumn(0).from, inColumn(sketch.columnCount() - 1).to} {}

    const SampleSpan& wanted() const { return wanted_; }

    /// Takes magnitudes from sample `position` of the medium on. Blocks come in the order of the medium.
    void take(std::int64_t position, std::span<const float> magnitudes) {
        const std::int64_t end = position + std::ssize(magnitudes);
        for (; next_ < sketch_->columnCount(); ++next_) {
            const SampleSpan column = inColumn(next_);
            const std::int64_t from = std::max(column.from, position);
            const std::int64_t to = std::min(column.to, end);
            float& peak = sketch_->peaks[columnOf(next_)];
            for (std::int64_t sample = from; sample < to; ++sample)
                peak = std::max(peak, magnitudes[static_cast<std::size_t>(sample - position)]);
            // The next block has the rest of this column.
            if (column.to > end)
                break;
        }
    }

    void fail() { sketch_->failure = "unreadable"; }

private:
    std::size_t columnOf(std::size_t nth) const {
        return sketch_->reverse ? sketch_->columnCount() - 1 - nth : nth;
    }
    /// At least one sample, where the medium has one there.
    SampleSpan inColumn(std::size_t nth) const {
        const MaterialPart span = sketch_->materialIn(columnOf(nth));
        const double from = std::floor(span.from * samplesPerSample_);
        const double to = std::max(from + 1.0, std::ceil(span.to * samplesPerSample_));
        const auto inMedium = [this](double sample) {
            return static_cast<std::int64_t>(std::clamp(sample, 0.0, static_cast<double>(mediumLength_)));
        };
        return {inMedium(from), inMedium(to)};
    }

    StripSketch* sketch_;
    double samplesPerSample_;
    std::int64_t mediumLength_;
    SampleSpan wanted_;
    std::size_t next_ = 0;
};

/// The largest magnitude of all channels at each sample. A NaN counts as 0.
void readMagnitudes(const Media& media, std::int64_t position, std::vector<float>& magnitudes) {
    std::vector<float> samples(magnitudes.size());
    std::ranges::fill(magnitudes, 0.0F);
    for (const auto& channel : media.channels) {
        channel->read(position, samples);
        for (std::size_t i = 0; i < samples.size(); ++i)
            magnitudes[i] = std::max(magnitudes[i], std::abs(samples[i]));
    }
}

/// One pass over what sounds of a medium. `progress` is told the share of this pass.
void sweep(const Media& media, std::vector<WaitingStrip> strips,
           const std::function<void(double share)>& progress) {
    std::ranges::sort(strips, {}, [](const WaitingStrip& strip) { return strip.wanted().from; });
    std::erase_if(strips, [](const WaitingStrip& s) { return s.wanted().from >= s.wanted().to; });
    const std::int64_t length = media.channels.front()->length();
    std::vector<WaitingStrip*> sounding;
    std::vector<float> magnitudes;
    std::int64_t position = 0;
    for (auto next = strips.begin(); next != strips.end() || !sounding.empty();) {
        if (sounding.empty())
            position = std::max(position, next->wanted().from);
        for (; next != strips.end() && next->wanted().from < position + blockLength; ++next)
            sounding.push_back(&*next);
        std::int64_t end = position;
        for (const WaitingStrip* strip : sounding)
            end = std::max(end, std::min(strip->wanted().to, position + blockLength));
        magnitudes.resize(static_cast<std::size_t>(end - position));
        try {
            readMagnitudes(media, position, magnitudes);
            for (WaitingStrip* strip : sounding)
                strip->take(position, magnitudes);
        } catch (const std::exception&) {
            for (WaitingStrip* strip : sounding)
                strip->fail();
        }
        position = end;
        std::erase_if(sounding, [&](const WaitingStrip* strip) { return strip->wanted().to <= position; });
        progress(static_cast<double>(position) / static_cast<double>(length));
    }
}

/// Nothing if there is no material to read: the medium does not open, or opens without a channel.
std::optional<Media> opened(const OpenMedia& openMedia, const std::string& name) {
    try {
        Media media = openMedia(name);
        if (!media.channels.empty() && media.sampleRate > 0)
            return media;
    } catch (const std::exception&) {
        // The report of the mix tells why.
    }
    return std::nullopt;
}

/// Of a PNG.
constexpr double finePixels = 2.0;
/// Larger pictures of more lanes would take more than 130 MB of memory.
constexpr std::size_t mostLanesInFinePixels = 150;

std::string clockOf(std::int64_t samples, int sampleRate) {
    return clockText(static_cast<double>(samples) / sampleRate, 0.001);
}

std::string subtitleOf(const Timeline& timeline) {
    std::size_t strips = 0;
    for (const TimelineTrack& track : timeline.tracks)
        strips += track.strips.size();
    std::string text =
        words::counted(strips, "strip") + " on " + words::counted(timeline.tracks.size(), "track") + ", " +
        clockOf(timeline.length, timeline.sampleRate) + " at " + std::to_string(timeline.sampleRate) +
        " Hz, " + words::counted(timeline.channels, "channel");
    if (timeline.timeReference > 0)
        text += "; time 0 is " + clockOf(timeline.timeReference, timeline.sampleRate) +
                " on the timeline's clock";
    return text;
}

} // namespace

void readPeaks(TimelineSketch& sketch, const OpenMedia& openMedia,
               const std::function<void(double share)>& progress) {
    std::map<std::string, std::vector<StripSketch*>> stripsOfMedia;
    double all = 0.0;
    for (TrackSketch& track : sketch.tracks)
        for (StripSketch& strip : track.strips) {
            if (strip.isSilent || !strip.failure.empty())
                continue;
            stripsOfMedia[strip.media].push_back(&strip);
            all += 1.0;
        }
    double done = 0.0;
    for (const auto& [name, strips] : stripsOfMedia) {
        const auto weight = static_cast<double>(strips.size());
        const std::optional<Media> media = opened(openMedia, name);
        if (media) {
            std::vector<WaitingStrip> waiting;
            for (StripSketch* strip : strips)
                waiting.emplace_back(*strip, strip->relabel.rateOf(media->sampleRate) / sketch.sampleRate,
                                     media->channels.front()->length());
            sweep(*media, std::move(waiting), [&](double share) { progress((done + weight * share) / all); });
        } else {
            for (StripSketch* strip : strips)
                strip->failure = "missing";
        }
        done += weight;
        progress(done / all);
    }
}

Figure drawTimeline(const Timeline& shown, const MixReport& report, const OutputCourse* course,
                    const OpenMedia& openMedia, const std::function<void(double share)>& progress) {
    const auto sketch = std::make_shared<TimelineSketch>(
        sketchTimeline(shown, report, static_cast<std::size_t>(finePixels * lanesWidth), course));
    readPeaks(*sketch, openMedia, progress);
    Figure figure;
    figure.title = shown.name.empty() ? "Timeline" : words::printable(shown.name);
    figure.subtitle = subtitleOf(shown);
    figure.chartWidth = pictureWidth;
    figure.chartHeight = TimelineLayout(*sketch, 0.0).height();
    figure.pixelsPerPoint = sketch->tracks.size() <= mostLanesInFinePixels ? finePixels : 1.0;
    figure.drawing = [sketch](const Pen& pen, const Rectangle& area) {
        paintTimeline(pen, *sketch, TimelineLayout(*sketch, area.top));
    };
    return figure;
}

} // namespace audlmd::command

#include "host/mix/Mixer.hpp"

#include "host/cache/MaterialCache.hpp"
#include "host/mix/OpenStrip.hpp"
#include "host/mix/StripOpener.hpp"
#include "host/mix/StripSchedule.hpp"
#include "host/mix/TrackSums.hpp"
#include "host/mix/WorkerPool.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace audlmd {
namespace {

constexpr std::size_t mostBlock = 65536;

/// Shorter than a cache's usual segments, because a strip of a mix may be short, and what is loaded beyond
/// its end is not heard.
constexpr std::int32_t segmentLength = 16384;
/// The segment that a reader stands on, those ahead of it, and the one that it has left.
constexpr std::size_t segmentsOfAChannel = 4;
constexpr std::size_t leastBudget = std::size_t{4} << 20;
constexpr std::size_t mostBudget = std::size_t{256} << 20;

std::vector<StripKey> keysIn(const Timeline& timeline) {
    std::vector<StripKey> keys;
    for (std::size_t track = 0; track < timeline.tracks.size(); ++track)
        for (std::size_t strip = 0; strip < timeline.tracks[track].strips.size(); ++strip)
            keys.push_back({track, strip});
    return keys;
}

std::vector<TimelineSpan> spansIn(const Timeline& timeline) {
    std::vector<TimelineSpan> spans;
    for (const TimelineTrack& track : timeline.tracks)
        for (const TimelineStrip& strip : track.strips)
            try {
                spans.push_back(soundingSpan(strip, timeline.sampleRate));
            } catch (const std::invalid_argument& error) {
                throw std::invalid_argument("track '" + track.name + "', strip '" + strip.name +
                                            "': " + error.what());
            }
    return spans;
}

const MixerOptions& checked(const MixerOptions& options) {
    if (options.block < 1 || options.block > mostBlock)
        throw std::invalid_argument("a block of " + std::to_string(options.block) +
                                    " samples is out of range: 1 to " + std::to_string(mostBlock));
    if (!(options.openAhead >= 0.0 && options.openAhead <= 3600.0))
        throw std::invalid_argument("strips are opened from 0 to 3600 seconds ahead");
    return options;
}

const Timeline& checked(const Timeline& timeline) {
    if (timeline.channels == 0 || timeline.sampleRate <= 0)
        throw std::invalid_argument("a timeline needs at least one channel, and a sample rate");
    const auto fits = [&](const std::vector<float>& row) { return row.size() == timeline.channels; };
    if (layoutOf(timeline).size() != timeline.channels)
        throw std::invalid_argument("the timeline's layout needs a speaker for each channel");
    if (timeline.foldDown && (timeline.foldDown->layout.empty() ||
                              timeline.foldDown->routing.rows.size() != timeline.foldDown->layout.size() ||
                              !std::ranges::all_of(timeline.foldDown->routing.rows, fits)))
        throw std::invalid_argument(
            "the fold-down needs a row for each channel that it gives, with a gain for "
            "each channel of the timeline");
    return timeline;
}

std::size_t threadsFor(const MixerOptions& options) {
    return options.threads != 0 ? options.threads : std::max(1U, std::thread::hardware_concurrency());
}

MaterialCacheOptions cacheOptions(const MixerOptions& options, std::size_t channelsAtOneTime) {
    MaterialCacheOptions cache;
    cache.segmentLength = segmentLength;
    const std::size_t wanted =
        channelsAtOneTime * segmentsOfAChannel * static_cast<std::size_t>(segmentLength) * sizeof(float);
    cache.memoryBudget = options.memoryBudget.value_or(std::clamp(wanted, leastBudget, mostBudget));
    return cache;
}

} // namespace

/// Renders one block at a time: finds the strips that sound in it, renders their channels side by side, then
/// sums them side by side for the channels of the output.
class Mixer::Impl {
public:
    Impl(Timeline timeline, OpenMedia open, const MixerOptions& options);

    void render(TimelineSample position, std::span<const std::span<float>> channels);
    void callOff();
    MixReport report();

    const Timeline timeline;

private:
    struct Job {
        OpenStrip* strip;
        std::size_t channel;
        TimelineSpan span;
    };

    void renderBlock(TimelineSpan block, std::span<const std::span<float>> channels);
    /// Opens and closes strips for a block and the time after it.
    void follow(TimelineSpan block);
    void findSounding(TimelineSpan block);
    /// On the opener's thread.
    std::unique_ptr<OpenStrip> openStrip(const StripKey& key);
    std::shared_ptr<const Media> mediaFor(const TimelineStrip& strip);
    /// Adds what a strip has to report, if it is open.
    void addReport(std::size_t strip, StripReports& reports);

    const MixerOptions options_;
    const OpenMedia openMedia_;
    /// By the numbers that the schedule and the opener know strips by.
    const std::vector<StripKey> keys_;
    StripSchedule schedule_;
    const Distance<OutputRate> openAhead_;
    MaterialCache cache_;
    StripReports reports_;
    TrackSums sums_;
    std::vector<SoundingStrip> sounding_;
    std::vector<Job> jobs_;
    /// What strips that are open share. Used by the opener's thread only.
    std::map<std::pair<std::string, Relabel>, std::weak_ptr<const Media>> media_;
    /// Where the block begins, for strips that are opened in their middle.
    std::atomic<TimelineSample> position_;
    WorkerPool pool_;
    /// Declared last: strips close, and the thread ends, before anything that they use.
    StripOpener opener_;
};

Mixer::Impl::Impl(Timeline theTimeline, OpenMedia open, const MixerOptions& options)
    : timeline(std::move(theTimeline)), options_(checked(options)), openMedia_(std::move(open)),
      keys_(keysIn(checked(timeline))), schedule_(spansIn(timeline)),
      openAhead_(std::llround(options.openAhead * timeline.sampleRate)),
      cache_(cacheOptions(options,
                          schedule_.mostOpen(openAhead_) * std::max<std::size_t>(2, timeline.channels))),
      sums_(outputLayout(timeline).size(), options.stems ? timeline.tracks.size() : 0, options.block),
      pool_(threadsFor(options)), opener_([this](std::size_t strip) { return openStrip(keys_[strip]); }) {}

void Mixer::Impl::render(TimelineSample position, std::span<const std::span<float>> channels) {
    if (channels.size() != sums_.buffers())
        throw std::invalid_argument(
            (options_.stems ? "the timeline and its stems have " : "the timeline has ") +
            std::to_string(sums_.buffers()) + " channels, not " + std::to_string(channels.size()));
    const std::size_t frames = channels.front().size();
    for (std::size_t channel = 1; channel < channels.size(); ++channel)
        if (channels[channel].size() != frames)
            throw std::invalid_argument("the buffer of channel " + std::to_string(channel + 1) + " has " +
                                        std::to_string(channels[channel].size()) +
                                        " samples, but that of channel 1 has " + std::to_string(frames));
    requirePosition(position.number(), "the start of the stretch");
    std::vector<std::span<float>> block(channels.size());
    for (std::size_t done = 0; done < frames; done += options_.block) {
        const std::size_t count = std::min(options_.block, frames - done);
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
            block[channel] = channels[channel].subspan(done, count);
        const TimelineSample from = position + static_cast<std::int64_t>(done);
        renderBlock({.from = from, .to = from + static_cast<std::int64_t>(count)}, block);
    }
}

void Mixer::Impl::renderBlock(TimelineSpan block, std::span<const std::span<float>> channels) {
    follow(block);
    findSounding(block);
    jobs_.clear();
    for (const SoundingStrip& sounding : sounding_)
        for (std::size_t channel = 0; channel < sounding.strip->channels(); ++channel)
            jobs_.push_back({sounding.strip, channel, sounding.span});
    pool_.run(jobs_.size(),
              [this](std::size_t job) { jobs_[job].strip->render(jobs_[job].channel, jobs_[job].span); });
    pool_.run(sums_.channels(), [&](std::size_t channel) { sums_.sum(channel, block, sounding_, channels); });
}

void Mixer::Impl::follow(TimelineSpan block) {
    position_.store(block.from, std::memory_order_relaxed);
    const StripSchedule::Change change = schedule_.moveTo({.from = block.from, .to = block.to + openAhead_});
    for (const std::size_t strip : change.closed) {
        addReport(strip, reports_);
        opener_.close(strip);
    }
    for (const std::size_t strip : change.opened)
        opener_.open(strip);
}

void Mixer::Impl::findSounding(TimelineSpan block) {
    sounding_.clear();
    for (const std::size_t strip : schedule_.open()) {
        const TimelineSpan whole = schedule_.spanOf(strip);
        const TimelineSpan span{.from = std::max(block.from, whole.from), .to = std::min(block.to, whole.to)};
        if (span.from >= span.to)
            continue;
        const StripOpener::Opened* const opened = options_.wait ? opener_.wait(strip) : opener_.find(strip);
        if (opened != nullptr && opened->strip != nullptr)
            sounding_.push_back({opened->strip.get(), keys_[strip].track, span});
        else
            reports_.addSilence(keys_[strip], span, opened != nullptr ? opened->failure : "");
    }
}

std::unique_ptr<OpenStrip> Mixer::Impl::openStrip(const StripKey& key) {
    const TimelineStrip& opened = timeline.tracks[key.track].strips[key.strip];
    const OpenStrip::Output output{.layout = layoutOf(timeline),
                                   .foldDown = timeline.foldDown,
                                   .sampleRate = timeline.sampleRate,
                                   .block = options_.block,
                                   .wait = options_.wait,
                                   .inlined = options_.inlined};
    return std::make_unique<OpenStrip>(opened, mediaFor(opened), cache_, output,
                                       position_.load(std::memory_order_relaxed));
}

std::shared_ptr<const Media> Mixer::Impl::mediaFor(const TimelineStrip& strip) {
    std::erase_if(media_, [](const auto& entry) { return entry.second.expired(); });
    const auto key = std::pair(strip.media, strip.relabel);
    if (const auto found = media_.find(key); found != media_.end())
        if (auto media = found->second.lock())
            return media;
    auto media =
        std::make_shared<const Media>(prepare(openMedia_(strip.media), timeline.sampleRate, strip.relabel));
    media_[key] = media;
    return media;
}

void Mixer::Impl::callOff() {
    opener_.callOff();
    cache_.callOff();
}

void Mixer::Impl::addReport(std::size_t strip, StripReports& reports) {
    if (const StripOpener::Opened* const opened = opener_.find(strip); opened && opened->strip)
        reports.add(keys_[strip], opened->strip->report(), opened->strip->seconds());
}

MixReport Mixer::Impl::report() {
    StripReports reports = reports_;
    for (const std::size_t strip : schedule_.open())
        addReport(strip, reports);
    MixReport report{.strips = reports.strips(), .channels = {}, .stems = {}, .slowest = reports.slowest()};
    sums_.tell(report);
    return report;
}

Mixer::Mixer(Timeline timeline, OpenMedia open, const MixerOptions& options)
    : impl_(std::make_unique<Impl>(std::move(timeline), std::move(open), options)) {}

Mixer::~Mixer() = default;

const Timeline& Mixer::timeline() const {
    return impl_->timeline;
}

void Mixer::render(TimelineSample position, std::span<const std::span<float>> channels) {
    impl_->render(position, channels);
}

void Mixer::callOff() {
    impl_->callOff();
}

MixReport Mixer::report() const {
    return impl_->report();
}

} // namespace audlmd

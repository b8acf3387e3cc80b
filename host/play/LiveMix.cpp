#include "host/play/LiveMix.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace audlmd {
namespace {

// In seconds of the timeline.

/// A voice that is heard for less, as in a scrub, needs no mixer.
constexpr double steadyAfter = 0.25;
/// From the request for a mixer to its first sample: for opening files and loading samples.
constexpr double preparation = 1.0;
constexpr double longTime = 10.0;
constexpr double countedEvery = 0.1;

bool carriesState(const TimelineStrip& strip) {
    return !strip.settings.equaliser.empty() || strip.settings.converter == Converter::filtering;
}

} // namespace

Timeline cutAt(Timeline timeline, TimelineSample sample) {
    for (TimelineTrack& track : timeline.tracks)
        for (TimelineStrip& strip : track.strips)
            if (strip.at + strip.length <= sample) {
                strip.length = 0;
            } else if (const Distance<OutputRate> cut = sample - strip.at; cut > 0) {
                strip.at += cut;
                strip.skip += cut;
                strip.length = strip.length - cut;
            }
    return timeline;
}

/// Plays by the other voice up to the place, and by a mixer from there on.
class LiveMix::Voice final : public LiveVoice {
public:
    Voice(LiveMix& mix, std::unique_ptr<LiveVoice> first)
        : mix_(mix), first_(std::move(first)), position_(std::llround(first_->position())),
          steadyFrom_(position_ + seconds(steadyAfter)) {}
    ~Voice() override {
        if (mixer_ != nullptr)
            mix_.retire(std::move(mixer_));
    }
    Voice(const Voice&) = delete;
    Voice& operator=(const Voice&) = delete;

    std::size_t render(std::span<const std::span<float>> channels) override {
        TimelineSample end = mix_.end();
        if (mixer_ == nullptr) {
            approach();
            if (mixer_ == nullptr)
                end = place_.value_or(end);
        }
        std::vector<std::span<float>> frames(channels.begin(), channels.end());
        const auto left = static_cast<std::size_t>(end - position_);
        for (std::span<float>& channel : frames)
            channel = channel.first(std::min(channel.size(), left));
        std::size_t rendered = frames.front().size();
        if (mixer_ != nullptr)
            mixer_->render(position_, frames);
        else
            rendered = first_->render(frames);
        position_ += static_cast<std::int64_t>(rendered);
        if (mixer_ != nullptr && position_ >= countedAt_ + seconds(countedEvery)) {
            mix_.countLate();
            countedAt_ = position_;
        }
        return rendered;
    }

    bool isAtEnd() const override { return position_ >= mix_.end(); }
    double position() const override { return static_cast<double>(position_.number()); }
    double step() const override { return 1.0; }

private:
    Distance<OutputRate> seconds(double time) const { return std::llround(time * mix_.timeline_.sampleRate); }

    /// Asks for a mixer, and takes the mixer when its place is there. A mixer that is not ready by then gets
    /// another place.
    void approach() {
        if (place_ == position_) {
            mixer_ = mix_.take(*place_);
            place_.reset();
            if (mixer_ != nullptr)
                first_.reset();
        } else if (!place_ && position_ >= steadyFrom_) {
            place_ = mix_.placeFrom(position_ + seconds(preparation));
            steadyFrom_ = position_ + seconds(preparation);
            if (place_)
                mix_.prepare(*place_);
        }
    }

    LiveMix& mix_;
    std::unique_ptr<LiveVoice> first_;
    std::unique_ptr<Mixer> mixer_;
    TimelineSample position_;
    /// Where to ask for a mixer.
    TimelineSample steadyFrom_;
    std::optional<TimelineSample> place_;
    TimelineSample countedAt_;
};

LiveMix::LiveMix(Timeline timeline, OpenMedia open, const MixerOptions& options)
    : timeline_(std::move(timeline)), open_(std::move(open)), options_(options),
      thread_(namedThread("audlmd-livemix", [this](const std::stop_token& stop) { serve(stop); })) {}

LiveMix::~LiveMix() = default;

std::optional<TimelineSample> LiveMix::placeFrom(TimelineSample sample) const {
    const TimelineSample latest = sample + std::llround(longTime * timeline_.sampleRate);
    // Every round leaves at least one strip behind.
    for (TimelineSample place = sample; place < std::min(latest, end());) {
        TimelineSample free = place;
        for (const TimelineTrack& track : timeline_.tracks)
            for (const TimelineStrip& strip : track.strips)
                if (carriesState(strip) && strip.at < free && strip.at + strip.length > free)
                    free = strip.at + strip.length;
        if (free == place)
            return place;
        place = free;
    }
    return std::nullopt;
}

std::unique_ptr<LiveVoice> LiveMix::play(std::unique_ptr<LiveVoice> first) {
    return std::make_unique<Voice>(*this, std::move(first));
}

void LiveMix::prepare(TimelineSample place) {
    {
        const Lock lock(mutex_);
        wanted_ = place;
    }
    requested_.notify_one();
}

std::unique_ptr<Mixer> LiveMix::take(TimelineSample place) {
    const Lock lock(mutex_);
    if (!ready_ || ready_->place != place)
        return nullptr;
    std::unique_ptr<Mixer> mixer = std::move(ready_->mixer);
    ready_.reset();
    playing_ = mixer.get();
    return mixer;
}

void LiveMix::retire(std::unique_ptr<Mixer> mixer) {
    reports_.add(mixer->report());
    playing_ = nullptr;
    countLate();
    {
        const Lock lock(mutex_);
        retired_.push_back(std::move(mixer));
    }
    requested_.notify_one();
}

/// A mixer that is asked for a sample opens what sounds in the seconds behind that sample. The timeline is
/// cut, so the sample itself is silent, and nothing can be late there. Null where there is no mixer to be
/// had: then the voice asks again later.
std::unique_ptr<Mixer> LiveMix::make(TimelineSample place) const {
    try {
        auto mixer = std::make_unique<Mixer>(cutAt(timeline_, place), open_, options_);
        std::vector<std::vector<float>> silence(outputLayout(timeline_).size(), std::vector<float>(1));
        mixer->render(place - 1, std::vector<std::span<float>>(silence.begin(), silence.end()));
        return mixer;
    } catch (const std::exception&) {
        return nullptr;
    }
}

void LiveMix::serve(const std::stop_token& stop) {
    Lock lock(mutex_);
    while (requested_.wait(lock, stop,
                           [this]() AUDLMD_REQUIRES(mutex_) { return wanted_ || !retired_.empty(); })) {
        std::vector<std::unique_ptr<Mixer>> unused = std::exchange(retired_, {});
        const std::optional<TimelineSample> place = std::exchange(wanted_, std::nullopt);
        if (place && ready_)
            unused.push_back(std::move(std::exchange(ready_, std::nullopt)->mixer));
        lock.unlock();
        unused.clear();
        std::unique_ptr<Mixer> mixer = place ? make(*place) : nullptr;
        lock.lock();
        if (mixer != nullptr)
            ready_ = Ready{*place, std::move(mixer)};
    }
}

void LiveMix::countLate() {
    lateSamples_ = 0;
    lateEpisodes_ = 0;
    for (const StripReport& strip : report()) {
        lateSamples_ += strip.underrunSamples;
        lateEpisodes_ += strip.underrunEpisodes;
    }
}

std::vector<StripReport> LiveMix::report() const {
    StripReports reports = reports_;
    if (playing_ != nullptr)
        reports.add(playing_->report());
    return reports.strips();
}

} // namespace audlmd

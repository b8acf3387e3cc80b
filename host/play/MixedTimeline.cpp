#include "host/play/MixedTimeline.hpp"

#include <utility>

namespace audlmd {
namespace {

/// Readers of the channels may be a segment apart, at both sides of a turn.
constexpr ChannelExcerpts::Limits ofAMix{.samples = 0, .excerpts = 8};

} // namespace

class MixedTimeline::Source final : public SampleSource {
public:
    Source(std::shared_ptr<MixedTimeline> timeline, std::size_t channel)
        : timeline_(std::move(timeline)), channel_(channel) {}

    std::int64_t length() const override { return timeline_->timeline().length; }
    void read(std::int64_t position, std::span<float> samples) override {
        timeline_->excerpts_.read(channel_, position, samples);
    }
    const void* exclusiveResource() const override { return timeline_.get(); }

private:
    std::shared_ptr<MixedTimeline> timeline_;
    std::size_t channel_;
};

MixedTimeline::MixedTimeline(Timeline timeline, OpenMedia open, const MixerOptions& options)
    : mixer_(std::move(timeline), std::move(open), options),
      excerpts_(outputLayout(mixer_.timeline()).size(), ChannelExcerpts::Layout::planar, ofAMix,
                [this](std::int64_t position, std::span<float> samples) { render(position, samples); }) {}

std::vector<std::shared_ptr<SampleSource>>
MixedTimeline::sources(const std::shared_ptr<MixedTimeline>& timeline) {
    std::vector<std::shared_ptr<SampleSource>> sources;
    for (std::size_t channel = 0; channel < outputLayout(timeline->timeline()).size(); ++channel)
        sources.push_back(std::make_shared<Source>(timeline, channel));
    return sources;
}

MixReport MixedTimeline::report() const {
    const Lock lock(reporting_);
    return report_;
}

void MixedTimeline::render(std::int64_t position, std::span<float> samples) {
    const std::size_t frames = samples.size() / outputLayout(timeline()).size();
    std::vector<std::span<float>> channels;
    for (; !samples.empty(); samples = samples.subspan(frames))
        channels.push_back(samples.first(frames));
    mixer_.render(position, channels);
    MixReport report = mixer_.report();
    const Lock lock(reporting_);
    report_ = std::move(report);
}

} // namespace audlmd

#include "host/play/MixedTimeline.hpp"

#include <algorithm>
#include <utility>

namespace audlmd {
namespace {

/// Readers of the channels may be a segment apart, at both sides of a turn.
constexpr std::size_t mostExcerpts = 8;

} // namespace

class MixedTimeline::Source final : public SampleSource {
public:
    Source(std::shared_ptr<MixedTimeline> timeline, std::size_t channel)
        : timeline_(std::move(timeline)), channel_(channel) {}

    std::int64_t length() const override { return timeline_->timeline().length; }
    void read(std::int64_t position, std::span<float> samples) override {
        timeline_->read(channel_, position, samples);
    }
    const void* exclusiveResource() const override { return timeline_.get(); }

private:
    std::shared_ptr<MixedTimeline> timeline_;
    std::size_t channel_;
};

MixedTimeline::MixedTimeline(Timeline timeline, OpenMedia open, const MixerOptions& options)
    : mixer_(std::move(timeline), std::move(open), options) {}

std::vector<std::shared_ptr<SampleSource>>
MixedTimeline::sources(const std::shared_ptr<MixedTimeline>& timeline) {
    std::vector<std::shared_ptr<SampleSource>> sources;
    for (std::size_t channel = 0; channel < timeline->timeline().channels; ++channel)
        sources.push_back(std::make_shared<Source>(timeline, channel));
    return sources;
}

MixReport MixedTimeline::report() const {
    const Lock lock(reporting_);
    return report_;
}

void MixedTimeline::read(std::size_t channel, std::int64_t position, std::span<float> samples) {
    const Lock lock(mutex_);
    Excerpt& excerpt = excerptAt(position, samples.size());
    std::ranges::copy(excerpt.channels[channel], samples.begin());
    if (++excerpt.readers == excerpt.channels.size())
        kept_.erase(kept_.begin() + (&excerpt - kept_.data()));
}

MixedTimeline::Excerpt& MixedTimeline::excerptAt(std::int64_t position, std::size_t frames) {
    const auto found = std::ranges::find_if(kept_, [&](const Excerpt& excerpt) {
        return excerpt.position == position && excerpt.channels.front().size() == frames;
    });
    if (found != kept_.end())
        return *found;
    if (kept_.size() == mostExcerpts)
        kept_.erase(kept_.begin());
    Excerpt excerpt;
    excerpt.position = position;
    excerpt.channels.assign(timeline().channels, std::vector<float>(frames));
    mixer_.render(position, std::vector<std::span<float>>(excerpt.channels.begin(), excerpt.channels.end()));
    {
        MixReport report = mixer_.report();
        const Lock lock(reporting_);
        report_ = std::move(report);
    }
    return kept_.emplace_back(std::move(excerpt));
}

} // namespace audlmd

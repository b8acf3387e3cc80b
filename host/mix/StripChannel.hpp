#pragma once

#include "host/cache/MaterialCache.hpp"
#include "host/mix/Reporting.hpp"
#include "host/signal/StripPlayer.hpp"
#include "host/signal/Unclipped.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace audlmd {

/// One channel of a strip while the strip is open: its material in the cache, and the player.
class StripChannel {
public:
    /// `gains` has the gain in each channel of the output. `settings.cookie` names the material: no other
    /// open channel may have it. `inlined` as in StripPlayer. `start` is the first sample of the player that
    /// is heard; `block` the most that are rendered at a time. The cache must outlive this object. Throws
    /// what StripPlayer throws.
    StripChannel(MaterialCache& cache, const StripSettings& settings, std::shared_ptr<SampleSource> source,
                 std::vector<float> gains, OutputSample start, std::size_t block,
                 RenderFunctionLookUp<Unclipped> inlined);

    /// Has the cache load what the player reads from one of its samples on.
    void load(OutputSample position) const;

    /// Renders so many samples of the player, from `position` on, which are heard from `at` on.
    void render(OutputSample position, std::size_t count, TimelineSample at);
    /// What was rendered last.
    std::span<const float> samples() const { return samples_; }
    /// By which it goes into an output channel.
    float gainIn(std::size_t outputChannel) const { return gains_[outputChannel]; }

    /// The processor time that rendering has taken, in seconds. What is taken from the cache as it is takes
    /// none.
    double seconds() const { return seconds_; }
    const MaterialStatistics& statistics() const { return statistics_; }
    /// Where samples were missing.
    const std::vector<TimelineSpan>& silent() const { return silent_.spans(); }
    Overload overload() const { return overload_.overload(); }

private:
    /// In the cache for as long as this object lives.
    class CachedMaterial {
    public:
        CachedMaterial(MaterialCache& cache, const Cookie& cookie, std::shared_ptr<SampleSource> source);
        ~CachedMaterial();
        CachedMaterial(const CachedMaterial&) = delete;
        CachedMaterial& operator=(const CachedMaterial&) = delete;

        MaterialCache& cache;
        const Cookie cookie;
    };

    void moveTo(OutputSample position);
    void renderBlock(std::span<float> samples, TimelineSample at);

    CachedMaterial material_;
    StripPlayer player_;
    std::vector<float> gains_;
    /// The largest magnitude of the gains.
    float loudestGain_;
    OutputSample start_;
    std::vector<float> block_;
    /// In the block, or in the cache.
    std::span<const float> samples_;

    MaterialStatistics statistics_;
    SpanList<TimelineClock> silent_;
    OverloadMeter overload_;
    double seconds_ = 0.0;
};

} // namespace audlmd

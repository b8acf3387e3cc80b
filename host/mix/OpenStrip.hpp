#pragma once

#include "host/cache/MaterialCache.hpp"
#include "host/mix/Media.hpp"
#include "host/mix/StripChannel.hpp"
#include "host/mix/Timeline.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace audlmd {

/// Makes media ready for the players of a mix: taken at another rate, at the timeline's sample rate, with
/// headroom. Throws std::invalid_argument for media without channels, and for rates that cannot be converted.
Media prepare(const Media& media, int sampleRate, const Relabel& relabel = {});

/// Where a strip sounds: nowhere if it has a reason for silence. Throws std::invalid_argument
/// for times or a gain out of range, and what StripPlan throws.
TimelineSpan soundingSpan(const TimelineStrip& strip, int sampleRate);

/// Samples that are summed into a bus.
struct BusTerm {
    std::span<const float> samples;
    float gain;
    /// Where they lie; as long as they are.
    TimelineSpan span;
};

/// A strip while it is open.
class OpenStrip {
public:
    /// The output, and how it is rendered.
    struct Output {
        /// What strips are routed into.
        ChannelLayout layout;
        /// See Timeline::foldDown.
        std::optional<FoldDown> foldDown;
        int sampleRate = 48000;
        /// The most output samples that are rendered at a time.
        std::size_t block = 4096;
        /// See StripSettings::wait.
        bool wait = true;
        /// See MixerOptions::inlined.
        RenderFunctionLookUp<Unclipped> inlined = nullptr;
    };

    /// Has the cache load what is heard from `first` on. Throws std::invalid_argument for a
    /// routing that does not fit the media or the output, and what the players throw. Strip and cache must
    /// outlive this object.
    OpenStrip(const TimelineStrip& strip, std::shared_ptr<const Media> media, MaterialCache& cache,
              const Output& output, TimelineSample first);

    /// The channels of the media that are heard.
    std::size_t channels() const { return channels_.size(); }

    /// Renders one channel, counted from 0 to channels(). The span lies where the strip sounds, and is not
    /// longer than a block. Different channels may be rendered at the same time.
    void render(std::size_t channel, TimelineSpan span);
    /// What goes into an output channel, as it was rendered last: one term for each channel of the media that
    /// is heard there. `span` is where that was.
    void appendTerms(std::size_t outputChannel, TimelineSpan span, std::vector<BusTerm>& terms) const;

    /// The processor time that rendering has taken, in seconds.
    double seconds() const;
    /// What went wrong since the strip was opened; without its key.
    StripReport report() const;

private:
    const TimelineStrip& strip_;
    /// Keeps the media open for other strips that play it.
    std::shared_ptr<const Media> media_;
    std::vector<std::unique_ptr<StripChannel>> channels_;
};

} // namespace audlmd

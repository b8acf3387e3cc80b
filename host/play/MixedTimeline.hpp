#pragma once

#include "host/cache/ChannelExcerpts.hpp"
#include "host/cache/SampleSource.hpp"
#include "host/mix/Mixer.hpp"
#include "host/services/Threads.hpp"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace audlmd {

/// A timeline as media: a source for each channel of the output, which a cache can load forwards,
/// backwards and at any speed. The samples are those of a Mixer that waits for its files.
class MixedTimeline {
public:
    /// The options must ask to wait. Throws what Mixer throws.
    MixedTimeline(Timeline timeline, OpenMedia open, const MixerOptions& options);

    /// The sources share this object. What fails in a strip makes that strip silent.
    static std::vector<std::shared_ptr<SampleSource>> sources(const std::shared_ptr<MixedTimeline>& timeline);

    const Timeline& timeline() const { return mixer_.timeline(); }
    /// See Mixer::report(); as of the last segment that was rendered. Waits for none.
    MixReport report() const;
    /// See Mixer::callOff().
    void callOff() { mixer_.callOff(); }

private:
    class Source;

    /// Renders all channels, one after another.
    void render(std::int64_t position, std::span<float> samples);

    /// Used by the excerpts alone, but for callOff(): on one thread at a time.
    Mixer mixer_;
    ChannelExcerpts excerpts_;
    mutable Mutex reporting_;
    MixReport report_ AUDLMD_GUARDED_BY(reporting_);
};

} // namespace audlmd

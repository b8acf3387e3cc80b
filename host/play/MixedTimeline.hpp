#pragma once

#include "host/cache/SampleSource.hpp"
#include "host/mix/Mixer.hpp"
#include "host/services/Threads.hpp"

#include <cstddef>
#include <memory>
#include <vector>

namespace audlmd {

/// A timeline as a material: a source for each channel of the output, which a cache can load forwards,
/// backwards and at any speed. The samples are those of a Mixer that waits for its files.
///
/// A cache reads each channel on its own, while a mixer renders all channels together. So excerpts are kept
/// until all channels have read them.
class MixedTimeline {
public:
    /// The power of two by which a player must scale these sources down: their sum may exceed full scale.
    static constexpr int headroom = 20;

    /// The options must ask to wait. Throws what Mixer throws.
    MixedTimeline(Timeline timeline, OpenMedia open, const MixerOptions& options);

    /// The sources share this object. What fails in a strip makes that strip silent.
    static std::vector<std::shared_ptr<SampleSource>> sources(const std::shared_ptr<MixedTimeline>& timeline);

    const Timeline& timeline() const AUDLMD_UNCHECKED("the timeline never changes") {
        return mixer_.timeline();
    }
    /// See Mixer::report(); as of the last segment that was rendered. Waits for none.
    MixReport report() const;
    /// See Mixer::callOff().
    void callOff() AUDLMD_UNCHECKED("for any thread, while another renders") { mixer_.callOff(); }

private:
    class Source;
    struct Excerpt {
        std::int64_t position = 0;
        std::vector<std::vector<float>> channels;
        /// How many channels have read the excerpt.
        std::size_t readers = 0;
    };

    void read(std::size_t channel, std::int64_t position, std::span<float> samples);
    Excerpt& excerptAt(std::int64_t position, std::size_t frames) AUDLMD_REQUIRES(mutex_);

    /// Held while a segment is rendered.
    Mutex mutex_;
    Mixer mixer_ AUDLMD_GUARDED_BY(mutex_);
    /// The oldest comes first.
    std::vector<Excerpt> kept_ AUDLMD_GUARDED_BY(mutex_);
    mutable Mutex reporting_;
    MixReport report_ AUDLMD_GUARDED_BY(reporting_);
};

} // namespace audlmd

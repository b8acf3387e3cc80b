#pragma once

#include "host/cache/MaterialCache.hpp"
#include "host/mix/Reporting.hpp"
#include "host/play/LiveReport.hpp"
#include "host/play/LiveVoice.hpp"
#include "host/services/RenderFunctions.hpp"
#include "host/signal/StripSettings.hpp"
#include "host/signal/Unclipped.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace audlmd {

class StripPlayer;

/// The settings that play a strip at a speed of the transport, which is negative backwards: a multiple of the
/// strip's own speed and direction. A speed of 1 leaves the settings as they are. Backwards, fades and
/// automation stay where they are on the material. Other speeds take the band-limited converter up to the
/// configured limit and the linear one beyond, or the linear one where the strip has that. A strip with the
/// converter `best` keeps it at 1 and -1. Throws
/// std::invalid_argument for 0, for what is not a number, and for speeds that a strip cannot have.
StripSettings settingsAt(const StripSettings& strip, double speed);

/// The channels of a sound in a cache, all played as one strip with the same settings. Positions are samples
/// of the strip's range as a speed of 1 plays it.
///
/// Readers do not wait: samples that are late are silent, and counted. Use from one thread at a time.
class LiveContent {
public:
    /// Cookie and waiting of the settings are ignored. The library clips at full scale. Samples are therefore
    /// divided by a power of two before it and multiplied after it, so that nothing up to 120 dB is clipped.
    /// Throws what StripPlan throws. `inlined` as in StripPlayer.
    LiveContent(const std::vector<std::shared_ptr<SampleSource>>& channels, StripSettings strip,
                const MaterialCacheOptions& cache, RenderFunctionLookUp<Unclipped> inlined = nullptr);

    std::size_t channels() const { return material_.size(); }
    Distance<SourceRate> length() const { return strip_.to - strip_.from; }

    /// Starts at the output sample that is nearest to the position; requests nothing yet. Throws what
    /// settingsAt() throws.
    std::unique_ptr<LiveVoice> start(double position, double speed);

    /// Has the cache load what is heard from a position on, in the direction of the speed.
    void load(double position, double speed);
    /// Does the same, and waits until everything is loaded that the next `frames` frames will read, for as
    /// long as `isWanted` says so, which is asked every few milliseconds. Returns whether all of it is
    /// loaded.
    bool awaitLoaded(double position, double speed, std::size_t frames,
                     const std::function<bool()>& isWanted);

    /// What was late so far, in all channels together.
    SoundReport totals() const;
    /// The same, and where: in positions of this object.
    SoundReport report() const;

private:
    class Voice;
    using Cookies = std::vector<Cookie>;

    /// How players play the strip at a speed of the transport.
    struct Played {
        StripSettings settings;
        /// Of what they read, one for each channel.
        const Cookies& cookies;
        /// Samples of the range for each of the settings' range: the speed with the converter `best`, else 1.
        double scale;
    };

    Played at(double speed) const;
    Cookies add(const std::vector<std::shared_ptr<SampleSource>>& channels, const StripSettings& strip);
    /// Renders the next samples of a player as the library's 32-bit floats, clipped. Returns how many.
    static std::size_t render(StripPlayer& player, std::span<float> samples);
    /// The segments that so many frames read, in the order of reading.
    std::vector<Aud::SampleCacheSegment> request(double position, double speed, std::size_t frames);
    /// Counts what a voice has missed between two positions.
    void noteLate(double from, double to);

    StripSettings strip_;
    std::int32_t segmentLength_;
    RenderFunctionLookUp<Unclipped> inlined_;
    MaterialCache cache_;
    Cookies material_;
    /// With the converter `best`: the material at the strip's speed, for either direction. Else empty.
    Cookies forwards_;
    Cookies backwards_;
    std::uint64_t lateSamples_ = 0;
    SpanList<RangeClock> late_;
};

} // namespace audlmd

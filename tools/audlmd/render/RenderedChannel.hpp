#pragma once

#include "host/cache/MaterialCache.hpp"
#include "host/signal/StripPlayer.hpp"

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace audlmd::command {

/// One channel of a render: its material in the cache, and the player.
class RenderedChannel {
public:
    /// Which functions render.
    enum class Through {
        /// Those compiled into the command.
        inlined,
        /// Those of the loaded library, for floats.
        tables,
        /// Those of the loaded library for the output's format, which also round and clip. For player()
        /// alone.
        outputTypes
    };

    /// The cookie of the settings names the material, and must be in the cache for nothing else. The cache
    /// must outlive this object. Throws what StripPlayer throws.
    RenderedChannel(MaterialCache& cache, const StripSettings& settings, std::shared_ptr<SampleSource> source,
                    Through through);

    StripPlayer& player() { return player_; }
    /// What the cache knows of this channel by.
    std::vector<Cookie> cookies() const;

    /// Renders the next samples, unclipped. The same bits for either kind of functions, up to 120 dB above
    /// full scale.
    void render(std::span<float> samples);
    /// The same, but the samples may also stay in the cache: see StripPlayer::floatsInCache().
    std::span<const float> renderInto(std::span<float> room);

private:
    StripPlayer player_;
    /// The float format of the library clips. So a second player renders the same with headroom, and its
    /// samples are heard where those of the first are clipped. Only the first keeps the smallest floats.
    std::optional<StripPlayer> withHeadroom_;
    std::vector<float> samplesWithHeadroom_;
};

} // namespace audlmd::command

#include "tools/audlmd/render/RenderedChannel.hpp"

#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/mix/ConvertedSources.hpp"
#include "host/services/Identities.hpp"
#include "ole/Aud/SampleEncoding.hpp"

#include <utility>

namespace audlmd::command {
namespace {

/// Adds the source to the cache, where the player that is made with the result finds it.
const StripSettings& added(MaterialCache& cache, const StripSettings& settings,
                           std::shared_ptr<SampleSource> source) {
    cache.add(settings.cookie, std::move(source));
    return settings;
}

} // namespace

RenderedChannel::RenderedChannel(MaterialCache& cache, const StripSettings& settings,
                                 std::shared_ptr<SampleSource> source, Through through)
    : player_(cache, added(cache, settings, source),
              through == Through::inlined ? &inlinedRenderFunction : nullptr) {
    if (through != Through::tables)
        return;
    StripSettings again = settings;
    again.cookie.material = makeUuid();
    added(cache, again, std::make_shared<ScaledSource>(std::move(source), -headroomExponent));
    withHeadroom_.emplace(cache, again);
}

std::vector<Cookie> RenderedChannel::cookies() const {
    std::vector<Cookie> cookies{player_.plan().settings.cookie};
    if (withHeadroom_)
        cookies.push_back(withHeadroom_->plan().settings.cookie);
    return cookies;
}

std::span<const float> RenderedChannel::renderInto(std::span<float> room) {
    if (const std::span<const float> samples = player_.floatsInCache(room); !samples.empty())
        return samples;
    render(room);
    return room;
}

void RenderedChannel::render(std::span<float> samples) {
    player_.renderFloats(samples);
    if (!withHeadroom_)
        return;
    samplesWithHeadroom_.resize(samples.size());
    withHeadroom_->renderFloats(samplesWithHeadroom_);
    constexpr float scale = 1 << headroomExponent;
    for (std::size_t n = 0; n < samples.size(); ++n)
        if (!(samples[n] > -1.0F && samples[n] < Aud::Encoding::oneBelowFullScale))
            samples[n] = samplesWithHeadroom_[n] * scale;
}

} // namespace audlmd::command

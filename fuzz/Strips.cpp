#include "fuzz/Fuzzing.hpp"
#include "host/cache/MaterialCache.hpp"
#include "host/services/RenderFunctions.hpp"
#include "host/signal/StripPlayer.hpp"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace audlmd::fuzz {
namespace {

constexpr std::int64_t materialLength = 1000;

MaterialCache& material() {
    static MaterialCache cache({.segmentLength = 100, .loaderThreads = 1});
    static const bool added = [] {
        std::vector<float> samples(materialLength);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = static_cast<float>(i * 37 % 64) / 32.0F - 1.0F;
        cache.add(Cookie{}, std::make_shared<MemorySource>(std::move(samples)));
        return true;
    }();
    require(added, "there is material");
    return cache;
}

void requireFades(const StripPlan& plan, std::int64_t sample) {
    const FadeEnvelope fades(plan.settings.fade, static_cast<std::uint64_t>(plan.rangeLength));
    const double level = fades.uValueAt(sample);
    require(level >= 0.0 && level <= 1.0, "a fade lies between silence and full level");
    require(fades.at(sample).end >= RangeSample(sample), "an envelope holds for its sample");
}

std::vector<float> render(StripPlayer& player, OutputSample from, std::size_t count, std::size_t block) {
    std::vector<float> samples(count);
    player.seek(from);
    for (std::span<float> rest(samples); !rest.empty();) {
        const auto got = player.render(rest.first(std::min(block, rest.size())));
        if (got == 0)
            break;
        rest = rest.subspan(got);
    }
    return samples;
}

/// From the start of the strip, from its end, and from anywhere.
void play(FuzzedDataProvider& data, const StripSettings& settings) {
    StripPlayer player(material(), settings);
    const auto outputs = static_cast<std::int64_t>(player.outputLength());
    require(outputs > 0, "a strip has samples");
    requireFades(player.plan(), data.ConsumeIntegralInRange<std::int64_t>(0, player.plan().rangeLength));
    const std::size_t block = data.ConsumeIntegralInRange<std::size_t>(1, 200);
    const std::int64_t anywhere = data.ConsumeIntegralInRange<std::int64_t>(0, outputs);
    for (const std::int64_t from : {std::int64_t{0}, std::max<std::int64_t>(outputs - 100, 0), anywhere}) {
        const std::vector<float> whole = render(player, from, 200, 200);
        requireFinite(whole);
        const std::vector<float> parts = render(player, from, 200, block);
        require(std::memcmp(whole.data(), parts.data(), whole.size() * sizeof(float)) == 0,
                "blocks change no byte");
    }
}

} // namespace
} // namespace audlmd::fuzz

/// Settings of a strip at their extremes: any position, speed, band, fade, level and node. A player refuses
/// them with one line, or plays numbers at its start, at its end and anywhere, whatever the blocks. Settings
/// that need a mode which this program does not have are passed over.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace audlmd;
    FuzzedDataProvider data(bytes, size);
    try {
        fuzz::play(data, fuzz::drawSettings(data, fuzz::Reach::anything, fuzz::materialLength));
    } catch (const std::invalid_argument& error) {
        fuzz::requireOneLine(error.what());
    } catch (const NoSuchMode&) {
    }
    return 0;
}

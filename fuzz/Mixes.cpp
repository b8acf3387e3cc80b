#include "fuzz/Fuzzing.hpp"
#include "host/mix/Mixer.hpp"
#include "host/services/RenderFunctions.hpp"

#include <bit>
#include <cstring>
#include <memory>
#include <vector>

namespace audlmd::fuzz {
namespace {

using Channels = std::vector<std::vector<float>>;

constexpr std::int64_t mostSamples = 400;
constexpr std::size_t mixLength = 1200;

/// Samples from the input, of every magnitude; the rest is a ramp.
std::shared_ptr<SampleSource> drawSource(FuzzedDataProvider& data) {
    std::vector<float> samples(data.ConsumeIntegralInRange<std::size_t>(1, mostSamples));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<float>(i % 64) / 64.0F - 0.5F;
    const bool extreme = data.ConsumeBool();
    for (auto count = data.ConsumeIntegralInRange<std::size_t>(0, 8); count > 0; --count)
        samples[data.ConsumeIntegralInRange<std::size_t>(0, samples.size() - 1)] =
            extreme ? data.ConsumeFloatingPoint<float>() : data.ConsumeFloatingPointInRange(-4.0F, 4.0F);
    return std::make_shared<MemorySource>(std::move(samples));
}

TimelineStrip drawStrip(FuzzedDataProvider& data, std::size_t channels) {
    TimelineStrip strip;
    strip.media = data.PickValueInArray({"mono", "stereo", "none"});
    strip.at = data.ConsumeIntegralInRange(-200, 800);
    strip.length = data.ConsumeIntegralInRange(0, 600);
    strip.skip = data.ConsumeIntegralInRange(0, 100);
    strip.settings = drawSettings(data, Reach::usual, mostSamples);
    if (data.ConsumeBool())
        strip.gainDb = data.ConsumeBool() ? -std::numeric_limits<double>::infinity()
                                          : data.ConsumeFloatingPointInRange(-120.0, 60.0);
    if (data.ConsumeBool()) {
        strip.routing = Routing{std::vector(channels, std::vector<float>(strip.media == "mono" ? 1 : 2))};
        for (std::vector<float>& row : strip.routing->rows)
            for (float& gain : row)
                gain = data.ConsumeFloatingPointInRange(-8.0F, 8.0F);
    }
    return strip;
}

Timeline drawTimeline(FuzzedDataProvider& data) {
    Timeline timeline;
    timeline.channels = data.ConsumeIntegralInRange<std::size_t>(1, 3);
    timeline.tracks.resize(2);
    for (auto strips = data.ConsumeIntegralInRange(1, 5); strips > 0; --strips)
        timeline.tracks[data.ConsumeIntegralInRange<std::size_t>(0, 1)].strips.push_back(
            drawStrip(data, timeline.channels));
    return timeline;
}

/// How the samples from -200 on are rendered: in stretches of so many, from the first to the last or back.
struct Order {
    std::size_t stretch;
    bool backwards;
};

Channels mix(const Timeline& timeline, const OpenMedia& open, const MixerOptions& options,
             const Order& order) {
    Mixer mixer(timeline, open, options);
    Channels mixed(timeline.channels, std::vector<float>(mixLength));
    const std::size_t count = (mixLength + order.stretch - 1) / order.stretch;
    for (std::size_t number = 0; number < count; ++number) {
        const std::size_t from = order.stretch * (order.backwards ? count - 1 - number : number);
        std::vector<std::span<float>> buffers;
        for (std::vector<float>& channel : mixed)
            buffers.push_back(std::span(channel).subspan(from, std::min(order.stretch, mixLength - from)));
        mixer.render(static_cast<std::int64_t>(from) - 200, buffers);
    }
    return mixed;
}

/// Small timelines through the mixer. Samples that are numbers give numbers, and blocks, stretches and
/// threads change no byte. Timelines that need a mode which this program does not have are passed over.
void mixTwice(FuzzedDataProvider& data) {
    Media mono{.channels = {drawSource(data)}};
    Media stereo{.channels = {drawSource(data)}};
    stereo.channels.push_back(stereo.channels.front());
    const OpenMedia open = [&](const std::string& name) {
        return name == "mono" ? mono : name == "stereo" ? stereo : throw std::runtime_error("not there");
    };
    const std::size_t block = data.ConsumeIntegralInRange<std::size_t>(1, 300);
    const Order order{.stretch = data.ConsumeIntegralInRange<std::size_t>(50, mixLength),
                      .backwards = data.ConsumeBool()};
    const Timeline timeline = drawTimeline(data);
    const Channels whole = mix(timeline, open, {.threads = 1}, {mixLength, false});
    const Channels parts = mix(timeline, open, {.threads = 2, .block = block, .openAhead = 0.005}, order);
    for (std::size_t channel = 0; channel < whole.size(); ++channel) {
        requireFinite(whole[channel]);
        require(std::memcmp(whole[channel].data(), parts[channel].data(), mixLength * sizeof(float)) == 0,
                "blocks, stretches and their order change no byte");
    }
}

} // namespace
} // namespace audlmd::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    try {
        audlmd::fuzz::mixTwice(data);
    } catch (const std::invalid_argument&) {
    } catch (const audlmd::NoSuchMode&) {
    }
    return 0;
}

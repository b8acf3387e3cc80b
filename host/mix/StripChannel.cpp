#include "host/mix/StripChannel.hpp"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <utility>

namespace audlmd {
namespace {

/// Of this thread, in seconds.
double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

float largestMagnitude(const std::vector<float>& gains) {
    float largest = 0.0F;
    for (const float gain : gains)
        largest = std::max(largest, std::fabs(gain));
    return largest;
}

} // namespace

StripChannel::CachedMaterial::CachedMaterial(MaterialCache& sampleCache, const Cookie& itsCookie,
                                             std::shared_ptr<SampleSource> source)
    : cache(sampleCache), cookie(itsCookie) {
    cache.add(cookie, std::move(source));
}

StripChannel::CachedMaterial::~CachedMaterial() {
    cache.remove(cookie);
}

StripChannel::StripChannel(MaterialCache& cache, const StripSettings& settings,
                           std::shared_ptr<SampleSource> source, std::vector<float> gains, OutputSample start,
                           std::size_t block, RenderFunctionLookUp<Unclipped> inlined)
    : material_(cache, settings.cookie, std::move(source)), player_(cache, settings, inlined),
      gains_(std::move(gains)), loudestGain_(largestMagnitude(gains_)), start_(start), block_(block),
      silent_(mostSpansOfAStrip), overload_(mostSpansOfAStrip) {
    player_.seek(start);
}

void StripChannel::load(OutputSample position) const {
    const StripPlan& plan = player_.plan();
    // The mixer may have moved on beyond the end since the strip was requested.
    const OutputSample end = static_cast<std::int64_t>(plan.outputLength);
    const auto output = static_cast<double>(std::min(position, end).number());
    const RangeSample sample = static_cast<std::int64_t>(output * plan.speedInForce);
    material_.cache.request(material_.cookie, plan.inMaterial(sample).number(), plan.direction(),
                            plan.gearing, plan.settings.forwardArgument);
}

void StripChannel::render(OutputSample position, std::size_t count, TimelineSample at) {
    moveTo(position);
    const std::span<float> room = std::span(block_).first(count);
    samples_ = player_.floatsInCache(room);
    if (samples_.empty())
        renderBlock(room, at);
    overload_.measure(samples_, loudestGain_, at);
}

void StripChannel::renderBlock(std::span<float> samples, TimelineSample at) {
    const double before = processorTime();
    player_.renderFloats(samples);
    samples_ = samples;
    seconds_ += processorTime() - before;
    const std::uint64_t missing = statistics_.underrunSamples;
    statistics_ = material_.cache.statistics(material_.cookie);
    if (statistics_.underrunSamples != missing)
        silent_.add({.from = at, .to = at + std::ssize(samples)});
}

/// The equaliser and the filtering converter carry state from the first sample that is heard. So samples
/// that were left out are played, and not heard.
void StripChannel::moveTo(OutputSample position) {
    const StripSettings& settings = player_.plan().settings;
    if (settings.equaliser.empty() && settings.converter != Converter::filtering) {
        if (player_.position() != position)
            player_.seek(position);
        return;
    }
    if (player_.position() > position)
        player_.seek(start_);
    while (player_.position() != position)
        player_.renderFloats(std::span(block_).first(
            std::min(block_.size(), static_cast<std::size_t>(position - player_.position()))));
}

} // namespace audlmd

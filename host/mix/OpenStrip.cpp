#include "host/mix/OpenStrip.hpp"

#include "host/mix/ConvertedSources.hpp"
#include "host/services/Identities.hpp"
#include "host/signal/BestConverter.hpp"
#include "host/signal/GainLaws.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

namespace audlmd {
namespace {

void requireLength(std::int64_t samples, const std::string& what) {
    requirePosition(samples, what);
    if (samples < 0)
        throw std::invalid_argument(what + " of " + std::to_string(samples) + " samples is negative");
}

/// For all channels, without the cookie.
StripSettings playerSettings(const TimelineStrip& strip, int sampleRate, bool wait) {
    if (std::isnan(strip.gainDb) || strip.gainDb > mostGainDecibels)
        throw std::invalid_argument("the gain is not a number of decibels up to +60");
    StripSettings settings = strip.settings;
    settings.sampleRate = sampleRate;
    settings.wait = wait;
    settings.outerLevel.reset();
    settings.middleLevel.reset();
    if (strip.gainDb != 0.0)
        settings.middleLevel = amplifiedLevelOf(strip.gainDb).uValue;
    return settings;
}

Routing routingOf(const TimelineStrip& strip, const Media& media, const ChannelLayout& layout) {
    const std::size_t channels = media.channels.size();
    if (!strip.layout.empty() && strip.layout.size() != channels)
        throw std::invalid_argument("the strip's layout " + nameOf(strip.layout) + " has " +
                                    std::to_string(strip.layout.size()) + " channels, and the material " +
                                    std::to_string(channels));
    if (!strip.routing)
        return defaultRouting(strip.layout.empty() ? layoutOf(media) : strip.layout, layout);
    const auto fits = [&](const std::vector<float>& row) { return row.size() == channels; };
    if (strip.routing->rows.size() != layout.size() || !std::ranges::all_of(strip.routing->rows, fits))
        throw std::invalid_argument("the routing needs a row for each of the " +
                                    std::to_string(layout.size()) +
                                    " output channels, with a gain for each of the " +
                                    std::to_string(channels) + " channels of the material");
    return *strip.routing;
}

/// The gains of one channel of the media in all channels of the output, times a power of two.
std::vector<float> gainsOf(const Routing& routing, std::size_t channel, int exponent) {
    std::vector<float> gains;
    for (const std::vector<float>& row : routing.rows)
        gains.push_back(std::ldexp(row[channel], exponent));
    return gains;
}

} // namespace

Media prepare(const Media& media, int sampleRate, const Relabel& relabel) {
    if (media.channels.empty())
        throw std::invalid_argument("the material has no channels");
    Media prepared{.channels = {}, .sampleRate = sampleRate, .layout = media.layout};
    for (const std::shared_ptr<SampleSource>& channel : media.channels)
        prepared.channels.push_back(std::make_shared<ScaledSource>(
            convertedTo(channel, media.sampleRate, sampleRate, relabel), -headroomExponent));
    return prepared;
}

TimelineSpan soundingSpan(const TimelineStrip& strip, int sampleRate) {
    if (!strip.silence.empty())
        return {.from = strip.at, .to = strip.at};
    requirePosition(strip.at.number(), "the place");
    requireLength(strip.length, "the length");
    requireLength(strip.skip.number(), "the part that is skipped");
    const StripPlan plan(playerSettings(strip, sampleRate, true));
    const OutputSample end = static_cast<std::int64_t>(plan.outputLength);
    return {.from = strip.at, .to = strip.at + std::clamp<std::int64_t>(end - strip.skip, 0, strip.length)};
}

OpenStrip::OpenStrip(const TimelineStrip& strip, std::shared_ptr<const Media> media, MaterialCache& cache,
                     const Output& output, TimelineSample first)
    : strip_(strip), media_(std::move(media)) {
    Routing routing = panned(routingOf(strip, *media_, output.layout), strip.pan, output.layout);
    if (output.foldDown)
        routing = combined(routing, output.foldDown->routing);
    const int exponent = headroomExponent + amplifiedLevelOf(strip.gainDb).doublings;
    const std::int64_t left = std::max<std::int64_t>(first - strip.at, 0);
    StripSettings settings = playerSettings(strip, output.sampleRate, output.wait);
    settings.cookie.material = makeUuid();
    for (std::size_t channel = 0; channel < media_->channels.size(); ++channel) {
        std::vector<float> gains = gainsOf(routing, channel, exponent);
        if (std::ranges::all_of(gains, [](float gain) { return gain == 0.0F; }))
            continue;
        settings.cookie.channel = static_cast<std::uint16_t>(channel);
        channels_.push_back(std::make_unique<StripChannel>(
            cache, atNormalSpeed(settings), materialAtNormalSpeed(media_->channels[channel], settings),
            std::move(gains), strip.skip, output.block, output.inlined));
        channels_.back()->load(strip.skip + left);
    }
}

void OpenStrip::render(std::size_t channel, TimelineSpan span) {
    channels_[channel]->render(strip_.skip + (span.from - strip_.at),
                               static_cast<std::size_t>(span.to - span.from), span.from);
}

void OpenStrip::appendTerms(std::size_t outputChannel, TimelineSpan span, std::vector<BusTerm>& terms) const {
    for (const std::unique_ptr<StripChannel>& channel : channels_)
        if (const float gain = channel->gainIn(outputChannel); gain != 0.0F)
            terms.push_back({channel->samples(), gain, span});
}

double OpenStrip::seconds() const {
    double seconds = 0.0;
    for (const std::unique_ptr<StripChannel>& channel : channels_)
        seconds += channel->seconds();
    return seconds;
}

StripReport OpenStrip::report() const {
    StripReport report;
    for (const std::unique_ptr<StripChannel>& channel : channels_) {
        const MaterialStatistics& statistics = channel->statistics();
        if (report.failure.empty() && statistics.failedSegments != 0)
            report.failure = statistics.firstFailure.empty() ? "a read failed" : statistics.firstFailure;
        report.underrunSamples += statistics.underrunSamples;
        report.underrunEpisodes += statistics.underrunEpisodes;
        const Overload overload = channel->overload();
        if (overload.peak > report.overload.peak)
            report.overload = overload;
        report.silent.insert(report.silent.end(), channel->silent().begin(), channel->silent().end());
    }
    return report;
}

} // namespace audlmd

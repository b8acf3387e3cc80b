#include "host/signal/BestConverter.hpp"

#include "host/signal/StripPlan.hpp"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace audlmd {
namespace {

SpeedRatio requiredRatio(const StripSettings& strip) {
    if (const std::optional<std::string> reason = whyNotBest(strip))
        throw std::invalid_argument(*reason + ": choose the filtering or the linear converter");
    return *ratioOf(strip.speed);
}

/// The sample that is delivered first.
std::int64_t firstOf(const StripSettings& strip) {
    return strip.reverse ? strip.to.number() - 1 : strip.from.number();
}

std::int64_t leadOf(std::int64_t first, const SpeedRatio& ratio) {
    const std::int64_t beyond = first % ratio.source;
    return beyond > 0 ? ratio.source - beyond : -beyond;
}

std::uint64_t divided(std::uint64_t samples, double speed) {
    return static_cast<std::uint64_t>(std::llround(static_cast<double>(samples) / speed));
}

/// Rounding can make the fades a sample longer than the range; the longer one loses it.
FadePlan atNormalSpeed(FadePlan fade, double speed, std::uint64_t range) {
    fade.fadeInSamples = divided(fade.fadeInSamples, speed);
    fade.fadeOutSamples = divided(fade.fadeOutSamples, speed);
    if (fade.fadeInSamples + fade.fadeOutSamples == range + 1)
        --(fade.fadeInSamples > fade.fadeOutSamples ? fade.fadeInSamples : fade.fadeOutSamples);
    return fade;
}

AutomationWalk atNormalSpeed(const AutomationWalk& walk, double speed) {
    constexpr auto farthest = static_cast<double>(farthestPosition);
    std::vector<LevelNode> nodes(walk.automation.nodes().begin(), walk.automation.nodes().end());
    for (LevelNode& node : nodes)
        node.position =
            std::llround(std::clamp(static_cast<double>(node.position) / speed, -farthest, farthest));
    return {Automation(std::move(nodes)), walk.direction};
}

} // namespace

std::optional<std::string> whyNotBest(const StripSettings& strip) {
    std::ostringstream reason;
    if (!(strip.speed >= slowestBestSpeed && strip.speed <= fastestBestSpeed))
        reason << "the converter \"best\" plays at speeds from " << slowestBestSpeed << " to "
               << fastestBestSpeed << ", not at " << strip.speed;
    else if (!ratioOf(strip.speed))
        reason << "the converter \"best\" needs a ratio of whole numbers up to " << longestRatio
               << ", which the speed is not";
    else if (const auto band = std::ranges::find_if(strip.equaliser,
                                                    [&](const EqualiserBand& one) {
                                                        return one.frequency * strip.speed >=
                                                               strip.sampleRate / 2.0;
                                                    });
             band != strip.equaliser.end())
        reason << "the converter \"best\" has no place for the band at " << band->frequency
               << " Hz, which is heard at " << band->frequency * strip.speed
               << " Hz, half the sample rate or above";
    else
        return std::nullopt;
    return reason.str();
}

StripSettings atNormalSpeed(const StripSettings& strip) {
    if (strip.converter != Converter::best)
        return strip;
    const SpeedRatio ratio = requiredRatio(strip);
    const std::uint64_t length = outputLengthOf(strip);
    const std::int64_t first = firstOf(strip);
    const double estimate = static_cast<double>(first) / strip.speed;
    if (!(std::abs(estimate) < static_cast<double>(farthestPosition)))
        throw std::invalid_argument("the range lies too far away for its speed");
    const MaterialSample place = (first + leadOf(first, ratio)) / ratio.source * ratio.output;

    StripSettings played = strip;
    played.converter = Converter::none;
    played.speed = 1.0;
    played.to = strip.reverse ? place + 1 : place + static_cast<std::int64_t>(length);
    played.from = played.to - static_cast<std::int64_t>(length);
    played.fade = atNormalSpeed(strip.fade, strip.speed, length);
    if (strip.automation)
        played.automation = atNormalSpeed(*strip.automation, strip.speed);
    for (EqualiserBand& band : played.equaliser)
        band.frequency *= strip.speed;
    return played;
}

std::int64_t leadOf(const StripSettings& strip) {
    return leadOf(firstOf(strip), requiredRatio(strip));
}

} // namespace audlmd

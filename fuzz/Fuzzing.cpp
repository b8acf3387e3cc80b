#include "fuzz/Fuzzing.hpp"

#include <algorithm>
#include <utility>
#include <vector>

namespace audlmd::fuzz {
namespace {

std::vector<EqualiserBand> drawBands(FuzzedDataProvider& data, Reach reach) {
    std::vector<EqualiserBand> bands;
    for (auto count = data.ConsumeIntegralInRange(0, reach == Reach::usual ? 5 : 6); count > 0; --count) {
        EqualiserBand band;
        band.kind = static_cast<BandKind>(data.ConsumeIntegralInRange(0, 4));
        band.frequency = drawNumber(data, reach, 10.0, 23000.0);
        band.gainDb = drawNumber(data, reach, -24.0, 24.0);
        band.q = drawNumber(data, reach, 0.1, 20.0);
        bands.push_back(band);
    }
    return bands;
}

FadePlan drawFades(FuzzedDataProvider& data, Reach reach, std::int64_t range) {
    constexpr FadeCurve curves[] = {FadeCurve::linear, FadeCurve::log, FadeCurve::power};
    const std::int64_t most = std::max<std::int64_t>(range, 0);
    FadePlan plan;
    const std::int64_t in = drawWhole(data, reach, 0, most);
    plan.fadeInSamples = static_cast<std::uint64_t>(in);
    plan.fadeOutSamples =
        static_cast<std::uint64_t>(drawWhole(data, reach, 0, most - std::clamp<std::int64_t>(in, 0, most)));
    plan.fadeInCurve = data.PickValueInArray(curves);
    plan.fadeOutCurve = data.PickValueInArray(curves);
    return plan;
}

/// Wraps, as a program's own sum may.
std::int64_t sum(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

/// Mostly in order, and often at one place.
AutomationWalk drawAutomation(FuzzedDataProvider& data, Reach reach, std::int64_t range) {
    std::vector<LevelNode> nodes;
    std::int64_t position = drawWhole(data, reach, -100, std::max<std::int64_t>(range, 0));
    for (auto count = data.ConsumeIntegralInRange(1, 5); count > 0; --count) {
        nodes.push_back({position, static_cast<float>(drawNumber(data, reach, 0.0, 1.5))});
        position = reach == Reach::anything && data.ConsumeBool()
                       ? drawWhole(data, reach, position, std::numeric_limits<std::int64_t>::max())
                       : sum(position, data.ConsumeIntegralInRange(0, 300));
    }
    return {Automation(std::move(nodes)),
            data.ConsumeBool() ? DynamicLevelDirection::forwards : DynamicLevelDirection::reverse};
}

} // namespace

StripSettings drawSettings(FuzzedDataProvider& data, Reach reach, std::int64_t length) {
    StripSettings settings;
    const std::int64_t from = drawWhole(data, reach, -100, length);
    const std::int64_t range = drawWhole(data, reach, 1, length + 200);
    settings.from = from;
    settings.to = sum(from, range);
    settings.reverse = data.ConsumeBool();
    settings.converter = static_cast<Converter>(data.ConsumeIntegralInRange(0, 2));
    if (settings.converter != Converter::none || reach == Reach::anything)
        settings.speed = data.ConsumeBool() ? 1.0 : drawNumber(data, reach, 0.1, 5.0);
    settings.sampleRate = drawNumber(data, reach, 48000.0, 48000.0);
    settings.equaliser = drawBands(data, reach);
    if (data.ConsumeBool())
        settings.fade = drawFades(data, reach, range);
    if (data.ConsumeBool())
        settings.middleLevel = static_cast<float>(drawNumber(data, reach, 0.0, 1.5));
    if (data.ConsumeBool())
        settings.automation = drawAutomation(data, reach, range);
    return settings;
}

} // namespace audlmd::fuzz

#include "host/timeline/DecibelLine.hpp"

#include "host/signal/GainLaws.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace audlmd::timeline {
namespace {

/// Below the promised 0.1 dB, because three points of a piece stand for all of them.
constexpr double toleranceInDecibels = 0.08;

/// Below the silent level the fader law still has a gain, so silence is written as u-value 0.
double uValueOf(double decibels) {
    return decibels <= silentDecibels ? 0.0 : mixerStyleUValueOfDecibels(decibels);
}

/// Whether one piece, straight in u-value, stays close enough to the line in decibels. The two differ most
/// near the middle, so three points are enough.
bool isStraight(double fromDecibels, double toDecibels) {
    const double from = mixerStyleUValueOfDecibels(fromDecibels);
    const double to = mixerStyleUValueOfDecibels(toDecibels);
    return std::ranges::all_of(std::array{0.25, 0.5, 0.75}, [&](double part) {
        const double reached = decibelsOfGain(mixerStyleGain(from + part * (to - from)));
        return std::abs(reached - (fromDecibels + part * (toDecibels - fromDecibels))) <= toleranceInDecibels;
    });
}

/// Leaves out a node that repeats the one before, which neighbouring lines share.
void append(std::vector<LevelNode>& nodes, std::int64_t position, double uValue) {
    const auto u = static_cast<float>(uValue);
    if (nodes.empty() || nodes.back().position != position || nodes.back().uValue != u)
        nodes.push_back({position, u});
}

/// Appends the nodes after `from`, up to and including `to`. Halves the line until each half is straight
/// enough. The recursion ends at neighbouring samples at the latest.
void appendLine(std::vector<LevelNode>& nodes, const DecibelKey& from, const DecibelKey& to) {
    if (to.position - from.position > 1 && !isStraight(from.decibels, to.decibels)) {
        const std::int64_t half = (to.position - from.position) / 2;
        const double part = static_cast<double>(half) / static_cast<double>(to.position - from.position);
        const DecibelKey middle{from.position + half, from.decibels + part * (to.decibels - from.decibels)};
        appendLine(nodes, from, middle);
        appendLine(nodes, middle, to);
        return;
    }
    append(nodes, to.position, mixerStyleUValueOfDecibels(to.decibels));
}

} // namespace

std::vector<LevelNode> nodesAlong(std::span<const DecibelKey> keys) {
    std::vector<LevelNode> nodes;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        // Between two silent keys there is no line: both stand at u-value 0.
        if (i > 0 && std::max(keys[i - 1].decibels, keys[i].decibels) > silentDecibels) {
            const DecibelKey from{keys[i - 1].position, std::max(keys[i - 1].decibels, silentDecibels)};
            const DecibelKey to{keys[i].position, std::max(keys[i].decibels, silentDecibels)};
            append(nodes, from.position, mixerStyleUValueOfDecibels(from.decibels));
            appendLine(nodes, from, to);
        }
        append(nodes, keys[i].position, uValueOf(keys[i].decibels));
    }
    return nodes;
}

} // namespace audlmd::timeline

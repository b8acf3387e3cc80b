// The rules of the equaliser's sections, the gain curves and the automations.

#include "contract/Biquad.hpp"
#include "contract/GainCurveNodes.hpp"
#include "tools/hostcheck/Check.hpp"

#include <array>
#include <bit>
#include <cmath>
#include <span>
#include <string_view>

namespace audlmd {
namespace {

using Aud::GainCurve::CurveNode;
using Direction = Aud::Render::DynamicLevelDirection;

void checkCurve(std::string_view name, const CurveNode* nodes, int count, double spacing) {
    for (int i = 0; i < count; ++i) {
        const CurveNode& node = nodes[i];
        expect(std::abs(node.uValue - i * spacing) < spacing / 100.0, "Node ", i, " of the ", name,
               " curve stands at u-value ", node.uValue, " instead of ", i * spacing, ".");
        expect(std::isfinite(node.magnitude) && std::isfinite(node.slope), "Node ", i, " of the ", name,
               " curve has magnitude ", node.magnitude, " and slope ", node.slope, ".");
        if (i + 1 == count)
            break;
        const double end =
            node.magnitude + node.slope * static_cast<double>(nodes[i + 1].uValue - node.uValue);
        expect(std::abs(end - nodes[i + 1].magnitude) < 1e-4 * (1.0 + std::abs(end)), "The line from node ",
               i, " of the ", name, " curve ends at magnitude ", end, ", and the next one begins at ",
               nodes[i + 1].magnitude, ".");
    }
}

/// Ramps up, down within a sample, stays, and down to silence.
constexpr auto levels =
    std::to_array<CheckedLevel>({{0, 0.25F}, {100, 1.0F}, {101, 0.5F}, {3000, 0.5F}, {3400, 0.0F}});

double levelAt(std::int64_t position) {
    if (position <= levels.front().position)
        return levels.front().uValue;
    for (std::size_t i = 1; i < levels.size(); ++i)
        if (const auto& from = levels[i - 1], &to = levels[i]; position <= to.position)
            return from.uValue + (to.uValue - from.uValue) * static_cast<double>(position - from.position) /
                                     static_cast<double>(to.position - from.position);
    return levels.back().uValue;
}

void expectLevel(const HostUnderCheck::LevelState& state, std::int64_t position) {
    expect(std::abs(state.uValue - levelAt(position)) < 1e-4, "At sample ", position, " the level is ",
           state.uValue, " instead of ", levelAt(position), ".");
    expect(state.stationary != 0 || state.samplesToNextNode != 0, "At sample ", position,
           " the level moves, with 0 samples to the next node.");
}

/// As the renderer walks: see ole/Aud/DynamicLevelApplyingIterators.hpp.
void checkLevelWalk(HostUnderCheck& host, std::int64_t from, std::int64_t to) {
    HostUnderCheck::LevelState state;
    const int step = from < to ? 1 : -1;
    host.placeLevel(state, levels, from, step > 0 ? Direction::forwards : Direction::reverse);
    for (std::int64_t position = from; position != to; position += step) {
        expectLevel(state, position);
        if (state.stationary != 0)
            continue;
        state.uValue += state.uValueStep;
        if (--state.samplesToNextNode != 0)
            continue;
        // Each render call makes a stage of its own around the state.
        Aud::DynamicLevelControl::DynamicLevelApplyingIteratorBase stage(state);
        step > 0 ? stage.moveToNextNodeForwards() : stage.moveToNextNodeReverse();
    }
    expect(state.stationary != 0, "Beyond the last node in the walk's direction the level still moves.");
}

} // namespace

void checkSection(HostUnderCheck&) {
    Aud::Filter::Biquad section;
    Aud::Filter::Biquad other;
    for (const float sample : {1.0F, -0.5F, 0.0F, 0.25F, 1e-30F, 3.0F}) {
        const float result = section.processSample(sample);
        other.processSample(sample + 1.0F);
        for (int i = 0; i < 2; ++i) {
            const float last = section.getLastProcessSampleResult();
            expect(std::bit_cast<std::uint32_t>(last) == std::bit_cast<std::uint32_t>(result),
                   "The last result was ", result, ", and ", last, " is returned.");
        }
    }
}

void checkCurves(HostUnderCheck&) {
    namespace Curve = Aud::GainCurve;
    checkCurve("mixer-style", Curve::MixerStyleLog1_Private::UVal2Mag_CurveNodes,
               Curve::MixerStyleLog1_Private::nodesNeeded, 0.001);
    checkCurve("constant-power", Curve::ConstantPower1_Private::UVal2Mag_CurveNodes,
               Curve::ConstantPower1_Private::nodesNeeded, 0.01);
}

void checkLevelsForwards(HostUnderCheck& host) {
    for (const std::int64_t from : {0, 10, 100, 2000})
        checkLevelWalk(host, from, 4000);
}

void checkLevelsBackwards(HostUnderCheck& host) {
    for (const std::int64_t from : {3400, 3100, 101, 60})
        checkLevelWalk(host, from, -500);
}

} // namespace audlmd

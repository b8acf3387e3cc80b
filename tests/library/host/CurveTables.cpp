#include "host/GainCurveNodes.hpp"
#include "model/Script.hpp"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace Test {

using Aud::GainCurve::CurveNode;

// The tables that the library imports, under names by which a test can change them.
extern CurveNode mixerStyleLogNodes[Aud::GainCurve::MixerStyleLog1_Private::nodesNeeded] __asm__(
    "_ZN3Aud9GainCurve22MixerStyleLog1_Private19UVal2Mag_CurveNodesE");
extern CurveNode constantPowerNodes[Aud::GainCurve::ConstantPower1_Private::nodesNeeded] __asm__(
    "_ZN3Aud9GainCurve22ConstantPower1_Private19UVal2Mag_CurveNodesE");
CurveNode mixerStyleLogNodes[Aud::GainCurve::MixerStyleLog1_Private::nodesNeeded];
CurveNode constantPowerNodes[Aud::GainCurve::ConstantPower1_Private::nodesNeeded];

namespace {

/// Even numbers are laws with the nodes where they belong; odd ones have random numbers in every field, so
/// that a wrong node shows.
std::vector<CurveNode> makeTable(unsigned int number, std::size_t size, float spacing) {
    std::mt19937 random(number);
    std::uniform_real_distribution<float> any(-2.0F, 2.0F);
    std::vector<CurveNode> nodes(size);
    for (std::size_t i = 0; i < size; ++i) {
        const float u = static_cast<float>(i) * spacing;
        const float power = 1.0F + static_cast<float>(number);
        nodes[i] = number % 2 == 0 ? CurveNode{u, std::pow(u, power), power * std::pow(u, power - 1.0F), NAN}
                                   : CurveNode{any(random), any(random), any(random), NAN};
    }
    return nodes;
}

} // namespace

void useCurveTables(unsigned int number) {
    struct Tables {
        std::vector<CurveNode> mixerStyleLog;
        std::vector<CurveNode> constantPower;
    };
    static const std::vector<Tables> all = [] {
        std::vector<Tables> made;
        for (unsigned int i = 0; i < curveTableCount; ++i)
            made.push_back({makeTable(i, std::size(mixerStyleLogNodes), 0.001F),
                            makeTable(i, std::size(constantPowerNodes), 0.01F)});
        return made;
    }();
    std::copy(all[number].mixerStyleLog.begin(), all[number].mixerStyleLog.end(), mixerStyleLogNodes);
    std::copy(all[number].constantPower.begin(), all[number].constantPower.end(), constantPowerNodes);
}

} // namespace Test

#include "contract/GainCurveNodes.hpp"

#include "host/signal/GainLaws.hpp"

#include <array>
#include <cstddef>
#include <numbers>

// The compiler works out the tables, because the renderer may read them before any initialiser has run. The
// functions of <cmath> are not constexpr in C++20.
namespace Aud::GainCurve {
namespace {

/// By Newton's method, which comes down to the root from above and stops when rounding ends the descent.
constexpr double squareRoot(double x) {
    for (double root = x > 1.0 ? x : 1.0;;) {
        const double next = 0.5 * (root + x / root);
        if (next >= root)
            return root;
        root = next;
    }
}

/// e^x for x of 0 or more: a power of 2, times the Taylor series of what is left. After 18 terms the rest of
/// the series is below 1e-20, far below the rounding of a double.
constexpr double exponential(double x) {
    double power = 1.0;
    for (; x > std::numbers::ln2; x -= std::numbers::ln2)
        power *= 2.0;
    double sum = 1.0;
    double term = 1.0;
    for (int n = 1; n <= 18; ++n)
        sum += term *= x / n;
    return power * sum;
}

/// The Taylor series, for x up to pi/2. The first term that is left out is below 2e-23.
constexpr double sine(double x) {
    double sum = x;
    double term = x;
    for (int n = 3; n <= 25; n += 2)
        sum += term *= -x * x / (n * (n - 1));
    return sum;
}

/// The mixer-style law, see audlmd::mixerStyleGain().
constexpr double faderGain(double u) {
    // The iteration for the root would not end.
    if (u == 0.0)
        return 0.0;
    const double travel = squareRoot(squareRoot(squareRoot(u)));
    return (exponential(audlmd::faderLawExponent * travel) - 1.0) /
           (exponential(audlmd::faderLawExponent) - 1.0);
}

/// The constant-power law, see audlmd::constantPowerGain().
constexpr double powerGain(double u) {
    return sine(u * (std::numbers::pi / 2.0));
}

/// A table of a law: node i lies at i / nodesPerUnit, and the curve is level from node `last` on.
///
/// A slope leads from one rounded node to the next. The renderer's rounded division assigns some u-values on
/// a node to the node below; with these slopes such a u-value still gives the same gain. u = 1.0 is one of
/// them, and gives exactly 1.
template <std::size_t Count, class Law>
constexpr std::array<CurveNode, Count> nodesOf(double nodesPerUnit, std::size_t last, Law law) {
    std::array<CurveNode, Count> nodes{};
    for (std::size_t i = 0; i < Count; ++i) {
        const double u = static_cast<double>(i) / nodesPerUnit;
        nodes[i].uValue = static_cast<float>(u);
        nodes[i].magnitude = i <= last ? static_cast<float>(law(u)) : nodes[last].magnitude;
    }
    for (std::size_t i = 0; i < last; ++i) {
        const double rise = static_cast<double>(nodes[i + 1].magnitude) - nodes[i].magnitude;
        const double run = static_cast<double>(nodes[i + 1].uValue) - nodes[i].uValue;
        nodes[i].slope = static_cast<float>(rise / run);
    }
    return nodes;
}

} // namespace

extern "C" {
[[gnu::visibility("hidden")]] extern const std::array<CurveNode, MixerStyleLog1_Private::nodesNeeded>
    audlmdMixerStyleNodes;
[[gnu::visibility("hidden")]] extern const std::array<CurveNode, ConstantPower1_Private::nodesNeeded>
    audlmdConstantPowerNodes;
}
constexpr decltype(audlmdMixerStyleNodes) audlmdMixerStyleNodes =
    nodesOf<MixerStyleLog1_Private::nodesNeeded>(1000.0, 1500, &faderGain);
constexpr decltype(audlmdConstantPowerNodes) audlmdConstantPowerNodes =
    nodesOf<ConstantPower1_Private::nodesNeeded>(100.0, 100, &powerGain);

// The renderer's arrays cannot be initialised by a function's result, so they are other names for the tables.
[[gnu::alias("audlmdMixerStyleNodes")]] extern const CurveNode
    MixerStyleLog1_Private::UVal2Mag_CurveNodes[MixerStyleLog1_Private::nodesNeeded];
[[gnu::alias("audlmdConstantPowerNodes")]] extern const CurveNode
    ConstantPower1_Private::UVal2Mag_CurveNodes[ConstantPower1_Private::nodesNeeded];

} // namespace Aud::GainCurve

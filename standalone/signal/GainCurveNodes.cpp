#include "host/GainCurveNodes.hpp"

#include "standalone/signal/GainLaws.hpp"

#include <array>
#include <cstddef>
#include <numbers>

// The tables are worked out by the compiler: the renderer may read them before any initialiser has run. The
// functions of <cmath> cannot be used for that.
namespace Aud::GainCurve {
namespace {

/// By Newton's method, which comes down to the root from above.
constexpr double squareRoot(double x) {
    for (double root = x > 1.0 ? x : 1.0;;) {
        const double next = 0.5 * (root + x / root);
        if (next >= root)
            return root;
        root = next;
    }
}

/// e^x, for x of 0 or more.
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

constexpr double sine(double x) {
    double sum = x;
    double term = x;
    for (int n = 3; n <= 25; n += 2)
        sum += term *= -x * x / (n * (n - 1));
    return sum;
}

constexpr double faderGain(double u) {
    // The iteration would not end at 0.
    if (u == 0.0)
        return 0.0;
    const double travel = squareRoot(squareRoot(squareRoot(u)));
    return (exponential(audlmd::faderLawExponent * travel) - 1.0) /
           (exponential(audlmd::faderLawExponent) - 1.0);
}

constexpr double powerGain(double u) {
    return sine(u * (std::numbers::pi / 2.0));
}

/// Node i lies at i / nodesPerUnit. From node `last` on the curve is level.
///
/// A slope leads from one rounded node to the next, so that a u-value that the renderer's rounded division
/// assigns to the node below its own still gives the same gain: u = 1.0 is one of them, and is exactly unity.
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
[[gnu::visibility("hidden")]] extern const std::array<CurveNode, MixerStyleLog1_Private::nodeCount>
    audlmdMixerStyleNodes;
[[gnu::visibility("hidden")]] extern const std::array<CurveNode, ConstantPower1_Private::nodeCount>
    audlmdConstantPowerNodes;
}
constexpr decltype(audlmdMixerStyleNodes) audlmdMixerStyleNodes =
    nodesOf<MixerStyleLog1_Private::nodeCount>(1000.0, 1500, &faderGain);
constexpr decltype(audlmdConstantPowerNodes) audlmdConstantPowerNodes =
    nodesOf<ConstantPower1_Private::nodeCount>(100.0, 100, &powerGain);

// An array cannot be initialised by a function's result, but can be another name for one that is.
[[gnu::alias("audlmdMixerStyleNodes")]] extern const CurveNode MixerStyleLog1_Private::UVal2Mag_CurveNodes[];
[[gnu::alias(
    "audlmdConstantPowerNodes")]] extern const CurveNode ConstantPower1_Private::UVal2Mag_CurveNodes[];

} // namespace Aud::GainCurve

#include "host/signal/BandsSideBySide.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/signal/BandsSideBySide.cpp"
#include "host/signal/Wide.ipp"

HWY_BEFORE_NAMESPACE();
namespace audlmd::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
constexpr hn::CappedTag<double, 4> doubles;
constexpr hn::Rebind<float, decltype(doubles)> floats;
constexpr hn::RebindToUnsigned<decltype(floats)> bits;
using Delays = hn::Vec<decltype(doubles)>;
using Results = hn::Vec<decltype(floats)>;
using Bits = hn::Vec<decltype(bits)>;

constexpr std::size_t lanes = hn::MaxLanes(doubles);
constexpr std::size_t vectors = (BandsSideBySide::count + lanes - 1) / lanes;
/// So many steps run before anybody looks whether a result was extreme.
constexpr std::size_t mostSteps = 64;

/// As many neighbouring bands as a vector has lanes.
struct Bands {
    Delays b0, b1, b2, a1, a2;
    Delays first, second;
    /// Results of two steps, which take turns: a band reads what its neighbour has made two steps ago.
    Results even, odd;
};
struct AllBands {
    Bands vector[vectors];
};

constexpr std::uint32_t twiceTheBits(float magnitude) {
    return std::bit_cast<std::uint32_t>(magnitude) << 1;
}
constexpr std::uint32_t least = twiceTheBits(0x1p-100F);
constexpr std::uint32_t most = twiceTheBits(0x1p100F);

/// Remembers whether a result was so small, so large or so undefined that the delays must be settled, see
/// Biquad.ipp.
struct Watching {
    Bits furthest;

    HWY_INLINE void see(Bands&, Results results) {
        const Bits x = hn::BitCast(bits, results);
        furthest = hn::Max(furthest, hn::Sub(hn::Add(x, x), hn::Set(bits, least)));
    }
    bool sawExtreme() const { return hn::GetLane(hn::MaxOfLanes(bits, furthest)) > most - least; }
};

/// Settles the delays of such results at once: 0 in place of each delay that is extreme itself.
struct Settling {
    bool saw = false;

    HWY_INLINE void see(Bands& bands, Results results) {
        // A NaN fails both comparisons.
        const auto magnitudes = hn::Abs(hn::PromoteTo(doubles, results));
        const auto usual = hn::And(hn::Ge(magnitudes, hn::Set(doubles, 0x1p-100)),
                                   hn::Le(magnitudes, hn::Set(doubles, 0x1p100)));
        if (hn::AllTrue(doubles, usual)) [[likely]]
            return;
        saw = true;
        for (Delays* delays : {&bands.first, &bands.second}) {
            const auto size = hn::Abs(*delays);
            const auto kept =
                hn::And(hn::Gt(size, hn::Set(doubles, 0x1p-200)), hn::Lt(size, hn::Set(doubles, 0x1p200)));
            *delays = hn::IfThenElseZero(hn::Or(usual, kept), *delays);
        }
    }
    bool sawExtreme() const { return saw; }
};

/// One sample of each band of a vector.
HWY_INLINE Results filter(Bands& bands, Results samples) {
    const Delays in = hn::PromoteTo(doubles, samples);
    const Delays out = hn::Add(hn::Mul(bands.b0, in), bands.first);
    const Delays towardsFirst = hn::Add(hn::Mul(bands.b1, in), bands.second);
    const Delays towardsSecond = hn::Add(hn::Mul(bands.b2, in), hn::Zero(doubles));
    bands.first = hn::Sub(towardsFirst, hn::Mul(bands.a1, out));
    bands.second = hn::Sub(towardsSecond, hn::Mul(bands.a2, out));
    // Bands exchange single precision.
#if HWY_TARGET == HWY_SCALAR
    return hn::Set(floats, static_cast<float>(hn::GetLane(out))); // without a limit
#else
    return hn::DemoteTo(floats, out);
#endif
}

/// The results of a vector as the samples of the next bands; what is last in `before` comes to the first
/// band.
HWY_INLINE Results movedOn(Results results, Results before) {
#if HWY_TARGET == HWY_SCALAR
    static_cast<void>(results);
    return before;
#else
    return hn::CombineShiftRightLanes<lanes - 1>(floats, results, before);
#endif
}

/// One sample of each band, in a vector and those before it: from the last to the first, because a band reads
/// what its neighbour has not made anew. A recursion, because not every compiler would unroll a loop.
template <Results Bands::*Turn, std::size_t Vector = vectors - 1, class Watch>
HWY_INLINE void step(AllBands& bands, float sample, Watch& watch) {
    Bands& here = bands.vector[Vector];
    Results before;
    if constexpr (Vector == 0)
        before = hn::Set(floats, sample);
    else
        before = bands.vector[Vector - 1].*Turn;
    here.*Turn = filter(here, movedOn(here.*Turn, before));
    watch.see(here, here.*Turn);
    if constexpr (Vector != 0)
        step<Turn, Vector - 1>(bands, sample, watch);
}

/// Returns whether a result was extreme.
template <class Watch>
bool runSteps(AllBands& all, const float* in, float* out, std::size_t steps, Watch watch) {
    // What is no longer referred to stays in registers.
    AllBands bands = all;
    const Bands& last = bands.vector[vectors - 1];
    std::size_t i = 0;
    for (; i + 2 <= steps; i += 2) {
        step<&Bands::even>(bands, in[i], watch);
        step<&Bands::odd>(bands, in[i + 1], watch);
        out[i] = hn::GetLane(last.even);
        out[i + 1] = hn::GetLane(last.odd);
    }
    if (i < steps) {
        step<&Bands::even>(bands, in[i], watch);
        out[i] = hn::GetLane(last.even);
        for (Bands& vector : bands.vector)
            std::swap(vector.even, vector.odd);
    }
    all = bands;
    return watch.sawExtreme();
}

void runBands(BandsSideBySide& sections, const float* in, float* out, std::size_t steps) {
    AllBands bands;
    for (std::size_t v = 0; v < vectors; ++v) {
        const auto numbers = [v](const auto& ofEach)
                                 HWY_ATTR { return hn::Load(doubles, &ofEach[v * lanes]); };
        bands.vector[v] = {.b0 = numbers(sections.b0),
                           .b1 = numbers(sections.b1),
                           .b2 = numbers(sections.b2),
                           .a1 = numbers(sections.a1),
                           .a2 = numbers(sections.a2),
                           .first = numbers(sections.firstDelay),
                           .second = numbers(sections.secondDelay),
                           .even = hn::Load(floats, &sections.resultBefore[v * lanes]),
                           .odd = hn::Load(floats, &sections.result[v * lanes])};
    }
    bool settles = false;
    while (steps != 0) {
        // A copy, because the same steps may be run again when their results stand where they came from.
        float samples[mostSteps];
        const std::size_t count = std::min(steps, mostSteps);
        std::copy_n(in, count, samples);
        if (!settles) {
            const AllBands before = bands;
            settles = runSteps(bands, samples, out, count, Watching{.furthest = hn::Zero(bits)});
            if (settles)
                bands = before;
        }
        // On through silence, too, where every result is extreme.
        if (settles)
            settles = runSteps(bands, samples, out, count, Settling());
        in += count;
        out += count;
        steps -= count;
    }
    for (std::size_t v = 0; v < vectors; ++v) {
        const Bands& from = bands.vector[v];
        hn::Store(from.first, doubles, &sections.firstDelay[v * lanes]);
        hn::Store(from.second, doubles, &sections.secondDelay[v * lanes]);
        hn::Store(from.even, floats, &sections.resultBefore[v * lanes]);
        hn::Store(from.odd, floats, &sections.result[v * lanes]);
    }
}

} // namespace
} // namespace audlmd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace audlmd {
namespace {

HWY_EXPORT(runBands);

} // namespace

void BandsSideBySide::run(const float* in, float* out, std::size_t steps) {
    HWY_DYNAMIC_DISPATCH(runBands)(*this, in, out, steps);
}

} // namespace audlmd
#endif

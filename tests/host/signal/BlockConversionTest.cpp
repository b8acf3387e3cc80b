#include "host/deliver/Delivery.hpp"
#include "host/deliver/TriangularNoise.hpp"
#include "host/signal/Unclipped.hpp"
#include "tests/host/signal/EveryVectorWidth.hpp"
#include "tests/ole/Aud/EveryKindOfFloat.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <vector>

namespace audlmd::test {
namespace {

/// Not inlined, so that the sample is in a register and the container in memory, as in a render function.
template <class Out>
[[gnu::noinline]] void deliverOne(float x, Out& out) {
    Aud::Render::deliver(x, out);
}

/// The sum of two NaNs is the one that the compiler adds to: any of them will do.
template <class Out, class Container>
bool areSumsOfNaNs(float x, const Container& before, const Container& one, const Container& other) {
    if constexpr (std::is_same_v<Out, model::Summing<Aud::SampleF32>>)
        return std::isnan(x) && std::isnan(std::bit_cast<float>(before)) &&
               std::isnan(std::bit_cast<float>(one)) && std::isnan(std::bit_cast<float>(other));
    return false;
}

/// Delivers into containers of random bytes, among them NaNs, with one container around on either side.
template <class Out>
void expectTheBytesOfSingleSamples(const std::vector<float>& floats) {
    const auto before = randomContainers<Out>(floats.size() + 2);
    auto expected = before;
    auto converted = before;
    Out single(&expected[1]);
    for (const float x : floats)
        deliverOne(x, single);
    Out block(&converted[1]);
    convertBlock(floats.data(), floats.size(), block);
    for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_TRUE(std::memcmp(&expected[i], &converted[i], sizeof expected[0]) == 0 ||
                    (i > 0 && i <= floats.size() &&
                     areSumsOfNaNs<Out>(floats[i - 1], before[i], expected[i], converted[i])))
            << "container " << i << " of " << expected.size() << " in " << __PRETTY_FUNCTION__;
    // The position has moved, so that the next sample goes to the last container.
    deliverOne(0.25F, single);
    deliverOne(0.25F, block);
    EXPECT_EQ(std::memcmp(&expected.back(), &converted.back(), sizeof expected[0]), 0);
}

void expectTheBytesOfSingleSamplesInAll(const std::vector<float>& floats) {
    withEveryVectorWidth([&] {
        model::forEachOutputType([&]<class Out>(std::size_t) { expectTheBytesOfSingleSamples<Out>(floats); });
    });
}

TEST(BlockConversion, DeliversTheBytesOfSingleSamples) {
    expectTheBytesOfSingleSamplesInAll(everyKindOfFloat());
    for (std::size_t count = 0; count < 38; ++count)
        expectTheBytesOfSingleSamplesInAll(std::vector<float>(count, 0.4F));
}

TEST(Delivery, GivesTheSameBytesByTheBlockAndOneByOne) {
    std::vector<float> floats = everyKindOfFloat();
    for (std::size_t n = 0; 101 * n < floats.size(); ++n)
        floats[n] = floats[101 * n];
    floats.resize(floats.size() / 101);
    const auto expectTheSameBytes = [&]<class Out>(std::size_t) {
        if constexpr (std::is_pointer_v<Out>)
            for (const Rounding rounding : {Rounding::nearest, Rounding::dithered, Rounding::truncated}) {
                auto block = randomContainers<Out>(floats.size() + 2);
                auto single = block;
                std::vector<float> sums = floats;
                addBlock(std::span(sums), &block[1], rounding, {3, -5});
                storeBlock(std::span(floats).last(99), &block[1], rounding, {4, 1});
                for (std::size_t n = 0; n < floats.size(); ++n) {
                    float sum = floats[n];
                    addBlock(std::span(&sum, 1), &single[n + 1], rounding,
                             {3, static_cast<std::int64_t>(n) - 5});
                    EXPECT_EQ(std::memcmp(&sum, &sums[n], sizeof sum), 0) << sum << " and " << sums[n];
                }
                for (std::size_t n = 0; n < 99; ++n)
                    storeBlock(std::span<const float>(&floats[floats.size() - 99 + n], 1), &single[n + 1],
                               rounding, {4, static_cast<std::int64_t>(n) + 1});
                EXPECT_EQ(std::memcmp(block.data(), single.data(), block.size() * sizeof block[0]), 0)
                    << __PRETTY_FUNCTION__;
            }
    };
    withEveryVectorWidth([&] { model::forEachOutputType(expectTheSameBytes); });
}

template <unsigned int Bits, unsigned int Bytes, auto... Rest>
constexpr double stepsOf(const Aud::Sample<Bits, Bytes, Rest...>*) {
    return static_cast<double>(std::uint64_t{1} << (Bits - 1));
}

/// The integer that a container holds, counted from silence.
template <class Format>
double stepsIn(const Format& container) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < sizeof container; ++i)
        bits |= std::uint32_t{container.bytes[i]} << (32 - 8 * sizeof container + 8 * i);
    if constexpr (std::is_same_v<Format, Aud::SampleU8>)
        bits -= 0x80000000;
    return static_cast<std::int32_t>(bits) >> (32 - 8 * sizeof container);
}

/// Stored, and added to containers that hold three steps.
TEST(Delivery, GivesTheNearestStepAlsoBehindTheNoise) {
    const auto expectNearest = []<class Format>(Format*, double there, Rounding rounding) {
        const double steps = stepsOf(static_cast<Format*>(nullptr));
        std::vector<float> samples;
        for (const double inSteps :
             {-1e12, -steps - 1.0, -steps,      -3.5,        -2.5,  -1.75, -1.0,
              -0.5,  -0.25,        0.0,         0.5,         0.75,  1.0,   1.5,
              2.5,   3.0,          steps - 4.0, steps - 1.0, steps, 1e12,  static_cast<double>(NAN)})
            samples.push_back(static_cast<float>(inSteps / steps));
        if (there == 0.0) // what rounds up where a half is added first
            samples.push_back(static_cast<float>(0x1.fffffep-2 / steps));
        std::vector<Format> containers(samples.size());
        std::vector<float> sums(samples.size(), static_cast<float>(there / steps));
        if (there != 0.0) {
            storeBlock(std::span<const float>(sums), containers.data(), Rounding::nearest, {});
            sums = samples;
            addBlock(std::span(sums), containers.data(), rounding, {2, 7});
        } else {
            storeBlock(std::span<const float>(samples), containers.data(), rounding, {2, 7});
        }
        TriangularNoise noise(2, 7);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double sum = static_cast<double>(samples[i]) * steps + there;
            const double behind = (std::isnan(sum) ? 0.0 : sum) +
                                  (rounding == Rounding::dithered ? static_cast<double>(noise.next()) : 0.0);
            EXPECT_EQ(stepsIn(containers[i]), std::clamp(std::nearbyint(behind), -steps, steps - 1.0))
                << sum << " of " << steps;
            if (there != 0.0 && !std::isnan(sum)) {
                EXPECT_EQ(sums[i], static_cast<float>(sum / steps));
            }
        }
    };
    const auto expectNearestInAll = [&]<class Out>(std::size_t) {
        if constexpr (std::is_pointer_v<Out> && !std::is_same_v<Out, Aud::SampleF32*>)
            for (const double there : {0.0, 3.0})
                for (const Rounding rounding : {Rounding::nearest, Rounding::dithered})
                    expectNearest(Out{}, there, rounding);
    };
    withEveryVectorWidth([&] { model::forEachOutputType(expectNearestInAll); });
}

/// The same input gives the same file with every version.
TEST(Delivery, AddsTheSameNoiseAlways) {
    struct Case {
        OutputPlace place;
        float number;
    };
    for (const auto& [place, number] : {Case{{}, 33846}, Case{{0, 1}, 22152}, Case{{1, -1}, 225},
                                        Case{{1, 0}, 2378}, Case{{5, 1LL << 40}, -51152}})
        EXPECT_EQ(TriangularNoise(place.channel, place.position).next(), number / 65536);
}

} // namespace
} // namespace audlmd::test

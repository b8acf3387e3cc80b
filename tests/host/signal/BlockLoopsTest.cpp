#include "host/signal/BlockLoops.hpp"

#include "host/signal/BlockEqualiser.hpp"
#include "host/signal/Equaliser.hpp"
#include "ole/Aud/MultiBandBiquadApplyingIterator.hpp"
#include "tests/host/signal/EveryVectorWidth.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <numeric>
#include <span>
#include <vector>

namespace audlmd::test {
namespace {

/// Ordinary samples, and among them zeros of both signs, denormal and enormous numbers, infinities and NaNs.
std::vector<float> samplesOf(std::mt19937& random, std::size_t count, bool extreme) {
    std::vector<float> samples(count);
    for (float& sample : samples)
        sample = extreme && random() % 4 == 0
                     ? std::bit_cast<float>(static_cast<std::uint32_t>(random()))
                     : static_cast<float>(static_cast<std::int32_t>(random())) * 0x1p-31F;
    if (extreme && count != 0)
        samples[random() % count] = std::array{0.0F, -0.0F, INFINITY, NAN}[random() % 4];
    return samples;
}

/// Of two NaNs, an addition may give either.
bool areSame(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) || (a != a && b != b);
}

/// Samples that lie anywhere in memory, and what stands around them.
struct Block {
    std::vector<float> memory;
    std::size_t first;
    std::size_t count;

    Block(std::mt19937& random, std::size_t length, bool extreme)
        : memory(samplesOf(random, length + 24, extreme)), first(random() % 12), count(length) {}
    std::span<float> samples() { return std::span(memory).subspan(first, count); }
};

/// `loop` changes one block, `twin` another one sample by sample: n, and the sample.
template <class Loop, class Twin>
void expectTheSame(Block block, Loop loop, Twin twin, const char* name) {
    Block expected = block;
    loop(block.samples());
    for (std::size_t n = 0; n < expected.count; ++n)
        twin(n, expected.samples()[n]);
    for (std::size_t i = 0; i < block.memory.size(); ++i)
        ASSERT_TRUE(areSame(block.memory[i], expected.memory[i]))
            << name << ", " << block.count << " samples from " << block.first << ": " << block.memory[i]
            << " at " << i << ", not " << expected.memory[i];
}

TEST(BlockLoops, AreTheSameAsSampleBySampleAtEveryWidth) {
    std::mt19937 random = seeded();
    withEveryVectorWidth([&] {
        for (std::size_t round = 0; round < 400; ++round) {
            const std::size_t length = round < 80 ? round : random() % 3000;
            const bool extreme = round % 2 == 0;
            Block block(random, length, extreme);
            Block a(random, length, extreme);
            Block b(random, length, extreme);
            const std::span<const float> inA = a.samples();
            const std::span<const float> inB = b.samples();
            const float gain = samplesOf(random, 1, extreme)[0];
            expectTheSame(
                block, [&](std::span<float> bus) { addTo(bus, inA, gain); },
                [&](std::size_t n, float& sum) { sum += inA[n] * gain; }, "one product");
            expectTheSame(
                block, [&](std::span<float> bus) { addTo(bus, inA, gain, inB, -0.7F); },
                [&](std::size_t n, float& sum) { sum += inA[n] * gain + inB[n] * -0.7F; }, "two products");
            const std::array inputs{BusInput{inA.data(), gain}, BusInput{inB.data(), -0.7F},
                                    BusInput{inA.data(), 0.1F}};
            expectTheSame(
                block, [&](std::span<float> bus) { addTo(bus, inputs); },
                [&](std::size_t n, float& sum) {
                    for (const BusInput& input : inputs)
                        sum += input.samples[n] * input.gain;
                },
                "three products");
            expectTheSame(
                block, [&](std::span<float> samples) { multiply(samples, gain); },
                [&](std::size_t, float& sample) { sample *= gain; }, "a gain");
            expectTheSame(
                block, [&](std::span<float> samples) { copyReversed(inA.data() + length - 1, samples); },
                [&](std::size_t n, float& sample) { sample = inA[length - 1 - n]; }, "backwards");
            float peak = 0.0F;
            for (const float sample : inA)
                peak = std::fabs(sample) > peak ? std::fabs(sample) : peak;
            ASSERT_EQ(peakOf(inA), peak) << length;
        }
    });
}

void expectChannelsSideBySideAndApart() {
    for (std::size_t count = 0; count < 80; ++count)
        for (std::size_t bytes = 1; bytes <= 4; ++bytes) {
            std::vector<std::byte> channels(2 * count * bytes);
            for (std::size_t i = 0; i < channels.size(); ++i)
                channels[i] = static_cast<std::byte>(i + 1);
            // One container more, which stays as it is.
            std::vector<std::byte> frames((2 * count + 1) * bytes);
            const std::byte* const right = channels.data() + count * bytes;
            joinChannels(channels.data(), right, bytes, count, frames.data());
            for (std::size_t i = 0; i < channels.size(); ++i) {
                const std::size_t at = i / (2 * bytes) * bytes + i % bytes;
                ASSERT_EQ(frames[i], i / bytes % 2 == 0 ? channels[at] : right[at]) << bytes << ", " << count;
            }
            EXPECT_EQ(std::ranges::count(std::span(frames).last(bytes), std::byte{0}),
                      std::ssize(frames) - std::ssize(channels));
        }
    for (std::size_t width = 1; width <= 3; ++width) {
        std::vector<float> frames(54);
        std::iota(frames.begin(), frames.end(), 1.0F);
        std::vector<float> apart(frames.size());
        std::vector<float*> channels;
        for (std::size_t n = 0; n < width; ++n)
            channels.push_back(&apart[n * frames.size() / width]);
        splitFrames(frames, channels);
        for (std::size_t i = 0; i < frames.size(); ++i)
            EXPECT_EQ(channels[i % width][i / width], frames[i]);
    }
}

TEST(BlockLoops, PutChannelsSideBySideAndApartAtEveryWidth) {
    withEveryVectorWidth(&expectChannelsSideBySideAndApart);
}

void expectTheFilterOfSingleSamples(std::mt19937& random) {
    Aud::Filter::MultiBandBiquad<5U> one;
    setBands(one,
             std::vector<EqualiserBand>{{BandKind::highPass, 60.0},
                                        {BandKind::peak, 900.0, -6.0, 1.2},
                                        {BandKind::peak, 3000.0, 9.0, 4.0},
                                        {BandKind::lowShelf, 200.0, 6.0},
                                        {BandKind::lowPass, 12000.0}},
             48000.0);
    Aud::Filter::MultiBandBiquad<5U> other = one;
    // Through silence and back, through denormal numbers, and numbers that overflow.
    for (const float peak : {1.0F, 0.0F, 1e-32F, 1e35F, 0.5F})
        for (const std::size_t length : {1U, 31U, 32U, 33U, 74U, 1000U, 4096U, 137U}) {
            std::vector<float> block = samplesOf(random, length, false);
            for (float& sample : block)
                sample *= peak;
            if (length >= 1000U)
                block[random() % length] = peak == 0.5F ? std::numeric_limits<float>::infinity() : -0.0F;
            std::vector<float> singly = block;
            filterBlock(one, block);
            for (float& sample : singly)
                sample = other.processSample(sample);
            ASSERT_EQ(std::memcmp(block.data(), singly.data(), length * sizeof(float)), 0)
                << length << " samples of up to " << peak;
            if (length % 2 == 1) {
                stepBack(one);
                stepBack(other);
            }
        }
}

TEST(BlockEqualiser, FiltersAndRemembersAsSampleBySampleAtEveryWidth) {
    std::mt19937 random = seeded();
    withEveryVectorWidth([&] { expectTheFilterOfSingleSamples(random); });
}

TEST(VectorWidth, IsTheWidestOfAtMostWhatIsAskedFor) {
    const int widest = vectorBits();
    for (const int asked : {-1, 0, 127, 128, 255, 256, 4096}) {
        useVectors(asked);
        EXPECT_EQ(vectorBits(), std::min(asked < 128 ? 0 : asked < 256 ? 128 : 256, widest));
    }
    useVectors(widest);
}

} // namespace
} // namespace audlmd::test

#include "host/mix/ConvertedSources.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>

namespace audlmd::test {
namespace {

std::vector<float> noise(double length) {
    std::mt19937 random(1);
    std::vector<float> samples(static_cast<std::size_t>(length));
    for (float& sample : samples)
        sample = std::uniform_real_distribution(-1.0F, 1.0F)(random);
    return samples;
}

std::vector<float> read(SampleSource& source, std::int64_t position, std::int64_t count) {
    std::vector<float> samples(static_cast<std::size_t>(std::min(count, source.length() - position)));
    source.read(position, samples);
    return samples;
}

std::shared_ptr<SampleSource> converted(std::vector<float> samples, int inRate, int outRate) {
    return convertedTo(std::make_shared<MemorySource>(std::move(samples)), inRate, outRate);
}

TEST(RateConvertedSource, GivesTheSamplesOfASingleRunInAnyOrderToAnyThread) {
    // Equal, but for samples so small that double precision is the limit; or within a bit of full scale.
    constexpr float equal = 1e-12F;
    constexpr float aBit = 1.2e-7F;
    const std::tuple<int, int, float> cases[] = {
        {44100, 48000, equal},  {48000, 44100, equal}, {22050, 48000, equal}, {44100, 96000, equal},
        {192000, 44100, equal}, {96000, 48000, aBit},  {32000, 48000, aBit},  {8000, 48000, aBit},
        {44056, 48000, aBit},   {44099, 48000, aBit},  {47952, 48000, equal}, {48048, 48000, equal},
        {37800, 48000, equal},  {192000, 44099, aBit}};
    for (const auto& [inRate, outRate, tolerance] : cases) {
        SCOPED_TRACE(std::to_string(inRate) + " to " + std::to_string(outRate));
        std::vector<float> input = noise(150000.0 * inRate / outRate);
        const auto source = converted(input, inRate, outRate);
        const std::vector<float> whole = read(*converted(input, inRate, outRate), 0, source->length());

        std::vector<float> expected(whole.size());
        input.resize(input.size() + 10000);
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, SOXR_HI_PREC_CLOCK);
        soxr_oneshot(inRate, outRate, 1, input.data(), input.size(), nullptr, expected.data(),
                     expected.size(), nullptr, nullptr, &quality, nullptr);
        EXPECT_THAT(whole, testing::Pointwise(testing::FloatNear(tolerance), expected));

        const auto readBackwardsInParts = [&](unsigned int seed) {
            std::mt19937 random(seed);
            const auto randomBelow = [&](unsigned int end) {
                return static_cast<std::int64_t>(random() % end);
            };
            for (std::int64_t position = source->length() - 1; position >= 0;
                 position -= randomBelow(40000)) {
                const std::vector<float> part = read(*source, position, randomBelow(70000));
                EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + position)) << position;
            }
        };
        std::vector<std::jthread> threads;
        for (const unsigned int seed : {1U, 2U, 3U})
            threads.emplace_back(readBackwardsInParts, seed);
    }
}

/// Notes how much is read of it, and fails when told to, or behind `tornAt`.
struct ScriptedSource : SampleSource {
    explicit ScriptedSource(std::int64_t samples) : inLength(samples) {}
    std::int64_t length() const override { return inLength; }
    const void* exclusiveResource() const override { return this; }
    void read(std::int64_t position, std::span<float> samples) override {
        if (fails || position + std::ssize(samples) > tornAt)
            throw std::runtime_error("the tape is torn");
        readSamples += std::ssize(samples);
        std::fill(samples.begin(), samples.end(), 0.25F);
    }

    std::int64_t inLength;
    bool fails = false;
    std::int64_t tornAt = inLength;
    std::int64_t readSamples = 0;
};

TEST(RateConvertedSource, RoundsTheLengthUp) {
    // A length that no double holds.
    constexpr std::int64_t veryLong = std::int64_t{1} << 53;
    struct Case {
        std::int64_t inLength;
        int inRate;
        int outRate;
        std::int64_t outLength;
        Relabel relabel = {};
    };
    const Case cases[] = {{0, 44100, 48000, 0},
                          {1, 44100, 48000, 2},
                          {147, 44100, 48000, 160},
                          {148, 44100, 48000, 162},
                          {768, 768000, 1000, 1},
                          {769, 768000, 1000, 2},
                          {veryLong + 1, 3000, 6000, 2 * (veryLong + 1)},
                          {(std::int64_t{44099} << 35) + 1, 44099, 48000, (std::int64_t{48000} << 35) + 2},
                          {172'800'000, 48000, 48000, 172'972'800, {1001, 1000}},
                          {172'800'000, 48000, 48000, 172'627'373, {1000, 1001}},
                          {158'760'000, 44100, 48000, 172'972'800, {1001, 1000}},
                          {158'760'000, 44100, 48000, 158'760'000, {441, 480}}};
    for (const auto& [inLength, inRate, outRate, outLength, relabel] : cases) {
        const auto source = convertedTo(std::make_shared<ScriptedSource>(inLength), inRate, outRate, relabel);
        EXPECT_EQ(source->length(), outLength) << inLength << " samples, " << inRate << " to " << outRate;
        EXPECT_NO_THROW(read(*source, std::max<std::int64_t>(0, outLength - 3), 3));
    }
}

/// A tone without an end, of 1 kHz at 48 kHz.
struct ToneSource : SampleSource {
    std::int64_t length() const override { return 172'800'000; }
    void read(std::int64_t position, std::span<float> samples) override {
        for (float& sample : samples)
            sample = static_cast<float>(0.5 * std::sin(std::numbers::pi / 24.0 * double(position++ % 48)));
    }
};

TEST(RateConvertedSource, TakesAToneAtAnotherRateWithItsPitch) {
    for (const auto& [relabel, frequency] : {std::pair(Relabel{25, 24}, 960.0),
                                             {Relabel{1001, 1000}, 1e6 / 1001.0},
                                             {Relabel{24, 25}, 25e3 / 24.0}}) {
        const auto source = convertedTo(std::make_shared<ToneSource>(), 48000, 48000, relabel);
        // In turns, against the exact tone: what is off by 1e-9 Hz turns by 4e-6 in an hour.
        const auto phaseAt = [&, tone = frequency](std::int64_t start) {
            std::complex<double> sum;
            std::int64_t n = start;
            for (const float sample : read(*source, start, 480'000)) {
                const double turns = std::fmod(double(n % 48000) * tone, 48000.0) / 48000.0 +
                                     std::fmod(double(n / 48000) * tone, 1.0);
                ++n;
                sum += double{sample} * std::polar(1.0, -2.0 * std::numbers::pi * turns);
            }
            return std::arg(sum * std::complex(0.0, 1.0)) / (2.0 * std::numbers::pi);
        };
        const double first = phaseAt(48'000);
        const double last = phaseAt(source->length() - 528'000);
        const double seconds = static_cast<double>(source->length() - 576'000) / 48000.0;
        EXPECT_NEAR((last - first) / seconds, 0.0, 1e-9) << frequency;
        EXPECT_NEAR(first, 0.0, 1e-6) << frequency;
    }
}

TEST(RateConvertedSource, ConvertsABlockOnceAndTriesAFailedOneAgain) {
    const auto inner = std::make_shared<ScriptedSource>(10000000);
    EXPECT_EQ(convertedTo(inner, 48000, 48000), inner);
    const auto source = convertedTo(inner, 44100, 48000);
    EXPECT_EQ(source->exclusiveResource(), inner.get());
    inner->fails = true;
    EXPECT_THAT([&] { read(*source, 0, 1); }, testing::ThrowsMessage<std::runtime_error>("the tape is torn"));
    inner->fails = false;
    // Twice the reach of the filters for each block, at most three blocks in vain.
    constexpr std::int64_t once = 100 * 65536 * 147 / 160 * 21 / 20 + 3 * 30000;
    for (std::int64_t segment = 0; segment < 100; ++segment)
        EXPECT_NEAR(read(*source, segment * 65536, 65536)[40000], 0.25F, 1e-6F);
    EXPECT_LT(inner->readSamples, once);
    for (std::int64_t segment = 165; segment > 65; --segment)
        read(*source, segment * 65536, 65536);
    EXPECT_LT(inner->readSamples, 2 * once);
}

TEST(RateConvertedSource, LosesNoBlockBeforeTheOneThatFails) {
    const auto inner = std::make_shared<ScriptedSource>(10000000);
    inner->tornAt = 5000000;
    const auto source = convertedTo(inner, 44100, 48000);
    // The last block whose filters reach no further.
    const std::int64_t end = (inner->tornAt - 500) * 160 / 147 / 32640 * 32640;
    for (std::int64_t position = 0; position < end; position += 32640)
        EXPECT_NO_THROW(read(*source, position, 32640)) << position;
    EXPECT_THROW(read(*source, end, 32640), std::runtime_error);
}

TEST(RateConvertedSource, RefusesRatesOutOfRangeByName) {
    for (const auto& [inRate, outRate] : {std::pair{0, 48000}, {44100, -1}, {999, 48000}, {48000, 768001}})
        EXPECT_THAT(([inRate = inRate, outRate = outRate] { converted(noise(1), inRate, outRate); }),
                    testing::ThrowsMessage<std::invalid_argument>(
                        testing::StartsWith("cannot convert from " + std::to_string(inRate) + " Hz to " +
                                            std::to_string(outRate) + " Hz: ")));
}

TEST(ScaledSource, LosesNoBit) {
    const auto inner = std::make_shared<MemorySource>(noise(1000));
    const auto down = std::make_shared<ScaledSource>(inner, -20);
    EXPECT_EQ(read(*down, 7, 1)[0], read(*inner, 7, 1)[0] / 1048576.0F);
    ScaledSource upAgain(down, 20);
    EXPECT_EQ(read(upAgain, 0, 1000), read(*inner, 0, 1000));
}

} // namespace
} // namespace audlmd::test

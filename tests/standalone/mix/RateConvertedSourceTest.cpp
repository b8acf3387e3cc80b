#include "standalone/mix/RateConvertedSource.hpp"

#include "standalone/mix/ScaledSource.hpp"
#include "tools/sound/SineFit.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <soxr.h>

#include <cmath>
#include <numbers>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

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

std::vector<float> singleRun(std::vector<float> input, int inRate, int outRate, std::size_t length) {
    input.resize(input.size() + 10000);
    std::vector<float> output(length);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, SOXR_HI_PREC_CLOCK);
    std::size_t done = 0;
    soxr_oneshot(inRate, outRate, 1, input.data(), input.size(), nullptr, output.data(), length, &done,
                 nullptr, &quality, nullptr);
    EXPECT_EQ(done, length);
    return output;
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
        const std::vector<float> input = noise(150000.0 * inRate / outRate);
        const auto source = converted(input, inRate, outRate);
        const std::vector<float> whole = read(*converted(input, inRate, outRate), 0, source->length());
        EXPECT_THAT(whole, testing::Pointwise(testing::FloatNear(tolerance),
                                              singleRun(input, inRate, outRate, whole.size())));

        const auto readBackwardsInParts = [&](unsigned int seed) {
            std::mt19937 random(seed);
            for (std::int64_t position = source->length() - 1; position >= 0; position -= random() % 40000) {
                const std::vector<float> part = read(*source, position, random() % 70000);
                EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + position)) << position;
            }
        };
        std::vector<std::jthread> threads;
        for (const unsigned int seed : {1U, 2U, 3U})
            threads.emplace_back(readBackwardsInParts, seed);
    }
}

/// What a sine of full scale becomes, without the beginning and the end.
std::vector<float> convertedTone(int inRate, int outRate, double hertz) {
    std::vector<float> tone(static_cast<std::size_t>(4000.0 / std::min(inRate, outRate) * inRate));
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] =
            static_cast<float>(std::sin(2.0 * std::numbers::pi * hertz / inRate * static_cast<double>(i)));
    const auto source = converted(std::move(tone), inRate, outRate);
    return read(*source, 1000 * static_cast<std::int64_t>(outRate) / std::min(inRate, outRate),
                source->length() / 2);
}

/// The root mean square, in dB below that of a sine of full scale.
double levelOf(const std::vector<float>& samples) {
    double squares = 0.0;
    for (const float sample : samples)
        squares += static_cast<double>(sample) * static_cast<double>(sample);
    return 10.0 * std::log10(2.0 * squares / static_cast<double>(samples.size()));
}

TEST(RateConvertedSource, KeepsTimeLevelAndPurityOfTones) {
    const int rates[] = {8000,  11025, 16000, 22050, 32000, 37800,  44056, 44099,
                         44100, 47952, 48000, 88200, 96000, 176400, 192000};
    for (const int inRate : rates)
        for (const int outRate : rates) {
            if (inRate == outRate)
                continue;
            SCOPED_TRACE(std::to_string(inRate) + " to " + std::to_string(outRate));
            const int lower = std::min(inRate, outRate);
            // A time error of a millionth of a sample of the lower rate leaves -122 dB.
            std::vector<float> tone = convertedTone(inRate, outRate, lower / 8.0);
            const std::int64_t skipped = 1000 * static_cast<std::int64_t>(outRate) / lower;
            for (std::size_t i = 0; i < tone.size(); ++i)
                tone[i] -=
                    static_cast<float>(std::sin(std::numbers::pi / 4.0 * lower / outRate *
                                                (static_cast<double>(i) + static_cast<double>(skipped))));
            EXPECT_LT(levelOf(tone), -125.0);

            const double high = 0.45 * lower;
            const auto fit =
                sound::fitSineOfKnownFrequency(convertedTone(inRate, outRate, high), high / outRate);
            EXPECT_NEAR(fit.amplitude, 1.0, 0.001);
            EXPECT_LT(fit.residual, 1e-7);
            if (inRate > 1.03 * outRate) {
                EXPECT_LT(levelOf(convertedTone(inRate, outRate, 0.51 * outRate)), -150.0);
            }
        }
}

/// Notes how often it is read, and fails when told to.
class ScriptedSource : public SampleSource {
public:
    explicit ScriptedSource(std::int64_t length) : length_(length) {}
    std::int64_t length() const override { return length_; }
    const void* exclusiveResource() const override { return this; }
    void read(std::int64_t, std::span<float> samples) override {
        if (fails)
            throw std::runtime_error("the tape is torn");
        ++reads;
        std::fill(samples.begin(), samples.end(), 0.25F);
    }

    bool fails = false;
    int reads = 0;

private:
    std::int64_t length_;
};

TEST(RateConvertedSource, RoundsTheLengthUp) {
    const std::tuple<std::int64_t, int, int, std::int64_t> cases[] = {
        {0, 44100, 48000, 0},
        {1, 44100, 48000, 2},
        {147, 44100, 48000, 160},
        {148, 44100, 48000, 162},
        {384, 384000, 1000, 1},
        {385, 384000, 1000, 2},
        {std::int64_t{1} << 53, 3000, 384000, std::int64_t{1} << 60}};
    for (const auto& [inLength, inRate, outRate, outLength] : cases) {
        const auto source = convertedTo(std::make_shared<ScriptedSource>(inLength), inRate, outRate);
        EXPECT_EQ(source->length(), outLength) << inLength << " samples, " << inRate << " to " << outRate;
        EXPECT_NO_THROW(read(*source, std::max<std::int64_t>(0, outLength - 3), 3));
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
    for (std::int64_t segment = 0; segment < 10; ++segment)
        EXPECT_NEAR(read(*source, segment * 65536, 65536)[40000], 0.25F, 1e-6F);
    EXPECT_EQ(inner->reads, 655360 / 32640 + 1);
}

TEST(RateConvertedSource, RefusesRatesOutOfRangeByName) {
    for (const auto& [inRate, outRate] : {std::pair{0, 48000}, {44100, -1}, {999, 48000}, {48000, 384001}})
        EXPECT_THAT(([inRate = inRate, outRate = outRate] { convertedTo(nullptr, inRate, outRate); }),
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

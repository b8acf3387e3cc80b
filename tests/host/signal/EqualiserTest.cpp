#include "host/signal/Equaliser.hpp"

#include "host/signal/BlockEqualiser.hpp"
#include "ole/Aud/MultiBandBiquadApplyingIterator.hpp"
#include "tests/host/signal/TestStrip.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace audlmd::test {
namespace {

/// The magnitude at a part of the sample rate, of bands in series: b(z) / a(z) of each section.
double responseOf(const std::vector<EqualiserBand>& bands, double frequency) {
    const std::complex<double> z1 = std::polar(1.0, -2.0 * std::numbers::pi * frequency);
    std::complex<double> response = 1.0;
    for (const EqualiserBand& band : bands) {
        const auto [b0, b1, b2, a1, a2] = sectionOf(band, 48000.0);
        response *= (b0 + z1 * (b1 + z1 * b2)) / (1.0 + z1 * (a1 + z1 * a2));
    }
    return std::abs(response);
}

/// The cookbook itself is in the model, which plays random timelines with bands.
TEST(Equaliser, HasTheResponseOfItsBandsFromAnImpulseThroughTheRenderer) {
    std::vector<float> impulse(1 << 15, 0.0F);
    impulse[0] = 0.5F;
    TestStrip strip(impulse);
    StripSettings settings = strip.settings();
    settings.sampleRate = 48000.0;
    settings.equaliser = {{BandKind::lowShelf, 120.0, -4.0, 0.7},
                          {BandKind::peak, 900.0, 6.0, 1.4},
                          {BandKind::highShelf, 9000.0, 3.0, 0.8},
                          {BandKind::highPass, 40.0, 0.0, 0.9},
                          {BandKind::lowPass, 16000.0}};
    const std::vector<float> response = strip.render(settings, 1000);
    for (double frequency = 20.0; frequency <= 20000.0; frequency *= 1.07) {
        std::complex<double> sum;
        for (std::size_t n = 0; n < response.size(); ++n)
            sum += static_cast<double>(response[n]) *
                   std::polar(2.0, -2.0 * std::numbers::pi * frequency / 48000.0 * static_cast<double>(n));
        ASSERT_NEAR(20.0 * std::log10(std::abs(sum)),
                    20.0 * std::log10(responseOf(settings.equaliser, frequency / 48000.0)), 0.01)
            << frequency;
    }
}

TEST(BlockEqualiser, FiltersAndRemembersAsSampleBySample) {
    Aud::Filter::MultiBandBiquad<5U> one;
    setBands(one,
             std::vector<EqualiserBand>{{BandKind::highPass, 60.0},
                                        {BandKind::peak, 900.0, -6.0, 1.2},
                                        {BandKind::peak, 3000.0, 9.0, 4.0},
                                        {BandKind::lowShelf, 200.0, 6.0},
                                        {BandKind::lowPass, 12000.0}},
             48000.0);
    Aud::Filter::MultiBandBiquad<5U> other = one;
    std::minstd_rand random(3);
    for (const float peak : {1.0F, 0.0F, 1e-32F, 1e35F, 0.5F})
        for (const std::size_t length : {1U, 31U, 32U, 33U, 1000U, 4096U}) {
            std::vector<float> block(length);
            for (float& sample : block)
                sample = peak * (static_cast<float>(random()) * 0x1p-30F - 1.0F);
            if (length == 1000U)
                block[500] = peak == 0.5F ? std::numeric_limits<float>::infinity() : -0.0F;
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

} // namespace
} // namespace audlmd::test

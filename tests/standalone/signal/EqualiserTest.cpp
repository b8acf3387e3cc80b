#include "standalone/signal/Equaliser.hpp"

#include "ole/Aud/MultiBandBiquadApplyingIterator.hpp"
#include "standalone/signal/BlockEqualiser.hpp"
#include "tests/standalone/signal/TestStrip.hpp"

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

constexpr double sampleRate = 48000.0;

using Complex = std::complex<double>;

struct Prototype {
    EqualiserBand band;
    /// The cookbook's analogue filter at s, with the square root `a` of its gain.
    Complex (*response)(Complex s, double a, double q) = nullptr;
};

const Prototype prototypes[] = {
    {{BandKind::lowShelf, 120.0, -4.0, 0.7},
     [](Complex s, double a, double q) {
         return a * (s * s + std::sqrt(a) / q * s + a) / (a * s * s + std::sqrt(a) / q * s + 1.0);
     }},
    {{BandKind::peak, 900.0, 6.0, 1.4},
     [](Complex s, double a, double q) { return (s * s + s * a / q + 1.0) / (s * s + s / a / q + 1.0); }},
    {{BandKind::highShelf, 9000.0, 3.0, 0.8},
     [](Complex s, double a, double q) {
         return a * (a * s * s + std::sqrt(a) / q * s + 1.0) / (s * s + std::sqrt(a) / q * s + a);
     }},
    {{BandKind::highPass, 40.0, 0.0, 0.9},
     [](Complex s, double, double q) { return s * s / (s * s + s / q + 1.0); }},
    {{BandKind::lowPass, 16000.0, 0.0, 0.70710678},
     [](Complex s, double, double q) { return 1.0 / (s * s + s / q + 1.0); }}};

/// Their bilinear transforms, evaluated without any coefficients.
double expectedDb(double frequency) {
    double sum = 0.0;
    for (const auto& [band, response] : prototypes) {
        const double warped = std::tan(std::numbers::pi * frequency / sampleRate) /
                              std::tan(std::numbers::pi * band.frequency / sampleRate);
        const Complex value = response({0.0, warped}, std::pow(10.0, band.gainDb / 40.0), band.q);
        sum += 20.0 * std::log10(std::abs(value));
    }
    return sum;
}

TEST(Equaliser, FollowsTheCookbookFromAnImpulseThroughTheRenderer) {
    std::vector<float> impulse(1 << 15, 0.0F);
    impulse[0] = 0.5F;
    TestStrip strip(impulse);
    StripSettings settings = strip.settings();
    for (const Prototype& prototype : prototypes)
        settings.equaliser.push_back(prototype.band);
    settings.sampleRate = sampleRate;
    const std::vector<float> response = strip.render(settings, 1000);
    for (double frequency = 20.0; frequency <= 20000.0; frequency *= 1.07) {
        Complex sum;
        for (std::size_t n = 0; n < response.size(); ++n)
            sum += static_cast<double>(response[n]) *
                   std::polar(1.0, -2.0 * std::numbers::pi * frequency / sampleRate * static_cast<double>(n));
        const double expected = expectedDb(frequency);
        ASSERT_NEAR(20.0 * std::log10(std::abs(sum) / 0.5), expected, 0.01) << frequency;
        ASSERT_NEAR(responseDb(settings.equaliser, frequency, sampleRate), expected, 1e-6) << frequency;
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

#include "standalone/signal/Equaliser.hpp"

#include "tests/standalone/signal/TestStrip.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
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

} // namespace
} // namespace audlmd::test

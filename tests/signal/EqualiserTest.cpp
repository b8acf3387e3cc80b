#include "standalone/signal/Equaliser.hpp"
#include "tests/signal/TestStrip.hpp"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <vector>

namespace audlmd {
namespace {

constexpr double sampleRate = 48000.0;

/// The bilinear transform of the cookbook's analogue prototypes, evaluated without any coefficients.
double prototypeDb(const EqualiserBand& band, double frequency) {
    const double warped = std::tan(std::numbers::pi * frequency / sampleRate) /
                          std::tan(std::numbers::pi * band.frequency / sampleRate);
    const std::complex<double> s(0.0, warped);
    const double a = std::pow(10.0, band.gainDb / 40.0);
    const std::complex<double> damping = s / band.q;
    const std::complex<double> shelf = std::sqrt(a) * damping;
    std::complex<double> h;
    switch (band.kind) {
    case BandKind::lowShelf:
        h = a * (s * s + shelf + a) / (a * s * s + shelf + 1.0);
        break;
    case BandKind::highShelf:
        h = a * (a * s * s + shelf + 1.0) / (s * s + shelf + a);
        break;
    case BandKind::peak:
        h = (s * s + damping * a + 1.0) / (s * s + damping / a + 1.0);
        break;
    case BandKind::highPass:
        h = s * s / (s * s + damping + 1.0);
        break;
    case BandKind::lowPass:
        h = 1.0 / (s * s + damping + 1.0);
        break;
    }
    return 20.0 * std::log10(std::abs(h));
}

const std::vector<EqualiserBand> bands{{BandKind::lowShelf, 120.0, -4.0, 0.7},
                                       {BandKind::peak, 900.0, 6.0, 1.4},
                                       {BandKind::highShelf, 9000.0, 3.0, 0.8},
                                       {BandKind::highPass, 40.0, 0.0, 0.9},
                                       {BandKind::lowPass, 16000.0, 0.0, 0.70710678}};

TEST(Equaliser, FollowsTheCookbookFromAnImpulseThroughTheRenderer) {
    std::vector<float> impulse(1 << 15, 0.0F);
    impulse[0] = 0.5F;
    test::TestStrip strip(impulse);
    StripSettings settings = strip.settings();
    settings.equaliser = bands;
    settings.sampleRate = sampleRate;
    const std::vector<float> response = strip.render(settings, 1000);
    ASSERT_EQ(response.size(), impulse.size());

    for (double frequency = 20.0; frequency <= 20000.0; frequency *= 1.07) {
        std::complex<double> sum;
        for (std::size_t n = 0; n < response.size(); ++n)
            sum += static_cast<double>(response[n]) *
                   std::polar(1.0, -2.0 * std::numbers::pi * frequency / sampleRate * static_cast<double>(n));
        double expected = 0.0;
        for (const EqualiserBand& band : bands)
            expected += prototypeDb(band, frequency);
        ASSERT_NEAR(20.0 * std::log10(std::abs(sum) / 0.5), expected, 0.01) << frequency;
        ASSERT_NEAR(responseDb(bands, frequency, sampleRate), expected, 1e-6) << frequency;
    }
}

TEST(Equaliser, PassesSamplesThroughUnchangedWhereABandIsAbsent) {
    Aud::Filter::MultiBandBiquad<5u> equaliser;
    setBands(equaliser, {}, sampleRate);
    Aud::Filter::Biquad& section = equaliser.band(4);
    for (const float x : {0.1F, -1.0F, 1e-40F, 3.4e38F, 0.0F}) {
        EXPECT_EQ(section.processSample(x), x);
        EXPECT_EQ(section.getLastProcessSampleResult(), x);
    }
}

TEST(Equaliser, RecoversFromASampleThatIsNotANumber) {
    Aud::Filter::Biquad section;
    section.setCoefficients(sectionOf(bands[0], sampleRate));
    section.processSample(std::numeric_limits<float>::infinity());
    EXPECT_EQ(section.processSample(0.0F), 0.0F);
    section.processSample(std::numeric_limits<float>::quiet_NaN());
    EXPECT_NE(section.processSample(0.5F), 0.0F);
}

TEST(Equaliser, RefusesBandsThatCannotBe) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const EqualiserBand& band :
         {EqualiserBand{BandKind::peak, 0.0}, EqualiserBand{BandKind::peak, 24000.0},
          EqualiserBand{BandKind::peak, nan}, EqualiserBand{BandKind::peak, 1000.0, nan},
          EqualiserBand{BandKind::peak, 1000.0, 1.0, 0.0}, EqualiserBand{BandKind::peak, 1000.0, 1.0, nan}})
        EXPECT_THROW(sectionOf(band, sampleRate), std::invalid_argument);
    EXPECT_THROW(sectionOf({}, 0.0), std::invalid_argument);
    Aud::Filter::MultiBandBiquad<5u> equaliser;
    EXPECT_THROW(setBands(equaliser, std::vector<EqualiserBand>(6), sampleRate), std::invalid_argument);
}

} // namespace
} // namespace audlmd

#include "host/signal/Equaliser.hpp"

#include "tests/host/signal/TestStrip.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
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

} // namespace
} // namespace audlmd::test

#include "host/signal/Equaliser.hpp"

#include <cmath>
#include <numbers>
#include <sstream>
#include <stdexcept>

namespace audlmd {
namespace {

using Coefficients = Aud::Filter::Biquad::Coefficients;

/// Throws std::invalid_argument with the words joined to one sentence; numbers have six digits there.
/// In hertz. Far beyond any sound, and far below where the angle of a band would overflow.
constexpr double highestDesignRate = 1e9;

template <class... Words>
[[noreturn]] void refuse(const Words&... words) {
    std::ostringstream sentence;
    (sentence << ... << words);
    throw std::invalid_argument(sentence.str());
}

/// The comparisons are written so that a NaN fails them.
void validate(const EqualiserBand& band, double sampleRate) {
    if (!(sampleRate > 0.0 && sampleRate <= highestDesignRate))
        refuse("an equaliser needs a sample rate above 0 and up to ", highestDesignRate, " Hz, not ",
               sampleRate);
    if (!(band.frequency > 0.0 && band.frequency < sampleRate / 2.0))
        refuse("the frequency of an equaliser band must be above 0 and below ", sampleRate / 2.0,
               " Hz, half the sample rate, not ", band.frequency);
    if (!(std::fabs(band.gainDb) <= mostBandGainDb))
        refuse("the gain of an equaliser band must be from ", -mostBandGainDb, " to ", mostBandGainDb,
               " dB, not ", band.gainDb);
    if (!(band.q >= leastBandQ && band.q <= mostBandQ))
        refuse("the Q of an equaliser band must be from ", leastBandQ, " to ", mostBandQ, ", not ", band.q);
}

} // namespace

// The names are the cookbook's: a is the square root of the gain, alpha half the bandwidth of the prototype,
// and slope the term that the two shelves share.
Coefficients sectionOf(const EqualiserBand& band, double sampleRate) {
    validate(band, sampleRate);

    const double w0 = 2.0 * std::numbers::pi * band.frequency / sampleRate;
    const double c = std::cos(w0);
    const double alpha = std::sin(w0) / (2.0 * band.q);
    const double a = std::pow(10.0, band.gainDb / 40.0);
    const double slope = 2.0 * std::sqrt(a) * alpha;

    // The sections of the renderer have no a0, so the other five are divided by a0 here.
    const auto normalised = [](double b0, double b1, double b2, double a0, double a1, double a2) {
        return Coefficients{b0 / a0, b1 / a0, b2 / a0, a1 / a0, a2 / a0};
    };
    switch (band.kind) {
    case BandKind::lowShelf:
        return normalised(a * ((a + 1.0) - (a - 1.0) * c + slope), 2.0 * a * ((a - 1.0) - (a + 1.0) * c),
                          a * ((a + 1.0) - (a - 1.0) * c - slope), (a + 1.0) + (a - 1.0) * c + slope,
                          -2.0 * ((a - 1.0) + (a + 1.0) * c), (a + 1.0) + (a - 1.0) * c - slope);
    case BandKind::highShelf:
        return normalised(a * ((a + 1.0) + (a - 1.0) * c + slope), -2.0 * a * ((a - 1.0) + (a + 1.0) * c),
                          a * ((a + 1.0) + (a - 1.0) * c - slope), (a + 1.0) - (a - 1.0) * c + slope,
                          2.0 * ((a - 1.0) - (a + 1.0) * c), (a + 1.0) - (a - 1.0) * c - slope);
    case BandKind::peak:
        return normalised(1.0 + alpha * a, -2.0 * c, 1.0 - alpha * a, 1.0 + alpha / a, -2.0 * c,
                          1.0 - alpha / a);
    case BandKind::highPass:
        return normalised((1.0 + c) / 2.0, -(1.0 + c), (1.0 + c) / 2.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha);
    case BandKind::lowPass:
        return normalised((1.0 - c) / 2.0, 1.0 - c, (1.0 - c) / 2.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha);
    }
    refuse("no such kind of equaliser band: ", static_cast<int>(band.kind));
}

void setBands(Aud::Filter::MultiBandBiquad<5U>& equaliser, std::span<const EqualiserBand> bands,
              double sampleRate) {
    if (bands.size() > equaliserBandCount)
        refuse("an equaliser has at most ", equaliserBandCount, " bands, not ", bands.size());
    for (unsigned int number = 0; number < equaliserBandCount; ++number) {
        Aud::Filter::Biquad& section = equaliser.band(number);
        // The default coefficients pass samples through.
        section.setCoefficients(number < bands.size() ? sectionOf(bands[number], sampleRate)
                                                      : Coefficients{});
        section.reset();
    }
}

void stepBack(Aud::Filter::MultiBandBiquad<5U>& equaliser) {
    for (unsigned int number = 0; number < equaliserBandCount; ++number)
        equaliser.band(number).stepBack();
}

} // namespace audlmd

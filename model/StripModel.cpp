#include "model/StripModel.hpp"

#include <libresample.h>
#include <soxr.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <utility>

namespace audlmd::model {
namespace {

using Samples = std::vector<double>;

/// The limit of the filtering converter where no setting says otherwise, in source samples per output sample.
constexpr double fastestFiltering = 6.0;

double ofDecibels(double decibels) {
    return std::pow(10.0, decibels / 20.0);
}

/// A console fader: decibels go with the eighth root of the travel, silent at 0, unity at 1.0, and 10 dB at
/// the end stop, 1.5, but for the -1 that makes the lower end silent.
double faderGain(double u) {
    const double exponent = std::log(ofDecibels(10.0)) / (std::pow(1.5, 0.125) - 1.0);
    return std::expm1(exponent * std::pow(std::clamp(u, 0.0, 1.5), 0.125)) / std::expm1(exponent);
}

/// Without a routing a single channel goes to the first two, several go one to one.
double routedGain(const TimelineStrip& strip, std::size_t channels, std::size_t channel, std::size_t bus) {
    if (strip.routing)
        return static_cast<double>(strip.routing->rows[bus][channel]);
    return bus == channel || (channels == 1 && bus == 1) ? 1.0 : 0.0;
}

/// On the straight line from the last node at or before the position to the first node behind the position.
double uValueAt(std::span<const LevelNode> nodes, std::int64_t position) {
    const auto next = std::ranges::upper_bound(nodes, position, {}, &LevelNode::position);
    if (next == nodes.begin())
        return static_cast<double>(nodes.front().uValue);
    const LevelNode& before = *std::prev(next);
    if (next == nodes.end())
        return static_cast<double>(before.uValue);
    const auto share = static_cast<double>(position - before.position) /
                       static_cast<double>(next->position - before.position);
    return std::lerp(static_cast<double>(before.uValue), static_cast<double>(next->uValue), share);
}

double fadeGain(FadeCurve curve, std::int64_t samplesFromSilence, std::uint64_t fadeSamples) {
    if (fadeSamples == 0)
        return 1.0;
    const double u =
        std::clamp(static_cast<double>(samplesFromSilence) / static_cast<double>(fadeSamples), 0.0, 1.0);
    switch (curve) {
    case FadeCurve::log:
        return faderGain(u);
    case FadeCurve::power:
        return std::sin(u * std::numbers::pi / 2.0);
    default:
        return u;
    }
}

/// Fades and automation at a sample of the range, counted in the order of delivery.
double levelAt(const StripSettings& settings, std::int64_t sample) {
    const std::int64_t range = settings.to - settings.from;
    const FadePlan& fade = settings.fade;
    double gain = fadeGain(fade.fadeInCurve, sample, fade.fadeInSamples) *
                  fadeGain(fade.fadeOutCurve, range - sample, fade.fadeOutSamples);
    if (settings.automation) {
        const bool forwards = settings.automation->direction == DynamicLevelDirection::forwards;
        const std::int64_t position = forwards ? sample : range - 1 - sample;
        gain *= faderGain(uValueAt(settings.automation->automation.nodes(), position));
    }
    return gain;
}

/// A polynomial in s, or in 1/z: the highest power of s first, the lowest power of 1/z first.
using Polynomial = std::array<double, 3>;

/// The analogue prototype of a band, after the cookbook that audlmd::sectionOf() names. The frequency is 1.
std::pair<Polynomial, Polynomial> prototypeOf(const EqualiserBand& band) {
    const double a = std::pow(10.0, band.gainDb / 40.0);
    const double width = 1.0 / band.q;
    const double shelf = std::sqrt(a) * width;
    switch (band.kind) {
    case BandKind::lowShelf:
        return {{a, a * shelf, a * a}, {a, shelf, 1.0}};
    case BandKind::highShelf:
        return {{a * a, a * shelf, a}, {1.0, shelf, a}};
    case BandKind::highPass:
        return {{1.0, 0.0, 0.0}, {1.0, width, 1.0}};
    case BandKind::lowPass:
        return {{0.0, 0.0, 1.0}, {1.0, width, 1.0}};
    default:
        return {{1.0, width * a, 1.0}, {1.0, width / a, 1.0}};
    }
}

/// A band as a direct form I in double precision.
class Band {
public:
    /// s becomes (1 - 1/z) / (1 + 1/z) over the tangent of half the frequency.
    Band(const EqualiserBand& band, double sampleRate) {
        const double k = 1.0 / std::tan(std::numbers::pi * band.frequency / sampleRate);
        const auto inZ = [k](const Polynomial& s) {
            const double square = s[0] * k * k;
            return Polynomial{square + s[1] * k + s[2], 2.0 * (s[2] - square), square - s[1] * k + s[2]};
        };
        const auto [zeros, poles] = prototypeOf(band);
        zeros_ = inZ(zeros);
        poles_ = inZ(poles);
    }

    double filter(double x) {
        const double y =
            (zeros_[0] * x + zeros_[1] * x_[0] + zeros_[2] * x_[1] - poles_[1] * y_[0] - poles_[2] * y_[1]) /
            poles_[0];
        x_ = {x, x_[0]};
        y_ = {y, y_[0]};
        return y;
    }

private:
    Polynomial zeros_{};
    Polynomial poles_{};
    std::array<double, 2> x_{};
    std::array<double, 2> y_{};
};

/// What the converter is given: so many samples of the range from `first` on, in the order of delivery, with
/// equaliser and levels. The equaliser starts from silence.
Samples delivered(const StripSettings& settings, const Samples& material, double sampleRate,
                  std::int64_t first, std::int64_t count) {
    std::vector<Band> bands;
    for (const EqualiserBand& band : settings.equaliser)
        bands.emplace_back(band, sampleRate);
    Samples samples;
    for (std::int64_t sample = first; sample < first + count; ++sample) {
        const std::int64_t position =
            (settings.reverse ? settings.to - 1 - sample : settings.from + sample).number();
        const bool isThere = 0 <= position && position < std::ssize(material);
        double x = isThere ? material[static_cast<std::size_t>(position)] : 0.0;
        for (Band& band : bands)
            x = band.filter(x);
        samples.push_back(x * levelAt(settings, sample));
    }
    return samples;
}

/// The units in which the converters count positions.
constexpr std::int64_t unitsPerSample = (std::int64_t{1} << 30) - 1;

/// One output per step, from straight lines between samples. The step is the nearest whole number of units.
template <class Deliver>
Samples playedByLines(double speed, std::int64_t skip, std::int64_t count, const Deliver& deliver) {
    const std::int64_t step = std::llround(speed * static_cast<double>(unitsPerSample));
    const std::int64_t first = skip * step / unitsPerSample;
    const Samples input = deliver(first, (skip + count) * step / unitsPerSample + 2 - first);
    Samples output;
    for (std::int64_t n = skip; n < skip + count; ++n) {
        const auto left = static_cast<std::size_t>(n * step / unitsPerSample - first);
        const auto weight = static_cast<double>(n * step % unitsPerSample) / double{unitsPerSample};
        output.push_back(std::lerp(input[left], input[left + 1], weight));
    }
    return output;
}

/// The resampler starts from silence, at the whole sample that is nearest to the first output. The calls are
/// those of the converter's contract: one output at a time, from blocks of 64 samples, and the first call at
/// the factor of an offset of one step. Other calls would round times otherwise; libresample does not
/// interpolate its table of the filter, so that the last bit of a time can be worth 7e-4 of full scale.
template <class Deliver>
Samples playedByFilter(double speed, std::int64_t skip, std::int64_t count, const Deliver& deliver) {
    constexpr int block = 64;
    constexpr double farBeyondAnyFilter = 1000.0;
    const auto speedInForce = static_cast<double>(static_cast<float>(speed));
    const Samples exact = deliver(
        std::llround(static_cast<double>(skip) * speedInForce),
        std::llround((static_cast<double>(count) + farBeyondAnyFilter) * std::max(speedInForce, 1.0)));
    std::vector<float> input(exact.begin(), exact.end());
    const std::unique_ptr<void, void (*)(void*)> resampler(resample_open(0, 1.0 / fastestFiltering, 1024.0),
                                                           resample_close);
    const double whole = std::floor(speedInForce);
    const double units = std::round((speedInForce - whole) * double{unitsPerSample});
    double factor = 1.0 / (whole + units / double{unitsPerSample});
    int taken = 0;
    float sample = 0.0F;
    Samples output;
    while (std::ssize(output) < count) {
        int used = 0;
        resample_process(resampler.get(), factor, &input[static_cast<std::size_t>(taken)],
                         block - taken % block, 0, &used, &sample, 1);
        taken += used;
        output.push_back(static_cast<double>(sample));
        factor = 1.0 / speedInForce;
    }
    return output;
}

/// A channel of a medium at the rate of the output, in one run over all of it.
Samples atRate(const std::vector<float>& channel, int inRate, int outRate) {
    Samples input(channel.begin(), channel.end());
    if (inRate == outRate)
        return input;
    const auto length =
        (std::ssize(channel) * std::int64_t{outRate} + std::int64_t{inRate} - 1) / std::int64_t{inRate};
    // Silence behind the end drives the last samples out of the filter.
    input.resize(input.size() + 10000);
    Samples output(static_cast<std::size_t>(length));
    const soxr_io_spec_t doubles = soxr_io_spec(SOXR_FLOAT64_I, SOXR_FLOAT64_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, SOXR_HI_PREC_CLOCK);
    soxr_oneshot(inRate, outRate, 1, input.data(), input.size(), nullptr, output.data(), output.size(),
                 nullptr, &doubles, &quality, nullptr);
    return output;
}

/// So many outputs, from number `skip` on.
Samples played(const StripSettings& settings, const Samples& material, int sampleRate, std::int64_t skip,
               std::int64_t count) {
    const auto deliver = [&](std::int64_t first, std::int64_t most) {
        return delivered(settings, material, sampleRate, first, most);
    };
    switch (settings.converter) {
    case Converter::linear:
        return playedByLines(settings.speed, skip, count, deliver);
    case Converter::filtering:
        return playedByFilter(settings.speed, skip, count, deliver);
    default:
        return deliver(skip, count);
    }
}

} // namespace

TimelineSpan addStrip(const TimelineStrip& strip, const Medium& medium, int sampleRate, TimelineSample from,
                      Output& output) {
    const StripSettings& settings = strip.settings;
    const auto outputs = static_cast<std::int64_t>(
        std::ceil(static_cast<double>(settings.to - settings.from) / settings.speed));
    const std::int64_t count = std::clamp<std::int64_t>(outputs - strip.skip, 0, strip.length);
    if (count == 0)
        return {.from = strip.at, .to = strip.at};
    for (std::size_t channel = 0; channel < medium.channels.size(); ++channel) {
        const Samples samples =
            played(settings, atRate(medium.channels[channel], medium.sampleRate, sampleRate), sampleRate,
                   strip.skip.number(), count);
        for (std::size_t bus = 0; bus < output.size(); ++bus) {
            const double gain =
                ofDecibels(strip.gainDb) * routedGain(strip, medium.channels.size(), channel, bus);
            for (std::int64_t n = std::max<std::int64_t>(from - strip.at, 0);
                 n < std::min<std::int64_t>(count, from + std::ssize(output[bus]) - strip.at); ++n)
                output[bus][static_cast<std::size_t>(strip.at + n - from)] +=
                    samples[static_cast<std::size_t>(n)] * gain;
        }
    }
    return {.from = strip.at, .to = strip.at + count};
}

} // namespace audlmd::model

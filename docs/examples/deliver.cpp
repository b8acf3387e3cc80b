#include "sounds.hpp"
#include <host/deliver/Delivery.hpp>
#include <host/deliver/DeliveryGain.hpp>
#include <host/deliver/Loudness.hpp>
#include <host/deliver/ProgrammeMeter.hpp>
#include <host/deliver/WaveformPeaks.hpp>
#include <ole/Aud/SampleFormats.hpp>

#undef NDEBUG
#include <array>
#include <cassert>
#include <cstdio>

using namespace audlmd;

int main() {
    const std::vector<float> samples = tone(480000); // ten seconds
    const std::array<std::span<const float>, 1> channels{samples};

    //! [delivery]
    std::vector<Aud::SampleS16> words(samples.size());
    storeBlock<Aud::SampleS16>(samples, words.data(), Rounding::dithered, {.channel = 0, .position = 0});

    std::vector<float> more(100, 0.25F);
    addBlock<Aud::SampleS16>(more, words.data(), Rounding::nearest, {.channel = 0, .position = 0});
    assert(more[0] > 0.24F && more[0] < 0.26F); // the sums, before they were rounded
    //! [delivery]

    //! [loudness]
    LoudnessMeter meter(usualLayout(1), 48000);
    meter.add(channels);
    std::printf("%.1f LUFS, range %.1f LU, at most %.1f LUFS over 3 s\n", *meter.integrated(), *meter.range(),
                *meter.highest(LoudnessMeter::Window::shortTerm));
    assert(meter.truePeak(0) > 0.49 && meter.course(LoudnessMeter::Window::momentary).size() == 97);
    //! [loudness]

    //! [programme]
    ProgrammeMeter all(usualLayout(1), 48000, ProgrammeMeter::Loudness::measured);
    all.add(channels);
    const ProgrammeLevels levels = all.levels();
    assert(std::abs(levels.samplePeak - -6.02) < 0.01 && std::abs(*levels.integrated - *meter.integrated()) < 0.01);
    assert(std::abs(*levels.louderBy(3.0).integrated - (*levels.integrated + 3.0)) < 1e-9);
    //! [programme]

    //! [gain]
    // To -23 LUFS, unless that takes a true peak over -1 dB.
    const DeliveryGain gain =
        deliveryGain(levels, {.loudness = -23.0, .samplePeak = {}, .mostTruePeak = -1.0, .mostSamplePeak = {}});
    if (gain.limit == DeliveryGain::Limit::none)
        std::printf("%+.2f dB\n", gain.wanted);
    else
        std::printf("%+.2f dB are wanted, %+.2f dB possible\n", gain.wanted, gain.possible);
    //! [gain]

    //! [peaks]
    WaveformPeaks peaks(1, 48000, 512, 8);
    peaks.add(channels);
    std::printf("%zu bytes for a player in a page\n", peaks.json().size());
    assert(peaks.binary().size() == 24 + 2 * 938);
    //! [peaks]
}

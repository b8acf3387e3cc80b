#include "sounds.hpp"
#include <host/cache/MaterialCache.hpp>
#include <host/services/Identities.hpp>
#include <host/signal/BestConverter.hpp>
#include <host/signal/GainLaws.hpp>
#include <host/signal/RecordNumbers.hpp>
#include <host/signal/Speed.hpp>
#include <host/signal/StripPlayer.hpp>
#include <host/signal/Unclipped.hpp>
#include <host/signal/VectorWidth.hpp>

#undef NDEBUG
#include <array>
#include <cassert>
#include <cstdio>

using namespace audlmd;

static void play(MaterialCache& cache, const Cookie& cookie) {
    //! [player]
    StripSettings settings{.cookie = cookie, .from = 12000, .to = 36000, .reverse = true};
    settings.fade.fadeOutSamples = 4800;
    settings.middleLevel = static_cast<float>(mixerStyleUValueOfDecibels(-6.0));
    settings.converter = Converter::linear;
    settings.speed = 2.0; // an octave higher

    StripPlayer player(cache, settings);
    std::vector<std::int16_t> whole(player.outputLength()); // 12,000
    player.render(whole);

    player.seek(6000); // fades and levels stay where the range has them
    std::vector<std::int16_t> second(6000);
    player.render(second);
    assert(std::equal(second.begin(), second.end(), whole.begin() + 6000));
    assert(player.render(second) == 0); // behind the end
    //! [player]

    //! [record]
    player.seek(0);
    for (const RecordNumber& number : player.recordNumbers()) // for a bug report, say
        std::printf("%s: %s\n", number.name.c_str(), number.value.c_str());
    //! [record]

    //! [other formats]
    player.seek(0);
    std::vector<Aud::SampleS24> packed(player.outputLength());
    Aud::SampleS24* out = packed.data();
    player.render(out, packed.size());
    assert(out == packed.data() + packed.size());
    //! [other formats]
}

static void plan() {
    //! [plan]
    StripSettings settings{.from = 1000, .to = 11000, .reverse = true};
    settings.converter = Converter::linear;
    settings.speed = 0.5;
    const StripPlan plan(settings); // needs neither cache nor library
    assert(plan.outputLength == 20000);
    assert(plan.inMaterial(0).number() == 10999);              // heard first
    requirePosition(plan.inMaterial(0).number(), "the strip"); // throws where a position is beyond farthestPosition
    //! [plan]

    //! [clocks]
    const RangeSample heard = 250;                      // of the range, in the order in which it is heard
    const MaterialSample read = plan.inMaterial(heard); // of the material
    assert(read == MaterialSample(10749) && plan.inRange(read) == heard);
    const MaterialSpan range{1000, 11000};
    assert(range.length() == 10000 && !range.isEmpty());
    // heard = read; does not compile: the clocks differ.
    //! [clocks]
}

static void fade() {
    //! [fade]
    const FadePlan plan{.fadeInSamples = 480, .fadeOutSamples = 960, .fadeOutCurve = FadeCurve::power};
    const FadeEnvelope fade(plan, 48000);
    assert(fade.uValueAt(240) == 0.5 && fade.gainAt(24000) == 1.0);
    assert(fade.gainAt(47520) == gainOf(FadeCurve::power, 0.5)); // 3 dB down in the middle
    const FadeEnvelope::Placement there = fade.at(100);          // for a render call that begins there
    assert(there.end > RangeSample(100) && there.parameters.type == Aud::Render::eRampHoldRamp);
    //! [fade]
}

static void equalise() {
    //! [equaliser]
    const std::vector<EqualiserBand> bands{{.kind = BandKind::highPass, .frequency = 80.0},
                                           {.kind = BandKind::peak, .frequency = 1000.0, .gainDb = 3.0, .q = 0.7}};
    Aud::Filter::MultiBandBiquad<5U> equaliser;
    setBands(equaliser, bands, 48000.0);
    const float first = equaliser.processSample(1.0F);
    assert(equaliser.getLastProcessSampleResult() == first);
    stepBack(equaliser); // as if the sample had not been filtered
    assert(equaliser.processSample(1.0F) == first);
    assert(sectionOf(bands[0], 48000.0).b0 < 1.0); // the coefficients of one band
    //! [equaliser]
}

static void automate() {
    //! [automation]
    // From silence to full level over a second, and down by a jump behind it.
    const Automation level({{0, 0.0F}, {48000, 1.0F}, {96000, 1.0F}, {96000, 0.5F}});
    assert(level.uValueAt(-1) == 0.0F && level.uValueAt(48000) == 1.0F && level.uValueAt(96000) == 0.5F);

    Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState state;
    level.place(state, 24000, DynamicLevelDirection::forwards); // before the first sample of a render call
    assert(state.uValue == level.uValueAt(24000) && state.samplesToNextNode > 0);
    //! [automation]

    //! [pieces]
    // What the renderer asks for where a piece has run out.
    loadNextPiece(state, DynamicLevelDirection::forwards);
    assert(levelAt(level.nodes(), 48000) * static_cast<double>(automationGrid) == 1.0);
    //! [pieces]
}

static void levels() {
    //! [gain laws]
    assert(std::abs(gainOfDecibels(-6.0) - 0.501) < 1e-3 && std::abs(decibelsOfGain(2.0) - 6.02) < 1e-2);
    assert(mixerStyleGain(1.0) == 1.0 && mixerStyleGain(0.0) == 0.0);
    const double fader = mixerStyleUValueOfDecibels(-16.0); // about the middle of the travel
    assert(std::abs(fader - 0.5) < 0.01 && std::abs(mixerStyleUValue(mixerStyleGain(fader)) - fader) < 1e-9);
    assert(std::abs(constantPowerGain(0.5) - std::sqrt(0.5)) < 1e-12);
    const AmplifiedLevel loud = amplifiedLevelOf(20.0); // beyond the end stop
    assert(loud.doublings > 0);
    //! [gain laws]
}

static void speeds() {
    //! [speed]
    requireSpeed(1.5); // throws std::invalid_argument for what is no speed
    assert(isSpeed(1.5) && !isSpeed(0.0) && isFilteringSpeed(0.25) && filteringSpeedInForce(1e-6) == 1.0 / 1024.0);
    requireFilteringSpeed(0.25);
    //! [speed]

    //! [positions]
    const Aud::SubSamplePos step = subSamplePosOf(1.5), start(0, 0);
    const Aud::SubSamplePos far = advanced(start, step, 1000); // 1,500: no rounding adds up
    assert(std::abs(sourceSamplesOf(far) - 1500.0) < 1e-5);
    assert(positionsUpTo(far, start, step) == 1001 && stepsToWholePosition(start, step) >= 1);
    //! [positions]

    //! [best]
    StripSettings strip;
    strip.to = 48000;
    strip.converter = Converter::best;
    strip.speed = 1.5;
    assert(!whyNotBest(strip));
    const StripSettings plain = atNormalSpeed(strip); // for the material that materialAtNormalSpeed() reads
    assert(plain.converter == Converter::none && plain.speed == 1.0 && plain.to - plain.from == 32000);
    //! [best]
}

static void convert() {
    //! [unclipped]
    std::vector<float> samples{0.25F, -0.5F, 2.0F}; // as a chain delivers them, not clipped
    std::array<Aud::SampleS16, 3> words{};
    Aud::SampleS16* out = words.data();
    convertBlock(samples.data(), samples.size(), out); // 8192, -16384, 32767

    std::array<float, 3> sums{0.25F, 0.25F, 0.25F};
    addStored(words.data(), sums); // what is in the buffer, added: what a sum would store
    assert(sums[0] == 0.5F && sums[1] == -0.25F);
    //! [unclipped]

    //! [deliver]
    std::array<float, 2> buffer{};
    Unclipped place{buffer.data()};
    deliver(2.0F, place);
    assert(buffer[0] == 2.0F && place.position == buffer.data() + 1);
    //! [deliver]

    //! [vectors]
    const int widest = vectorBits(); // 256 on a processor with AVX2
    useVectors(0);                   // is the fault that of one width?
    assert(vectorBits() == 0);
    useVectors(widest);
    //! [vectors]
}

int main() {
    MaterialCache cache;
    const Cookie cookie{.material = makeUuid()};
    cache.add(cookie, std::make_shared<MemorySource>(tone(48000)));
    play(cache, cookie);
    plan();
    fade();
    equalise();
    automate();
    levels();
    speeds();
    convert();
}

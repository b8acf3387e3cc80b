#include "sounds.hpp"
#include <host/cache/MaterialCache.hpp>
#include <host/services/Identities.hpp>
#include <host/signal/Automation.hpp>
#include <host/signal/Equaliser.hpp>
#include <ole/Aud/Aud__RenderIterators>
#include <ole/Orv/OrvModeMeta>

#include <libresample.h>

#undef NDEBUG
#include <cassert>
#include <cstdio>
#include <cstring>

using namespace Aud::Render;

//! [layer]
/// A layer of one's own: turns the polarity.
template <WrappableLayer Inner>
class Turned {
public:
    explicit Turned(const Inner& inner) : inner_(inner) {}
    float operator*() const { return -*inner_; }
    Turned& operator++() {
        ++inner_;
        return *this;
    }
    const Inner& inner() const { return inner_; }

private:
    Inner inner_;
};
//! [layer]

static void shape(const Aud::SampleCache::ForwardIterator& source) {
    //! [fixed]
    const NullIterator unfiltered(source);
    FixedLevelApplyingIterator level(unfiltered, 1.0F); // a u-value: 1 is full level
    assert(level.gain() == 1.0F && *level == *source);
    ++level;
    assert(sourceOf(level).position() == source.position() + 1);
    static_assert(ChainLayer<Turned<NullIterator<Aud::SampleCache::ForwardIterator>>>);
    //! [fixed]

    //! [envelope]
    // A fade-in over 100 samples, of which 50 are past.
    EnvelopeParameters fade{};
    fade.elapsed = 50;
    fade.type = eRampHold;
    fade.oneRamp = {.step = 0.01F, .length = 100, .curveType = Aud::GainCurve::eLinear, .unused = {}};
    using FadeIn = EnvelopeTraits::RampHold;
    auto faded = EnvelopeApplyingIteratorMaker<Aud::SampleCache::ForwardIterator, FadeIn>::make(source, fade);
    assert(*faded == 0.5F * *source && faded.envelope().phase().length == 50);
    fade.type = eHoldRamp; // not what the mode says
    try {
        EnvelopeApplyingIteratorMaker<Aud::SampleCache::ForwardIterator, FadeIn>::make(source, fade);
        assert(false);
    } catch (const Orv::Exception::RuntimeError& error) {
        std::printf("%s (%s:%d)\n", error.message(), error.file(), error.line());
    }
    //! [envelope]

    //! [curves]
    using MixerStyle = Aud::GainCurve::Curve<Aud::GainCurve::eMixerStyleLog>;
    assert(MixerStyle::mapUValueToMagnitude(0.0F) == 0.0F && MixerStyle::mapUValueToMagnitude(0.5F) < 0.2F);
    assert(EnvelopeTraits::resolveCurve(Aud::GainCurve::eLinear)(0.5F) == 0.5F);
    //! [curves]

    //! [dynamic]
    const audlmd::Automation nodes({{0, 0.0F}, {100, 1.0F}});
    Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState walk;
    nodes.place(walk, 0, audlmd::DynamicLevelDirection::forwards);
    Aud::DynamicLevelControl::ForwardsDynamicLevelApplyingIterator automated(source, walk);
    for (int sample = 0; sample < 100; ++sample)
        ++automated;
    assert(walk.uValue == 1.0F); // the state is the host's: the next call goes on from there
    //! [dynamic]

    //! [equaliser]
    Aud::Filter::MultiBandBiquad<5U> bands;
    audlmd::setBands(bands, {}, 48000.0); // five sections that pass samples through
    bands.processSample(*source);         // primed with the first sample
    MultiBandBiquadApplyingIterator filtered(source, &bands);
    assert(*filtered == *source);
    ++filtered;
    //! [equaliser]
}

static void convert(const Aud::SampleCache::ForwardIterator& source) {
    //! [linear]
    LinearSRCIterator slow(source, Aud::zeroSubSamplePos,
                           Aud::SubSamplePos(0, Aud::SubSamplePos::fractionsPerSample / 2));
    const float first = *slow;
    ++slow; // half a sample on: between the first two
    assert(first == *source);
    //! [linear]

    //! [filtering]
    FilteringSRCState stream; // of the host, for as long as the stream goes on
    {
        FilteringSRCIterator twice(source, &stream, Aud::zeroSubSamplePos, 2.0F);
        for (int output = 0; output < 100; ++output)
            ++twice;
    }
    assert(stream.positionRecorded != 0 && stream.nextSourcePos > source.position()); // where the next call reads
    resample_close(stream.handle);                                                    // the host closes it
    //! [filtering]

    //! [position]
    Aud::SubSamplePos position(10, 0);
    position += Aud::SubSamplePos(2, Aud::SubSamplePos::fractionsPerSample - 1);
    assert(position > Aud::SubSamplePos(12, 0) && position < Aud::SubSamplePos(13, 0));
    assert(Aud::wrappingSum(0x7FFFFFFF, 1) == -0x7FFFFFFF - 1);
    assert(Aud::Instructions::clip(2.0F, -1.0F, 1.0F) == 1.0F);
    //! [position]
}

static void store() {
    //! [encoding]
    Aud::SampleS16 word{};
    Aud::SampleEncoding<Aud::SampleS16>::store(0.5F, word); // 16384
    assert(Aud::SampleEncoding<Aud::SampleS16>::load(word) == 0.5F);
    //! [encoding]

    //! [summing]
    Aud::SampleS16 words[2] = {word, word};
    SummingOutputSampleIterator<Aud::SampleS16*> sum(words);
    deliver(0.25F, sum); // to what is there, and on to the next
    assert(Aud::SampleEncoding<Aud::SampleS16>::load(words[0]) == 0.75F && sum.position() == words + 1);
    //! [summing]
}

static void despatch() {
    //! [despatcher]
    using Table = Orv::ModeMetaHelpers2::Despatcher<void (*)(), struct MyTag>;
    Table table;
    table.registerFunction(3, [] {});
    assert(table.size() == 4 && table.find(3) != nullptr && table.find(2) == nullptr && table.find(99) == nullptr);
    try {
        table.registerFunction(3, [] {}); // taken
        assert(false);
    } catch (const Orv::Exception::Base& error) {
        assert(std::strcmp(error.typeName(), "RuntimeError") == 0 && error.line() > 0);
    }
    //! [despatcher]
}

int main() {
    audlmd::MaterialCache cache;
    const Cookie cookie{.material = audlmd::makeUuid()};
    cache.add(cookie, std::make_shared<audlmd::MemorySource>(tone(48000)));
    const Aud::SampleCache::ForwardIterator source(cookie, 100, true, cache, 0, false, {});
    shape(source);
    convert(source);
    store();
    despatch();
}

#pragma once

#include "ole/Aud/ChainLayer.hpp"
#include "ole/Aud/EnvelopeTraits.hpp"

namespace Aud::Render {

/// Multiplies every sample by the gain of a fade. `Traits` is the shape of the fade, one of EnvelopeTraits.
///
/// The fade counts samples delivered through this layer, not positions in the material. The first sample has
/// the gain of the step at which the shape was placed. A converter further out advances the fade once per
/// source sample that it pulls. In a reverse chain the fade still runs in the order of delivery.
/// \snippet chain.cpp envelope
template <WrappableLayer Inner, class Traits>
class EnvelopeApplyingIterator {
public:
    using Shape = Traits;

    EnvelopeApplyingIterator(const Inner& inner, const Traits& envelope)
        : inner_(inner), envelope_(envelope) {}

    /// Reads the sample first, then computes the gain.
    [[gnu::always_inline]] float operator*() const {
        const float sample = *inner_;
        return envelope_.gain() * sample;
    }

    /// Steps the layer below first, then the fade.
    [[gnu::always_inline]] EnvelopeApplyingIterator& operator++() {
        ++inner_;
        envelope_.advance();
        return *this;
    }

    const Inner& inner() const { return inner_; }
    Traits& envelope() { return envelope_; }

private:
    Inner inner_;
    Traits envelope_;
};

/// Makes the envelopes of stored shape (ramp-hold, hold-ramp, ramp-hold-ramp), whose parameters are
/// validated. The simple ramps are constructed directly.
///
/// Throws Orv::Exception::RuntimeError, before anything is copied, first if the parameters are of another
/// type than `Traits`, then if a curve type is none of eCurveType.
/// \snippet chain.cpp envelope
template <WrappableLayer Inner, class Traits>
struct EnvelopeApplyingIteratorMaker {
    [[gnu::used, gnu::noinline]] static EnvelopeApplyingIterator<Inner, Traits>
    make(const Inner& inner, const EnvelopeParameters& params) {
        return EnvelopeApplyingIterator<Inner, Traits>(inner, Traits(params));
    }
};

} // namespace Aud::Render

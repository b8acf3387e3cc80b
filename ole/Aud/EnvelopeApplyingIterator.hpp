#pragma once

#include "ole/Aud/ChainLayer.hpp"
#include "ole/Aud/EnvelopeTraits.hpp"

namespace Aud::Render {

/// Multiplies every sample by the gain of a fade, whose shape is `Traits`.
///
/// The fade counts samples delivered through this layer, not positions: the first sample carries the gain of
/// the step at which the shape was placed, and a converter further out advances it once per sample that it
/// pulls.
template <WrappableLayer Inner, class Traits>
class EnvelopeApplyingIterator {
public:
    using Shape = Traits;

    EnvelopeApplyingIterator(const Inner& inner, const Traits& envelope)
        : inner_(inner), envelope_(envelope) {}

    /// The sample is read before the gain is computed.
    [[gnu::always_inline]] float operator*() const {
        const float sample = *inner_;
        return envelope_.gain() * sample;
    }

    [[gnu::always_inline]] EnvelopeApplyingIterator& operator++() {
        ++inner_;
        envelope_.advance();
        return *this;
    }

    const Inner& inner() const { return inner_; }

private:
    Inner inner_;
    Traits envelope_;
};

/// Makes the envelopes whose parameters are validated.
///
/// Throws Orv::Exception::RuntimeError, before anything is copied, if the parameters are of another type than
/// `Traits`, or else if a curve type is none of eCurveType.
template <WrappableLayer Inner, class Traits>
struct EnvelopeApplyingIteratorMaker {
    [[gnu::used, gnu::noinline]] static EnvelopeApplyingIterator<Inner, Traits>
    make(const Inner& inner, const EnvelopeParameters& params) {
        return EnvelopeApplyingIterator<Inner, Traits>(inner, Traits(params));
    }
};

} // namespace Aud::Render

#pragma once

#include "ole/Aud/SampleEncoding.hpp"

#include <type_traits>

namespace Aud::Render {

/// An output position at which samples are added to what is there; the clipped sum replaces it. `P` is a
/// pointer to a sample format. The buffer is the caller's.
template <class P>
class SummingOutputSampleIterator {
public:
    using Format = std::remove_pointer_t<P>;

    explicit SummingOutputSampleIterator(P position) : position_(position) {}

    /// The sum is made in single precision, then converted as if written.
    [[gnu::always_inline]] void sumAndStore(float x) {
        using Encoding = SampleEncoding<Format>;
        const float sum = Encoding::load(*position_) + x;
        Encoding::store(sum, *position_);
    }

    [[gnu::always_inline]] SummingOutputSampleIterator& operator++() {
        ++position_;
        return *this;
    }

    P position() const { return position_; }

private:
    P position_;
};

/// Writes one sample and moves the caller's position past it.
template <class Format>
[[gnu::always_inline]] inline void deliver(float x, Format*& out) {
    SampleEncoding<Format>::store(x, *out);
    ++out;
}

/// Adds one sample and moves the caller's position past it.
template <class P>
[[gnu::always_inline]] inline void deliver(float x, SummingOutputSampleIterator<P>& out) {
    out.sumAndStore(x);
    ++out;
}

} // namespace Aud::Render

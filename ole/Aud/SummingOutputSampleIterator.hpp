#pragma once

#include "ole/Aud/SampleEncoding.hpp"

#include <type_traits>

namespace Aud::Render {

/// An output position at which samples are added to what is there, which the clipped sum replaces. `P` is a
/// pointer to a sample format; the buffer is the caller's.
///
/// Summing silence changes two formats: 8 bits unsigned, where silence lowers every sample above 0 by one
/// step, and 32 bits, whose samples pass through single precision.
/// \snippet chain.cpp summing
template <class P>
class SummingOutputSampleIterator {
public:
    using Format = std::remove_pointer_t<P>;

    explicit SummingOutputSampleIterator(P position) : position_(position) {}

    /// Loads, adds in single precision, and stores the sum as a sample is stored.
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

/// Writes one sample and moves the caller's position past the sample.
template <class Format>
[[gnu::always_inline]] inline void deliver(float x, Format*& out) {
    SampleEncoding<Format>::store(x, *out);
    ++out;
}

/// Adds one sample and moves the caller's position past the sample.
template <class P>
[[gnu::always_inline]] inline void deliver(float x, SummingOutputSampleIterator<P>& out) {
    out.sumAndStore(x);
    ++out;
}

} // namespace Aud::Render

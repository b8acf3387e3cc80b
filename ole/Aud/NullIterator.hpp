#pragma once

#include "ole/Aud/ChainLayer.hpp"

namespace Aud::Render {

/// Passes everything through: stands where a filter or a level is absent, at no cost per sample.
template <WrappableLayer Inner>
class NullIterator {
public:
    explicit NullIterator(const Inner& inner) : inner_(inner) {}

    [[gnu::always_inline]] float operator*() const { return *inner_; }

    [[gnu::always_inline]] NullIterator& operator++() {
        ++inner_;
        return *this;
    }

    const Inner& inner() const { return inner_; }

private:
    Inner inner_;
};

} // namespace Aud::Render

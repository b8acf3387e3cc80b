#pragma once

#include "ole/Aud/ChainLayer.hpp"

namespace Aud::Render {

/// Passes every sample through. It stands where a mode has no filter or no level.
///
/// Reading and stepping inline to those of the layer below, so the layer costs nothing per sample; its place
/// in the chain's type is part of the contract.
/// \snippet chain.cpp fixed
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

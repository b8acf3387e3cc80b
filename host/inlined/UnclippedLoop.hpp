#pragma once

#include "host/inlined/SpanLoop.hpp"
#include "host/inlined/UnclippedFunctor.hpp"
#include "loop_modes/SourceIteratorMaker.hpp"

#include <cstddef>

namespace Aud::Render::LoopModesDespatch {

/// Chains with only an equaliser, fades and fixed gains render whole ready spans. All other samples go one by
/// one.
template <int N>
[[gnu::used, gnu::noinline]] void TypedFunctor<audlmd::Unclipped>::Functor<Loki::Int2Type<N>>::ProcessSamples(
    IteratorCreationParams& params, audlmd::Unclipped& out, unsigned int count) {
    Chain<N> made = SourceIteratorMaker<N>::makeIterator(params);
    Chain<N>& chain = *Instructions::inRegister(&made);
    for (; count != 0; --count) {
        if constexpr (audlmd::isRenderedBySpan<Chain<N>>) {
            const std::size_t rendered = audlmd::renderSpan(chain, {out.position, count});
            out.position += rendered;
            count -= static_cast<unsigned int>(rendered);
            if (count == 0)
                return;
        }
        deliver(*chain, out);
        ++chain;
    }
}

} // namespace Aud::Render::LoopModesDespatch

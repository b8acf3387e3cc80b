#include "bench/Yardsticks.hpp"
#include "ole/Aud/Wrapping.hpp"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace audlmd::bench {
namespace {

using Aud::Render::IteratorCreationParams;

template <class Source, std::size_t Layers>
struct Copies {
    using Inner = Copies<Source, Layers - 1>;

    [[gnu::always_inline]] static Copies make(const IteratorCreationParams& params) {
        const Inner inner = Inner::make(params);
        return {inner};
    }

    Inner inner;
};

template <class Source>
struct Copies<Source, 0> {
    [[gnu::always_inline]] static Copies make(const IteratorCreationParams& params) {
        const Cookie cookie = params.source->strip.get_strip_cookie();
        const bool flag = *params.requestFlag;
        if constexpr (std::is_same_v<Source, Aud::SampleCache::ForwardIterator>)
            return {{cookie, *params.startPosition, flag, *params.cache, *params.forwardArgument, !flag,
                     *params.gearing}};
        else
            return {{cookie, Aud::wrappingSum(*params.startPosition, std::int64_t{1}), flag, *params.cache,
                     !flag, *params.gearing}};
    }

    Source source;
};

template <class Source, std::size_t Layers>
[[gnu::noinline]] void build(const IteratorCreationParams& params) {
    const Copies<Source, Layers> chain = Copies<Source, Layers>::make(params);
    // Keeps the compiler from leaving the chain out.
    asm volatile("" : : "g"(&chain) : "memory");
}

template <class Source, std::size_t... Layers>
ChainBuilder builderFor(unsigned int layers, std::index_sequence<Layers...>) {
    static constexpr ChainBuilder builders[] = {&build<Source, Layers>...};
    return builders[layers];
}

} // namespace

ChainBuilder handMadeChain(bool forward, unsigned int layers) {
    using UpToFour = std::make_index_sequence<5>;
    return forward ? builderFor<Aud::SampleCache::ForwardIterator>(layers, UpToFour())
                   : builderFor<Aud::SampleCache::ReverseIterator>(layers, UpToFour());
}

} // namespace audlmd::bench

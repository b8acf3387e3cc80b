#pragma once

#include <concepts>
#include <type_traits>

namespace Aud {

/// The sum modulo two to the width. For positions and indices that may run without bound, where signed
/// overflow would be undefined.
/// \snippet chain.cpp position
template <std::integral Integer>
constexpr Integer wrappingSum(Integer value, Integer addend) noexcept {
    using Unsigned = std::make_unsigned_t<Integer>;
    return static_cast<Integer>(static_cast<Unsigned>(value) + static_cast<Unsigned>(addend));
}

} // namespace Aud

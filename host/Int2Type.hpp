#pragma once

namespace Loki {

/// A distinct type for every integer, so that a mode code can select a class at compile time.
template <int Value>
struct Int2Type {
    static constexpr int value = Value;
};

} // namespace Loki

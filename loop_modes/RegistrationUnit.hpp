#pragma once

#include "loop_modes/IteratorCreationParams.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "loop_modes/RenderFunction.hpp"
#include "loop_modes/UnitPrelude.hpp"
#include "ole/Aud/Instructions.hpp"
#include "ole/Orv/OrvModeMeta"

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <utility>

namespace Aud::Render {

template <class OutputTypes>
class DespatchTables;

/// The host's tables for all output types, each asked for once.
template <class... Outs>
class DespatchTables<std::tuple<Outs...>> {
public:
    /// Registers a mode's functions in all tables, in order. Out of line: the caller runs once and is read
    /// from the disk, and 864 calls take less of it than 12,096.
    [[gnu::noinline]] void
    registerMode(unsigned long code,
                 typename LoopModesDespatch::Types<Outs>::ProcessSamples... functions) const {
        (std::get<Table<Outs>&>(tables_).registerFunction(code, functions), ...);
    }

    template <int N>
    [[gnu::always_inline]] void registerMode() const {
        registerMode(N, Instructions::inRegister(&LoopModesDespatch::TypedFunctor<Outs>::template Functor<
                                                 Loki::Int2Type<N>>::ProcessSamples)...);
    }

private:
    template <class Out>
    using Table = typename LoopModesDespatch::Types<Out>::Table;

    std::tuple<Table<Outs>&...> tables_{LoopModesDespatcherInstance<Outs>::get()...};
};

/// Registers one run of 100 codes (the last unit: 64) of the registration order, each in all fourteen tables
/// before the next. A code that a table already holds throws, which makes the load fail.
template <int Unit>
class RegistrationUnit {
    static constexpr std::size_t runLength = 100;
    static constexpr std::size_t first = (Unit - 1) * runLength;
    static constexpr std::size_t size = std::min(runLength, validModeCount - first);

    template <std::size_t... Offset>
    static void registerRun(std::index_sequence<Offset...>) {
        const DespatchTables<OutputTypes> tables;
        (tables.template registerMode<static_cast<int>(registrationOrder[first + Offset])>(), ...);
    }

    UnitPrelude prelude_;

public:
    RegistrationUnit() { registerRun(std::make_index_sequence<size>()); }
};

} // namespace Aud::Render

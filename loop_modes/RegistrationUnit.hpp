#pragma once

#include "loop_modes/IteratorCreationParams.hpp"
#include "loop_modes/OutputTypes.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "loop_modes/RenderFunction.hpp"
#include "loop_modes/UnitPrelude.hpp"
#include "ole/Orv/OrvModeMeta"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Aud::Render {

/// Registers one run of 100 codes (the last unit: 64) of the registration order, each in all fourteen tables
/// before the next. A code that a table already holds throws, which makes the load fail.
template <int Unit>
class RegistrationUnit {
    static constexpr std::size_t runLength = 100;
    static constexpr std::size_t first = (Unit - 1) * runLength;
    static constexpr std::size_t size = std::min(runLength, validModeCount - first);

    template <unsigned long Code, class Out>
    static void registerFor() {
        LoopModesDespatcherInstance<Out>::get().registerFunction(
            Code, &LoopModesDespatch::TypedFunctor<Out>::template Functor<
                      Loki::Int2Type<static_cast<int>(Code)>>::ProcessSamples);
    }

    template <unsigned long Code, std::size_t... OutputType>
    static void registerCode(std::index_sequence<OutputType...>) {
        (registerFor<Code, std::tuple_element_t<OutputType, OutputTypes>>(), ...);
    }

    template <std::size_t... Offset>
    static void registerRun(std::index_sequence<Offset...>) {
        (registerCode<registrationOrder[first + Offset]>(std::make_index_sequence<outputTypeCount>()), ...);
    }

    UnitPrelude prelude_;

public:
    RegistrationUnit() { registerRun(std::make_index_sequence<size>()); }
};

} // namespace Aud::Render

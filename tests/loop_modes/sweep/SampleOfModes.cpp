// One mode in 25, each for one format, plain and summed: enough for sanitizers and small faults to show in
// the stages without the whole library being built.

#include "loop_modes/RegistrationOrder.hpp"
#include "loop_modes/RenderFunctionGroup.hpp"
#include "ole/Orv/OrvModeMeta"
#include "tests/loop_modes/sweep/Sweep.hpp"

#include <utility>

namespace audlmd::test {
namespace {

constexpr std::size_t stride = 25;
constexpr std::size_t modeCount = (Aud::Render::validModeCount + stride - 1) / stride;
constexpr std::size_t formatCount = Aud::Render::outputTypeCount / 2;
static_assert(modeCount % formatCount == 0);

/// Registers the modes of an output type, and returns their codes.
template <std::size_t OutputType, std::size_t... Turn>
std::vector<unsigned int> registerModes(std::index_sequence<Turn...>) {
    using Out = std::tuple_element_t<OutputType, Aud::Render::OutputTypes>;
    using Functions = Aud::Render::LoopModesDespatch::TypedFunctor<Out>;
    auto& table = Aud::LoopModesDespatcherInstance<Out>::get();
    const auto registerMode = [&table]<int Code>(Loki::Int2Type<Code>) {
        table.registerFunction(Code, &Functions::template Functor<Loki::Int2Type<Code>>::ProcessSamples);
        return static_cast<unsigned int>(Code);
    };
    constexpr auto codeAt = [](std::size_t place) {
        return static_cast<int>(Aud::Render::registrationOrder[place * stride]);
    };
    return {registerMode(Loki::Int2Type<codeAt(OutputType % formatCount + formatCount * Turn)>())...};
}

} // namespace

const std::vector<std::vector<unsigned int>>& sampleOfModes() {
    static const auto codes = []<std::size_t... OutputType>(std::index_sequence<OutputType...>) {
        return std::vector{registerModes<OutputType>(std::make_index_sequence<modeCount / formatCount>())...};
    }
    (std::make_index_sequence<Aud::Render::outputTypeCount>());
    return codes;
}

} // namespace audlmd::test

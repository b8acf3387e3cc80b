// One mode in 25, compiled here, so that sanitizers see the stages without the whole library being built.

#include "loop_modes/RegistrationOrder.hpp"
#include "loop_modes/RenderFunctionGroup.hpp"
#include "model/OutputTypes.hpp"
#include "ole/Orv/OrvModeMeta"
#include "tests/loop_modes/sweep/Sweep.hpp"

#include <gtest/gtest.h>

#include <utility>

namespace audlmd::test {
namespace {

using model::outputTypeCount;

constexpr std::size_t stride = 25;
constexpr std::size_t modeCount = (Aud::Render::validModeCount + stride - 1) / stride;

constexpr unsigned long codeAt(std::size_t place) {
    return Aud::Render::registrationOrder[place * stride];
}

template <std::size_t... Place>
std::vector<unsigned int> registerModes(std::index_sequence<Place...>) {
    model::forEachOutputType([]<class Out>(std::size_t) {
        using Functions = Aud::Render::LoopModesDespatch::TypedFunctor<Out>;
        auto& table = Aud::LoopModesDespatcherInstance<Out>::get();
        (table.registerFunction(
             codeAt(Place),
             &Functions::template Functor<Loki::Int2Type<static_cast<int>(codeAt(Place))>>::ProcessSamples),
         ...);
    });
    return {static_cast<unsigned int>(codeAt(Place))...};
}

const std::vector<unsigned int>& sampleOfModes() {
    static const std::vector<unsigned int> codes = registerModes(std::make_index_sequence<modeCount>());
    return codes;
}

TEST(SampleOfModes, RendersAsTheModelDoes) {
    for (std::size_t outputType = 0; outputType < outputTypeCount; ++outputType)
        expectNoDifference(sampleOfModes(), outputType, 5);
}

TEST(SampleOfModes, SurvivesAFailureOfAnyHostOperation) {
    expectNoDifferenceWhateverFails(sampleOfModes());
}

} // namespace
} // namespace audlmd::test

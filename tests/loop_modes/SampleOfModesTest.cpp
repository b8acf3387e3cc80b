#include "model/OutputTypes.hpp"
#include "tests/loop_modes/sweep/Sweep.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace audlmd::test {
namespace {

TEST(SampleOfModes, RendersAsTheModelDoes) {
    for (std::size_t outputType = 0; outputType < model::outputTypeCount && !HasFailure(); ++outputType)
        expectNoDifference(sampleOfModes()[outputType], outputType, 35);
}

TEST(SampleOfModes, SurvivesAFailureOfAnyHostOperation) {
    std::vector<unsigned int>
        codes; // The one at each place is registered for the output type that is tried there.
    for (std::size_t place = 0; place < 35; ++place)
        codes.push_back(sampleOfModes()[place % model::outputTypeCount][place / 7]);
    expectNoDifferenceWhateverFails(codes);
}

TEST(SampleOfModes, HasNoFunctionForACodeThatIsNoMode) {
    Aud::Render::IteratorCreationParams params;
    std::uint8_t* position = nullptr;
    EXPECT_THROW(model::renderThroughTable(0, 24, params, position, 1), std::out_of_range);
}

} // namespace
} // namespace audlmd::test

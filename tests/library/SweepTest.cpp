// All 12,096 render functions against the model, through the tables that loading the library fills.

#include "tests/library/host/OutputTypes.hpp"
#include "tests/library/model/Model.hpp"
#include "tests/library/sweep/CaseRunner.hpp"

#include <gtest/gtest.h>

namespace Test {
namespace {

/// Cases per function.
constexpr unsigned int seeds = 3;

class EveryMode : public testing::TestWithParam<std::size_t> {};

TEST_P(EveryMode, RendersAsTheModelDoes) {
    expectNoDifference(modelRegistrationOrder(), GetParam(), seeds);
}

INSTANTIATE_TEST_SUITE_P(Into, EveryMode, testing::Range(std::size_t{0}, outputTypeCount),
                         [](const auto& output) { return outputTypeNames[output.param]; });

/// Fails every host operation of a short case in turn.
class EveryThirteenthMode : public testing::TestWithParam<unsigned int> {};

TEST_P(EveryThirteenthMode, SurvivesAFailureOfAnyHostOperation) {
    for (std::size_t place = GetParam(); place < modelRegistrationOrder().size(); place += 13 * 4) {
        RandomCase randomCase(7, modelRegistrationOrder()[place], place % outputTypeCount);
        if (randomCase.requests.size() > 2)
            randomCase.requests.resize(2);
        for (Request& request : randomCase.requests) {
            request.throwAt = Script::never;
            request.count %= 6;
        }
        const CaseResult whole = runCase(randomCase);
        ASSERT_FALSE(whole.difference) << *whole.difference;
        for (std::size_t call = 0; call < randomCase.requests.size(); ++call) {
            for (std::size_t operation = 0; operation < whole.operations[call]; ++operation) {
                randomCase.requests[call].throwAt = operation;
                const CaseResult result = runCase(randomCase);
                ASSERT_FALSE(result.difference) << *result.difference << ", failing operation " << operation;
            }
            randomCase.requests[call].throwAt = Script::never;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(From, EveryThirteenthMode, testing::Values(0u, 13u, 26u, 39u));

} // namespace
} // namespace Test

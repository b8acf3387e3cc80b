// All 12,096 render functions against the model, through the tables that loading the library fills.

#include "tests/loop_modes/sweep/Sweep.hpp"

#include "model/Model.hpp"
#include "model/OutputTypes.hpp"

#include <gtest/gtest.h>

namespace audlmd::test {
namespace {

/// Cases per function.
constexpr unsigned int seeds = 8;

class EveryMode : public testing::TestWithParam<std::size_t> {};

TEST_P(EveryMode, RendersAsTheModelDoes) {
    expectNoDifference(model::registrationOrder(), GetParam(), seeds);
}

INSTANTIATE_TEST_SUITE_P(Into, EveryMode, testing::Range(std::size_t{0}, model::outputTypeCount),
                         [](const auto& output) { return model::outputTypeNames[output.param]; });

class EveryThirteenthMode : public testing::TestWithParam<std::size_t> {};

TEST_P(EveryThirteenthMode, SurvivesAFailureOfAnyHostOperation) {
    std::vector<unsigned int> codes;
    for (std::size_t place = GetParam(); place < model::registrationOrder().size();
         place += std::size_t{13} * 4)
        codes.push_back(model::registrationOrder()[place]);
    expectNoDifferenceWhateverFails(codes);
}

INSTANTIATE_TEST_SUITE_P(From, EveryThirteenthMode,
                         testing::Range(std::size_t{0}, std::size_t{52}, std::size_t{13}));

} // namespace
} // namespace audlmd::test

#pragma once

#include "tests/loop_modes/sweep/RandomCase.hpp"

#include <optional>
#include <string>
#include <vector>

namespace audlmd::test {

struct CaseResult {
    /// How the library differs from the model, and where; empty if it does not.
    std::optional<std::string> difference;
    /// Host operations of each render call.
    std::vector<std::size_t> operations;
};

/// Renders the case through the function in the despatch table and through the model, and compares samples,
/// output position, host state, failures and the order of all host operations after every call.
CaseResult runCase(const RandomCase& randomCase);

/// How to run one case again: the value of AUDLMD_CASE.
std::string nameOf(const RandomCase& randomCase);

/// The cases that the environment variable AUDLMD_CASE names (seed:code:output type), or else one per valid
/// code and seed. Expects no difference in any.
void expectNoDifference(const std::vector<unsigned int>& codes, std::size_t outputType, unsigned int seeds);

/// Lets every host operation of a short case fail in turn, in output types that change from code to code.
void expectNoDifferenceWhateverFails(const std::vector<unsigned int>& codes);

} // namespace audlmd::test

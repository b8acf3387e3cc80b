#pragma once

#include "loop_modes/IteratorCreationParams.hpp"
#include "tests/scripted_host/ScriptedHost.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::test {

/// One render call: the values that the host puts into its record, the number of the operation that throws,
/// and the number of the operation during which the host changes these values.
struct Request {
    std::int64_t startPosition = 0;
    std::int64_t forwardFilteringStartPosition = 0;
    std::int64_t reverseFilteringStartPosition = 0;
    bool flag = false;
    std::uint32_t forwardArgument = 0;
    Aud::SubSamplePos subSampleStart{0, 0};
    Aud::SubSamplePos subSampleStep{0, 0};
    float speed = 1.0F;
    std::uint32_t envelope[10] = {};
    float outerLevelUValue = 0.0F;
    unsigned int count = 0;
    std::size_t throwAt = ScriptedHost::never;
    std::size_t interfereAt = ScriptedHost::never;
};

/// A few render calls in a row for one source. Every value follows from `seed`, or from what `roll` gives: a
/// number below the one that it is called with.
struct RandomCase {
    using Roll = std::function<std::uint32_t(std::uint32_t sides)>;
    RandomCase(std::uint64_t seed, unsigned int code, std::size_t outputType);
    RandomCase(Roll roll, unsigned int code, std::size_t outputType);

    std::uint64_t seed = 0;
    unsigned int code;
    std::size_t outputType;
    unsigned int curveTables;
    double speedLimit;
    ScriptedHost host;
    Aud::Render::PerSourceRecord record;
    std::vector<Request> requests;
    /// The output buffer before the first call.
    std::vector<std::uint8_t> buffer;
};

/// Renders a case through the function in the despatch table and through the model, and compares samples,
/// output position, host state, failures and the order of all host operations after every call. Returns the
/// first difference.
std::optional<std::string> differenceOf(const RandomCase& randomCase);

/// Expects no difference in `seeds` random cases of each code. The environment variable AUDLMD_CASE names one
/// case to run alone, as seed:code:output type; AUDLMD_SEED the first seed, which is 1 otherwise.
void expectNoDifference(const std::vector<unsigned int>& codes, std::size_t outputType, unsigned int seeds);

/// Lets every host operation of a short case fail in turn, in output types that change from code to code.
void expectNoDifferenceWhateverFails(const std::vector<unsigned int>& codes);

/// One mode in 25, by output type: the first call registers every seventh of them for a format and its sum.
const std::vector<std::vector<unsigned int>>& sampleOfModes();

} // namespace audlmd::test

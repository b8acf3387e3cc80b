#include "bench/verify/Verify.hpp"

#include "bench/Request.hpp"
#include "bench/verify/ModelHost.hpp"
#include "model/Model.hpp"
#include "model/RenderThroughTable.hpp"

#include <algorithm>
#include <array>
#include <cstdint>

namespace Bench {

std::optional<std::string> differenceFromModel(unsigned int code, std::size_t outputType, Cache& cache,
                                               double speed) {
    constexpr unsigned int samplesPerCall = 100;
    constexpr std::size_t largestContainer = 4;
    std::array<std::uint8_t, 2 * samplesPerCall * largestContainer> rendered{};
    std::array<std::uint8_t, rendered.size()> expected{};
    // What summing reads.
    for (std::size_t i = 0; i < rendered.size(); ++i)
        rendered[i] = expected[i] = static_cast<std::uint8_t>(i * 37 % 64);

    Request request(code, cache, samplesPerCall, speed);
    Request modelRequest(code, cache, samplesPerCall, speed);
    const ModelHost host(cache, modelRequest.record().equaliser);
    Test::Script script = host.script();
    std::uint8_t* position = rendered.data();
    std::uint8_t* modelPosition = expected.data();
    for (int call = 0; call < 2; ++call) {
        Test::renderThroughTable(outputType, code, request.params(), position, samplesPerCall);
        Test::modelRender(code, outputType, modelRequest.params(), script, modelPosition, samplesPerCall);
    }
    if (position - rendered.data() != modelPosition - expected.data())
        return "the output position";
    const auto* const difference = std::mismatch(rendered.begin(), rendered.end(), expected.begin()).first;
    if (difference != rendered.end())
        return "byte " + std::to_string(difference - rendered.begin());
    return std::nullopt;
}

} // namespace Bench

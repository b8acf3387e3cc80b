#include "fuzz/Fuzzing.hpp"
#include "model/Model.hpp"
#include "model/OutputTypes.hpp"
#include "tests/loop_modes/sweep/Sweep.hpp"

/// The render functions against the model, on a scripted host: material, segments and their statuses, levels,
/// requests, failing operations and an interfering host are all drawn from the input. After every call
/// samples, output position, state, failures and the order of all host operations are the model's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace audlmd;
    FuzzedDataProvider data(bytes, size);
    const auto outputType = data.ConsumeIntegralInRange<std::size_t>(0, model::outputTypeCount - 1);
    const std::vector<unsigned int>& codes = test::sampleOfModes()[outputType];
    const unsigned int code = codes[data.ConsumeIntegralInRange<std::size_t>(0, codes.size() - 1)];
    const test::RandomCase randomCase(
        [&data](std::uint32_t sides) { return data.ConsumeIntegralInRange<std::uint32_t>(0, sides - 1); },
        code, outputType);
    const auto difference = test::differenceOf(randomCase);
    fuzz::require(!difference, "the library renders as the model does: " + difference.value_or(""));
    return 0;
}

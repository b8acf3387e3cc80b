// Every mode in both packagings, in one program and on one host: through the despatch tables to each output
// type, and compiled into the program. The host is the stand-alone one. All functions of a mode and its floor
// take turns; the least time of each counts.

#include "bench/Report.hpp"
#include "bench/Request.hpp"
#include "bench/Yardsticks.hpp"
#include "host/cache/MaterialCache.hpp"
#include "host/cache/SegmentBody.hpp"
#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/signal/Unclipped.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "model/OutputTypes.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <tuple>
#include <type_traits>
#include <vector>

namespace audlmd::bench {
namespace {

/// Of the modes with a conversion, in source samples per output sample.
constexpr double speed = 1.1;
constexpr std::size_t largestContainer = 4;

struct Options {
    unsigned int rounds = 10;
    /// In a round, each function is called so many times.
    unsigned int repetitions = 5;
    /// Output samples of a call.
    unsigned int samples = 2048;
};

struct Measured {
    unsigned int code;
    Timing floor;
    Timing inlined;
    std::array<Timing, model::outputTypeCount> tables;
};

void renderInlined(Request& request, unsigned int code, std::vector<float>& samples) {
    Unclipped out{samples.data()};
    inlinedRenderFunction(code)(request.params(), out, static_cast<unsigned int>(samples.size()));
}

template <class Out>
void convert(const std::vector<float>& samples, std::vector<std::uint8_t>& bytes) {
    if constexpr (std::is_pointer_v<Out>) {
        Out out = reinterpret_cast<Out>(bytes.data());
        convertBlock(samples.data(), samples.size(), out);
    } else {
        Out out(reinterpret_cast<typename Out::Format*>(bytes.data()));
        convertBlock(samples.data(), samples.size(), out);
    }
}

/// Indexed by output type.
constexpr auto converters = []<class... Out>(std::tuple<Out...>*) {
    return std::array{&convert<Out>...};
}(static_cast<model::OutputTypes*>(nullptr));

/// Renders the mode in both packagings, one call for each output type, and returns the name of the first type
/// whose bytes differ; null if none do. The state in the records runs on from call to call.
const char* differingOutputType(unsigned int code, MaterialCache& cache) {
    constexpr unsigned int samplesPerCall = 100;
    Request request(code, cache, samplesPerCall, speed);
    Request inlinedRequest(code, cache, samplesPerCall, speed);
    std::vector<float> samples(samplesPerCall);
    for (std::size_t type = 0; type < model::outputTypeCount; ++type) {
        // The summing output types add to these bytes.
        std::vector<std::uint8_t> expected(largestContainer * samplesPerCall, 0x31);
        std::vector<std::uint8_t> converted = expected;
        std::uint8_t* position = expected.data();
        model::renderThroughTable(type, code, request.params(), position, samplesPerCall);
        renderInlined(inlinedRequest, code, samples);
        converters[type](samples, converted);
        if (converted != expected)
            return model::outputTypeNames[type];
    }
    return nullptr;
}

void measure(Measured& it, MaterialCache& cache, const Aud::SampleCacheSegment& segment,
             const Options& options) {
    const auto sourceSamples = static_cast<unsigned int>(options.samples * speed);
    Request request(it.code, cache, sourceSamples, speed);
    Request inlinedRequest(it.code, cache, sourceSamples, speed);
    Floor floor(request, segment);
    const auto levelOnItsWay = request.record().dynamicLevel;
    std::vector<float> samples(options.samples);
    std::vector<std::uint8_t> bytes(largestContainer * options.samples);
    for (unsigned int i = 0; i < options.repetitions; ++i) {
        it.floor.repeat([&] { floor.run(options.samples); });
        inlinedRequest.record().dynamicLevel = levelOnItsWay;
        it.inlined.repeat([&] { renderInlined(inlinedRequest, it.code, samples); });
        for (std::size_t type = 0; type < model::outputTypeCount; ++type) {
            request.record().dynamicLevel = levelOnItsWay;
            std::uint8_t* position = bytes.data();
            it.tables[type].repeat([&] {
                model::renderThroughTable(type, it.code, request.params(), position, options.samples);
            });
        }
    }
}

/// One line of figures for each mode, below a line of headings.
void print(const std::vector<Measured>& modes, double samples) {
    std::printf("code %8s %8s", "floor", "inlined");
    for (const char* name : model::outputTypeNames)
        std::printf(" %10s", name);
    for (const Measured& it : modes) {
        std::printf("\n%4u %8.3f %8.3f", it.code, it.floor.minimum() / samples,
                    it.inlined.minimum() / samples);
        for (const Timing& timing : it.tables)
            std::printf(" %10.3f", timing.minimum() / samples);
    }
    std::printf("\n");
}

int measureEveryMode(const Options& options) {
    const std::vector<float> material = testMaterial();
    MaterialCache cache({.segmentLength = Cache::segmentLength});
    cache.add(Cookie{}, std::make_shared<MemorySource>(material));
    // What the floor asks for its status and samples: a segment like those of the cache, which hands out
    // none.
    Aud::SampleCacheSegmentAccess::Body body(Aud::eSegmentReady, Cache::segmentLength);
    body.samples = material.data();
    const Aud::SampleCacheSegment segment = Aud::SampleCacheSegmentAccess::share(body);

    std::vector<Measured> modes;
    modes.reserve(Aud::Render::validModeCount);
    for (const unsigned long code : Aud::Render::registrationOrder)
        modes.push_back({static_cast<unsigned int>(code), {}, {}, {}});
    std::ranges::sort(modes, {}, &Measured::code);
    for (const Measured& it : modes)
        if (const char* const type = differingOutputType(it.code, cache)) {
            std::fprintf(
                stderr,
                "audlmd-bench-every-mode: the packagings of mode %u differ in %s; nothing is measured\n",
                it.code, type);
            return 1;
        }
    std::size_t done = 0;
    for (unsigned int round = 0; round < options.rounds; ++round)
        for (Measured& it : modes) {
            measure(it, cache, segment, options);
            showProgress("measured", ++done, modes.size() * options.rounds);
        }
    print(modes, options.samples);
    return 0;
}

} // namespace
} // namespace audlmd::bench

// NOLINTNEXTLINE(bugprone-exception-escape): options that clash are a fault of this program
int main(int argc, char** argv) {
    CLI::App app{"Measures every mode through the tables and inlined, in nanoseconds per output sample. "
                 "Converters run at speed 1.1."};
    audlmd::bench::Options options;
    app.add_option("--rounds", options.rounds, "times to go through everything")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--samples", options.samples, "output samples per call")
        ->capture_default_str()
        ->check(CLI::Range(16U, 4096U));
    CLI11_PARSE(app, argc, argv);
    try {
        return audlmd::bench::measureEveryMode(options);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "audlmd-bench-every-mode: %s\n", failure.what());
        return 1;
    }
}

// Render functions compiled into the program beside those of the tables, and conversions by the block beside
// conversions by the sample. The two of a pair are measured in turns; the least time of each counts.

#include "model/OutputTypes.hpp"
#include "standalone/cache/MaterialCache.hpp"
#include "standalone/inlined/InlinedRenderFunctions.hpp"
#include "standalone/signal/BlockConversion.hpp"
#include "standalone/signal/StripPlayer.hpp"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace audlmd::bench {
namespace {

/// Output samples of one call: half of the processor's first-level cache, as floats.
constexpr std::size_t block = 4096;
constexpr std::int64_t materialLength = 480000;

const std::vector<float>& material() {
    static const std::vector<float> samples = [] {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> sample(-0.5F, 0.5F);
        std::vector<float> noise(materialLength);
        std::generate(noise.begin(), noise.end(), [&] { return sample(random); });
        return noise;
    }();
    return samples;
}

MaterialCache& cache() {
    static MaterialCache cache;
    [[maybe_unused]] static const bool added =
        (cache.add(Cookie{}, std::make_shared<MemorySource>(material())), true);
    return cache;
}

struct Job {
    const char* name;
    StripSettings settings;
};

std::vector<Job> jobs() {
    StripSettings plain;
    plain.to = materialLength;
    std::vector<Job> all;
    const auto add = [&](const char* name, auto change) {
        StripSettings settings = plain;
        change(settings);
        all.push_back({name, settings});
    };
    const auto fadeAndLevel = [](StripSettings& s) {
        s.fade = {materialLength / 2, materialLength / 2, FadeCurve::log, FadeCurve::log};
        s.outerLevel = 0.8F;
    };
    const auto fiveBands = [](StripSettings& s) {
        for (const double frequency : {100.0, 400.0, 1000.0, 3000.0, 8000.0})
            s.equaliser.push_back({BandKind::peak, frequency, 3.0});
    };
    const auto convert = [](StripSettings& s, Converter converter) {
        s.converter = converter;
        s.speed = 1.1;
    };
    add("plain", [](StripSettings&) {});
    add("reverse", [](StripSettings& s) { s.reverse = true; });
    add("fadeAndLevel", fadeAndLevel);
    add("linear", [&](StripSettings& s) { convert(s, Converter::linear); });
    add("fiveBands", fiveBands);
    add("allWithLinear", [&](StripSettings& s) {
        fadeAndLevel(s);
        fiveBands(s);
        s.middleLevel = 0.9F;
        convert(s, Converter::linear);
    });
    add("filtering", [&](StripSettings& s) { convert(s, Converter::filtering); });
    return all;
}

/// Renders block after block, from the start again where a block would not fit.
template <class Render>
void play(benchmark::State& state, const StripSettings& settings, Render render) {
    StripPlayer player(cache(), settings);
    for ([[maybe_unused]] auto turn : state) {
        if (player.outputLength() - player.position() < block)
            player.seek(0);
        render(player);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(block));
}

void playThroughTables(benchmark::State& state, const StripSettings& settings) {
    std::vector<Aud::SampleF32> samples(block);
    play(state, settings, [&](StripPlayer& player) {
        Aud::SampleF32* out = samples.data();
        player.render(out, block);
    });
}

void playInlined(benchmark::State& state, const StripSettings& settings) {
    std::vector<float> samples(block);
    play(state, settings, [&](StripPlayer& player) {
        Unclipped out{samples.data()};
        player.render(out, block, &inlinedRenderFunction);
    });
}

/// Of model::OutputTypes.
template <class Out>
Out startOf(std::vector<unsigned char>& bytes) {
    if constexpr (std::is_pointer_v<Out>)
        return reinterpret_cast<Out>(bytes.data());
    else
        return Out(reinterpret_cast<typename Out::Format*>(bytes.data()));
}

template <class Out, class Convert>
void convertEach(benchmark::State& state, Convert convert) {
    std::vector<unsigned char> bytes(4 * block, 0x31);
    for ([[maybe_unused]] auto turn : state) {
        Out out = startOf<Out>(bytes);
        convert(out);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(block));
}

template <class Out>
void registerConversion(const std::string& name) {
    benchmark::RegisterBenchmark((name + "/single").c_str(), [](benchmark::State& state) {
        convertEach<Out>(state, [](Out& out) {
            for (std::size_t i = 0; i < block; ++i)
                Aud::Render::deliver(material()[i], out);
        });
    });
    benchmark::RegisterBenchmark((name + "/block").c_str(), [](benchmark::State& state) {
        convertEach<Out>(state, [](Out& out) { convertBlock(material().data(), block, out); });
    });
}

template <class... Out>
void registerConversions(std::tuple<Out...>*) {
    const char* const* name = model::outputTypeNames;
    (registerConversion<Out>(*name++), ...);
}

/// Prints the least time per sample of each pair, and the second's as a part of the first's.
class PairReporter final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            const double nanoseconds = 1e9 / run.counters.at("items_per_second");
            const auto place = leastTimes_.try_emplace(run.run_name.function_name, nanoseconds).first;
            place->second = std::min(place->second, nanoseconds);
        }
    }
    void Finalize() override {
        for (const auto& [second, after] : leastTimes_) {
            const std::string what = second.substr(0, second.find('/') + 1);
            for (const auto& [first, before] : leastTimes_)
                if (first.starts_with(what) && isPair(first.substr(what.size()), second.substr(what.size())))
                    std::printf("%-20s %7.2f ns  %-20s %7.2f ns  %.2f\n", first.c_str(), before,
                                second.c_str(), after, after / before);
        }
    }

private:
    static bool isPair(const std::string& first, const std::string& second) {
        return (first == "tables" && second == "inlined") || (first == "single" && second == "block");
    }

    std::map<std::string, double> leastTimes_;
};

} // namespace
} // namespace audlmd::bench

int main(int argc, char** argv) {
    using namespace audlmd::bench;
    for (const Job& job : jobs()) {
        benchmark::RegisterBenchmark((std::string(job.name) + "/tables").c_str(), playThroughTables,
                                     job.settings);
        benchmark::RegisterBenchmark((std::string(job.name) + "/inlined").c_str(), playInlined, job.settings);
    }
    registerConversions(static_cast<audlmd::model::OutputTypes*>(nullptr));
    std::string interleaved = "--benchmark_enable_random_interleaving=true";
    std::string repetitions = "--benchmark_repetitions=9";
    std::string shortRuns = "--benchmark_min_time=0.03";
    // The program's own come first, so that the user's count.
    std::vector<char*> arguments{argv[0], interleaved.data(), repetitions.data(), shortRuns.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    PairReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}

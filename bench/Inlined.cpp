// Render functions compiled into the program beside those of the tables, and conversions by the block beside
// conversions by the sample. The two of a pair are measured in turns; the least time of each counts.

#include "host/cache/MaterialCache.hpp"
#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/signal/StripPlayer.hpp"
#include "host/signal/Unclipped.hpp"
#include "model/OutputTypes.hpp"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
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

std::vector<Job> allJobs() {
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
    add("fade and level", fadeAndLevel);
    add("automation", [](StripSettings& s) {
        s.automation = {Automation({{0, 0.5F}, {materialLength / 3, 1.2F}, {materialLength, 0.1F}})};
    });
    add("linear, speed 1.1", [&](StripSettings& s) { convert(s, Converter::linear); });
    add("five bands", fiveBands);
    add("fade, two levels, five bands, linear", [&](StripSettings& s) {
        fadeAndLevel(s);
        fiveBands(s);
        s.middleLevel = 0.9F;
        convert(s, Converter::linear);
    });
    add("filtering, speed 1.1", [&](StripSettings& s) { convert(s, Converter::filtering); });
    return all;
}

const std::vector<Job>& jobs() {
    static const std::vector<Job> jobs = allJobs();
    return jobs;
}

/// Renders block after block, from the start again where a block would not fit.
template <class Render>
void play(benchmark::State& state, const StripSettings& settings, Render render) {
    StripPlayer player(cache(), settings, &inlinedRenderFunction);
    for ([[maybe_unused]] auto turn : state) {
        if (player.position() + block > player.outputLength())
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
    play(state, settings, [&](StripPlayer& player) { player.renderFloats(samples); });
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
void convertBlocks(benchmark::State& state, Convert convert) {
    std::vector<unsigned char> bytes(4 * block, 0x31);
    for ([[maybe_unused]] auto turn : state) {
        Out out = startOf<Out>(bytes);
        convert(out);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(block));
}

template <class Out>
void convertBySample(benchmark::State& state) {
    convertBlocks<Out>(state, [](Out& out) {
        for (std::size_t i = 0; i < block; ++i)
            Aud::Render::deliver(material()[i], out);
    });
}

template <class Out>
void convertByBlock(benchmark::State& state) {
    convertBlocks<Out>(state, [](Out& out) { convertBlock(material().data(), block, out); });
}

/// One pair of functions for each output type.
template <class... Out>
constexpr auto conversionsOf(std::tuple<Out...>*) {
    using Pair = std::array<void (*)(benchmark::State&), 2>;
    return std::array{Pair{&convertBySample<Out>, &convertByBlock<Out>}...};
}
constexpr auto conversions = conversionsOf(static_cast<model::OutputTypes*>(nullptr));

/// The arguments of both are the number of the pair, and 0 or 1 for its first or second half.
void plays(benchmark::State& state) {
    const StripSettings& settings = jobs()[static_cast<std::size_t>(state.range(0))].settings;
    state.range(1) == 0 ? playThroughTables(state, settings) : playInlined(state, settings);
}
void converts(benchmark::State& state) {
    conversions[static_cast<std::size_t>(state.range(0))][static_cast<std::size_t>(state.range(1))](state);
}
BENCHMARK(plays)->ArgsProduct(
    {benchmark::CreateDenseRange(0, static_cast<std::int64_t>(jobs().size()) - 1, 1), {0, 1}});
BENCHMARK(converts)->ArgsProduct({benchmark::CreateDenseRange(0, 13, 1), {0, 1}});

/// Prints the least time per sample of both halves of each pair, and the second as a part of the first.
class PairReporter final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            const std::string& numbers = run.run_name.args;
            std::array<double, 2>& pair = pairs_[{run.run_name.function_name, std::stoul(numbers)}];
            double& least = pair[numbers.back() == '0' ? 0 : 1];
            const double nanoseconds = 1e9 / run.counters.at("items_per_second");
            least = least == 0.0 ? nanoseconds : std::min(least, nanoseconds);
        }
    }
    void Finalize() override {
        for (const auto& [name, pair] : pairs_) {
            const bool isPlay = name.first == "plays";
            const auto [first, second] = pair;
            std::printf("%-36s %s %6.2f ns  %s %6.2f ns  %.2f\n",
                        isPlay ? jobs()[name.second].name : model::outputTypeNames[name.second],
                        isPlay ? "tables" : "by sample", first, isPlay ? "inlined" : "by block", second,
                        second / first);
        }
    }

private:
    std::map<std::pair<std::string, std::size_t>, std::array<double, 2>> pairs_;
};

} // namespace
} // namespace audlmd::bench

int main(int argc, char** argv) {
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
    audlmd::bench::PairReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}

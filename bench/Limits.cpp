// audlmd-bench-limits FILE: what the arithmetic of whole jobs takes at least, in nanoseconds of one thread
// for each sample, one "name: figure" a line: the loops of the host over a block that stays in the
// processor's first-level cache, libsoxr in one go, and libsndfile decoding FILE, a FLAC file of two
// channels.

#include "bench/ProcessorTime.hpp"
#include "host/deliver/Delivery.hpp"
#include "host/signal/BlockEqualiser.hpp"
#include "host/signal/BlockLoops.hpp"
#include "host/signal/Equaliser.hpp"
#include "ole/Aud/SampleFormats.hpp"

#include <sndfile.h>
#include <soxr.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <random>
#include <vector>

namespace {

using namespace audlmd;

constexpr std::size_t block = 4096;
constexpr int rounds = 200;

std::vector<float> noise(std::size_t count) {
    std::minstd_rand random(1);
    std::vector<float> samples(count);
    for (float& sample : samples)
        sample = static_cast<float>(random()) * 0x1p-31F - 0.5F;
    return samples;
}

/// The least of all rounds, of which each does the work `times` times.
template <class Work>
void tell(const char* name, double samples, int times, Work work) {
    double least = INFINITY;
    for (int round = 0; round < (times == 1 ? 5 : rounds); ++round) {
        const double before = bench::processorTime();
        for (int time = 0; time < times; ++time)
            work();
        least = std::min(least, bench::processorTime() - before);
    }
    std::printf("%s: %.3f\n", name, least * 1e9 / (samples * times));
}

void tellLoops() {
    const std::vector<float> in = noise(block);
    std::vector<float> out = in;
    const auto add = [&](const char* name, auto work) { tell(name, block, 200, work); };
    add("backwards", [&] { copyReversed(&in.back(), out); });
    add("gain", [&] { multiply(out, 1.0F); });
    add("sum", [&] { addTo(out, in, 1e-9F); });
    std::vector<Aud::SampleS16> words(block);
    add("to s16", [&] { storeBlock(std::span<const float>(in), words.data(), Rounding::nearest, {}); });
    std::vector<Aud::SampleS24> threeBytes(block);
    add("to s24", [&] { storeBlock(std::span<const float>(in), threeBytes.data(), Rounding::nearest, {}); });
    Aud::Filter::MultiBandBiquad<5U> equaliser;
    std::vector<EqualiserBand> bands;
    for (const double frequency : {120.0, 400.0, 1000.0, 4000.0, 10000.0})
        bands.push_back({BandKind::peak, frequency, 2.0, 0.9});
    setBands(equaliser, bands, 48000.0);
    add("five bands", [&] {
        std::copy(in.begin(), in.end(), out.begin());
        filterBlock(equaliser, out);
    });
}

/// For each sample that comes out.
void tellRate(const char* name, double from, double to) {
    const std::vector<float> in = noise(std::size_t{1} << 20);
    std::vector<float> out(static_cast<std::size_t>(static_cast<double>(in.size()) * to / from) + 1);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, SOXR_HI_PREC_CLOCK);
    tell(name, static_cast<double>(out.size()), 1, [&] {
        soxr_oneshot(from, to, 1, in.data(), in.size(), nullptr, out.data(), out.size(), nullptr, nullptr,
                     &quality, nullptr);
    });
}

void tellDecoding(const char* path) {
    std::vector<float> samples(std::size_t{1} << 16);
    SF_INFO info{};
    sf_close(sf_open(path, SFM_READ, &info));
    tell("decoding of FLAC", static_cast<double>(info.frames) * info.channels, 1, [&] {
        SNDFILE* const file = sf_open(path, SFM_READ, &info);
        while (sf_readf_float(file, samples.data(), static_cast<sf_count_t>(samples.size()) / 2) > 0) {
        }
        sf_close(file);
    });
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: audlmd-bench-limits FILE.flac\n", stderr);
        return 2;
    }
    tellLoops();
    tellRate("libsoxr, speed 1.1", 11.0, 10.0);
    tellRate("libsoxr, 44.1 to 48 kHz", 44100.0, 48000.0);
    tellDecoding(argv[1]);
}

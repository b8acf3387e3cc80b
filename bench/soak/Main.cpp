// audlmd-soak: random use of the transport on a sound device that takes frames up to many times faster than a
// sound card; between its sessions, random use of cache and mixer by several threads. Ends with exit status 1
// where something stands still, fails, plays what is no sound, or keeps memory. See scripts/soak.

#include "bench/soak/FlatMemory.hpp"
#include "bench/soak/Session.hpp"
#include "bench/soak/Stress.hpp"

#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

using namespace audlmd::soak;
using Clock = std::chrono::steady_clock;

/// Makes ALSA's file plugin over its null plugin the only sound device: no sound card is needed, and no clock
/// holds the player up.
class FastDevice {
public:
    FastDevice() {
        std::ofstream(file_)
            << R"(pcm.!default { type file slave.pcm { type null } file "/dev/null" format raw })";
        setenv("ALSA_CONFIG_PATH", file_.c_str(), 1);
    }
    ~FastDevice() { std::filesystem::remove(file_); }
    FastDevice(const FastDevice&) = delete;
    FastDevice& operator=(const FastDevice&) = delete;

private:
    const std::filesystem::path file_ =
        std::filesystem::temp_directory_path() / ("audlmd-soak-" + std::to_string(getpid()));
};

void showProgress(double seconds, double minutes, const SoakTotals& totals) {
    if (isatty(STDERR_FILENO) != 0)
        std::fprintf(stderr, "\r%.1f of %.1f minutes, %llu sessions ", seconds / 60.0, minutes,
                     static_cast<unsigned long long>(totals.sessions));
}

void soak(double minutes, unsigned int seed, bool checksMemory) {
    const FastDevice device;
    const audlmd::command::SoundDevices devices;
    SoakTotals totals;
    StressTotals cache;
    StressTotals mixer;
    FlatMemory memory;
    const auto start = Clock::now();
    for (double seconds = 0.0; seconds < minutes * 60.0; ++seed) {
        try {
            runSession(seed, devices, totals);
            // As long as three sessions.
            if (seed % 3 == 1) {
                stressCache(seed, cache);
                stressMixer(seed, mixer);
            }
        } catch (const std::exception& error) {
            throw std::runtime_error("seed " + std::to_string(seed) + ": " + error.what());
        }
        memory.note();
        seconds = std::chrono::duration<double>(Clock::now() - start).count();
        showProgress(seconds, minutes, totals);
    }
    const auto count = [](std::uint64_t number) { return static_cast<unsigned long long>(number); };
    std::printf("transport: %llu sessions, %llu commands, %.1f hours of sound; late %llu samples, starved "
                "%llu frames; longest "
                "start %.1f s\n",
                count(totals.sessions), count(totals.commands),
                static_cast<double>(totals.frames) / 48000.0 / 3600.0, count(totals.lateSamples),
                count(totals.starvedFrames), totals.longestStart);
    std::printf("cache: %llu rounds of readers, %llu reads failed on purpose\n", count(cache.rounds),
                count(cache.failedReads));
    std::printf("mixer: %llu rounds, %llu samples, %llu strips failed on purpose\n", count(mixer.rounds),
                count(mixer.samples), count(mixer.failedReads));
    std::printf("memory: %.0f MiB at most%s\n", memory.largest(),
                checksMemory && !memory.isEnough() ? "; too few sessions to tell whether it grows" : "");
    if (checksMemory)
        memory.requireFlat();
}

int run(int argc, char** argv) {
    CLI::App app("Random use of transport, cache and mixer, many times faster than real time");
    double minutes = 1.0;
    unsigned int seed = 1;
    bool checksMemory = false;
    app.add_option("MINUTES", minutes, "How long")->required()->check(CLI::PositiveNumber);
    app.add_option("--seed", seed, "Of the first session; each later one has the next");
    app.add_flag("--flat-memory", checksMemory,
                 "Fail where memory grows; not for sanitizers, which keep freed memory");
    CLI11_PARSE(app, argc, argv);
    soak(minutes, seed, checksMemory);
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "soak: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

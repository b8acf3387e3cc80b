// audlmd-bench-live FOLDER: measures live playback on a device that the program plays itself, and prints
// JSON: from an order to the first changed sample, in milliseconds; the share of one processor that playing
// takes; the number of strips that play in real time on one processor. FOLDER is for the sound file, 24 MB.

#include "bench/LiveStrips.hpp"
#include "bench/NoiseFile.hpp"
#include "bench/PacedDevice.hpp"
#include "bench/ProcessorTime.hpp"
#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/play/LivePlayer.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <random>
#include <sched.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace audlmd;
using namespace audlmd::bench;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// For each figure, in seconds.
constexpr double measured = 10.0;
constexpr std::size_t blocks[] = {128, 1024};

/// As the command plays where nothing else is asked for.
LiveOptions optionsFor(std::size_t block) {
    return {.latency = 0.04 + static_cast<double>(block) / 48000.0, .inlined = &inlinedRenderFunction};
}

/// Plus in the first half, minus in the second one, for the ear to tell the halves apart.
Media halves() {
    std::vector<float> samples(static_cast<std::size_t>(2 * stripLength), 0.5F);
    std::fill(samples.begin() + stripLength, samples.end(), -0.5F);
    const auto channel = std::make_shared<MemorySource>(std::move(samples));
    return {.channels = {channel, channel}};
}

/// Jumps between the halves at random times, and notes how long it takes until the device is given the first
/// sample of the other half.
nlohmann::json latencyAt(std::size_t block) {
    LivePlayer player(halves(), {}, optionsFor(block));
    std::atomic<float> awaited{1.0F};
    std::atomic<Clock::time_point> heardAt{Clock::time_point::min()};
    const PacedDevice device(block, [&](std::span<float> samples) {
        player.fill(samples);
        const auto found =
            std::ranges::find_if(samples, [&](float sample) { return sample * awaited > 0.0F; });
        if (found != samples.end() && heardAt.load() == Clock::time_point::min())
            heardAt =
                Clock::now() + std::chrono::microseconds((found - samples.begin()) / 2 * 1'000'000 / 48000);
    });
    player.play();
    std::vector<double> latencies;
    std::minstd_rand random(1);
    const auto end = Clock::now() + Seconds(measured);
    for (bool first = false; Clock::now() < end; first = !first) {
        std::this_thread::sleep_for(std::chrono::microseconds(100'000 + random() % 100'000));
        const auto asked = Clock::now();
        awaited = first ? 1.0F : -1.0F;
        heardAt = Clock::time_point::min();
        player.seek(first ? stripLength / 4 : stripLength + stripLength / 4);
        while (heardAt.load() == Clock::time_point::min())
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        latencies.push_back(1000.0 * Seconds(heardAt.load() - asked).count());
    }
    std::ranges::sort(latencies);
    return {{"block", block},
            {"jumps", latencies.size()},
            {"median", latencies[latencies.size() / 2]},
            {"largest", latencies.back()}};
}

void requireInTime(const LivePlayer& player) {
    if (player.underruns().lateSamples != 0 || player.underruns().starvedFrames != 0)
        throw std::runtime_error("something was late: measure on an idle machine");
}

nlohmann::json shareOf(const std::string& what, LivePlayer& player, std::size_t block) {
    const PacedDevice device(block, [&](std::span<float> samples) { player.fill(samples); });
    player.play();
    // The mixer of a timeline has taken over by then.
    std::this_thread::sleep_for(std::chrono::seconds(3));
    const auto start = Clock::now();
    const double before = processorTime();
    std::this_thread::sleep_for(Seconds(measured));
    const double share = (processorTime() - before) / Seconds(Clock::now() - start).count();
    requireInTime(player);
    return {{"what", what}, {"block", block}, {"share", share}};
}

/// Whether so many strips play without an underrun.
bool playsInTime(const std::string& file, std::size_t count) {
    LiveOptions options = optionsFor(256);
    options.mixThreads = 1;
    LivePlayer player(fullStrips(file, count), &openSoundFile, options);
    const PacedDevice device(256, [&](std::span<float> samples) { player.fill(samples); });
    player.play();
    for (const auto end = Clock::now() + Seconds(measured + 2.0); Clock::now() < end;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        if (player.underruns().lateSamples != 0 || player.underruns().starvedFrames != 0)
            return false;
    }
    return static_cast<double>(player.position().number()) > measured * 48000.0;
}

/// The largest number that plays in time, to a thirtieth. From now on all runs on one processor.
std::size_t mostStrips(const std::string& file) {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(0, &one);
    if (sched_setaffinity(0, sizeof one, &one) != 0)
        throw std::runtime_error("cannot keep to one processor");
    std::size_t enough = 0;
    std::size_t tooMany = 32;
    for (; playsInTime(file, tooMany); tooMany *= 2)
        enough = tooMany;
    while (tooMany - enough > std::max<std::size_t>(1, enough / 30)) {
        const std::size_t middle = (enough + tooMany) / 2;
        (playsInTime(file, middle) ? enough : tooMany) = middle;
    }
    return enough;
}

nlohmann::json measure(const std::filesystem::path& folder) {
    const std::string file = folder / "noise.wav";
    writeNoise(file, 1, 2 * stripLength);
    nlohmann::json figures;
    for (const std::size_t block : blocks)
        figures["latency"].push_back(latencyAt(block));
    for (const std::size_t block : blocks) {
        LivePlayer strip(openSoundFile(file), {}, optionsFor(block));
        figures["shares"].push_back(shareOf("one stereo strip", strip, block));
        LivePlayer tracks(plainStrips(file, 24), &openSoundFile, optionsFor(block));
        figures["shares"].push_back(shareOf("24 stereo tracks", tracks, block));
    }
    figures["strips"] = mostStrips(file);
    return figures;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "audlmd-bench-live: takes one argument, a folder for a sound file\n");
        return 2;
    }
    try {
        std::puts(measure(argv[1]).dump(1).c_str());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "audlmd-bench-live: %s\n", error.what());
        return 1;
    }
    return 0;
}

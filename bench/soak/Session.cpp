#include "bench/soak/Session.hpp"

#include "bench/soak/RandomPlayer.hpp"
#include "tools/audlmd/play/TransportKeys.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>
#include <span>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace audlmd::soak {
namespace {

using namespace std::chrono_literals;

/// Three strips of a timeline, each within full scale, at the highest level of the transport.
constexpr float loudest = 3.0F * 3.1623F;

/// Three quarters of the keys shuttle and jump.
command::Key randomKey(std::mt19937& random) {
    constexpr std::string_view keys = "  jjjjjkkllllll,,..iox+-";
    constexpr command::Key others[] = {command::leftKey, command::rightKey, command::homeKey,
                                       command::endKey};
    const std::size_t choice = random() % (keys.size() + std::size(others));
    return choice < keys.size() ? static_cast<command::Key>(keys[choice]) : others[choice - keys.size()];
}

/// Holds the device up, so that it asks for frames at a pace that may be many times that of a sound card.
class Pace {
public:
    /// In multiples of real time; 0 does not hold up.
    explicit Pace(unsigned int times) : times_(times) {}

    void take(std::size_t frames) {
        if (times_ == 0)
            return;
        next_ = std::max(next_, std::chrono::steady_clock::now());
        next_ += std::chrono::nanoseconds(frames * 1'000'000'000 / 48000 / times_);
        std::this_thread::sleep_until(next_);
    }

private:
    const unsigned int times_;
    std::chrono::steady_clock::time_point next_;
};

void requirePlayingOn(LivePlayer& player, SoakTotals& totals) {
    player.setLoop(std::nullopt);
    player.setSpeed(1.0);
    player.seek(1000);
    player.play();
    const auto start = std::chrono::steady_clock::now();
    const std::uint64_t framesBefore = totals.frames;
    for (std::chrono::duration<double> waited{0.0}; waited < 30s;) {
        waited = std::chrono::steady_clock::now() - start;
        totals.longestStart = std::max(totals.longestStart, waited.count());
        if (player.position() > 2000)
            return;
        std::this_thread::sleep_for(5ms);
    }
    throw std::runtime_error("the transport stands still at sample " +
                             std::to_string(player.position().number()) + "; the device took " +
                             std::to_string(totals.frames - framesBefore) + " frames, " +
                             std::to_string(player.underruns().starvedFrames) + " starved so far. " +
                             player.report().sound.failure);
}

} // namespace

void runSession(unsigned int seed, const command::SoundDevices& devices, SoakTotals& totals) {
    std::mt19937 random(seed);
    const std::unique_ptr<LivePlayer> player = randomPlayer(random);
    std::atomic<bool> isWrong{false};
    constexpr unsigned int paces[] = {1, 8, 40, 0};
    Pace pace(paces[random() % std::size(paces)]);
    const auto fill = [&](std::span<float> samples) {
        player->fill(samples);
        for (const float sample : samples)
            if (!(std::fabs(sample) <= loudest))
                isWrong = true;
        totals.frames += samples.size() / 2;
        pace.take(samples.size() / 2);
    };
    command::DeviceFormat format;
    format.block = std::size_t{32} << random() % 7;
    const command::SoundDevices::Stream stream(devices.find(std::nullopt), format, fill);
    command::TransportKeys keys({.length = player->length(), .sampleRate = player->sampleRate()});
    for (auto presses = 20 + random() % 200; presses > 0; --presses) {
        for (const command::TransportCommand& command :
             keys.press(randomKey(random), {player->isPlaying(), player->speed(), player->position()})) {
            carryOut(command, *player);
            ++totals.commands;
        }
        if (random() % 3 != 0)
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
    }
    requirePlayingOn(*player, totals);
    stream.requireActive();
    if (isWrong)
        throw std::runtime_error("a sample is not a number, or too large");
    const LiveReport report = player->report();
    if (!report.sound.failure.empty())
        throw std::runtime_error(report.sound.failure);
    totals.lateSamples += player->underruns().lateSamples;
    totals.starvedFrames += player->underruns().starvedFrames;
    ++totals.sessions;
}

} // namespace audlmd::soak

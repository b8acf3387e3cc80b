#pragma once

#include "tools/audlmd/play/SoundDevice.hpp"

#include <atomic>
#include <cstdint>

namespace audlmd::soak {

/// Of all sessions together.
struct SoakTotals {
    std::uint64_t sessions = 0;
    std::uint64_t commands = 0;
    std::atomic<std::uint64_t> frames{0};
    std::uint64_t lateSamples = 0;
    std::uint64_t starvedFrames = 0;
    /// From the last order of a session to its sound, in seconds.
    double longestStart = 0.0;
};

/// Opens a player and a stream on the default device, presses random keys of the transport at random times,
/// then closes both. Equal seeds press the same keys. Throws std::runtime_error where a sample was not a
/// number or too large, or where the transport does not play on in the end.
void runSession(unsigned int seed, const command::SoundDevices& devices, SoakTotals& totals);

} // namespace audlmd::soak

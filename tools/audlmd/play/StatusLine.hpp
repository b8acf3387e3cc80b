#pragma once

#include "host/play/LiveReport.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace audlmd::command {

/// What the user sees of the transport.
struct PlayStatus {
    bool isPlaying = false;
    bool loops = false;
    double speed = 1.0;
    /// In samples of the sound.
    std::int64_t position = 0;
    std::int64_t length = 0;
    int sampleRate = 48000;
    /// Linear, one for each channel.
    std::vector<float> peaks;
    LiveUnderruns underruns;
    std::uint64_t deviceUnderruns = 0;
};

/// One line of position, speed, peak meters and underruns.
std::string statusLine(const PlayStatus& status);

/// The underruns alone, in words.
std::string underrunText(const PlayStatus& status);

} // namespace audlmd::command

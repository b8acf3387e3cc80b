#pragma once

#include "host/play/LiveReport.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// What the user sees of the transport.
struct PlayStatus {
    /// Of the file, or of the clip that sounds.
    std::string name;
    bool isPlaying = false;
    bool loops = false;
    /// Where a loop is marked of which the other end is not.
    std::optional<RangeSample> loopStart = std::nullopt;
    std::optional<RangeSample> loopEnd = std::nullopt;
    double speed = 1.0;
    /// In samples of the sound.
    std::int64_t position = 0;
    std::int64_t length = 0;
    int sampleRate = 48000;
    /// Times are in frames of pictures. 0: in milliseconds.
    double frameRate = 0.0;
    /// Linear, one for each channel.
    std::vector<float> peaks;
    /// The largest of them for a while, as HeldPeak gives it.
    float heldPeak = 0.0F;
    /// Of the keys, in decibels.
    double level = 0.0;
    /// Samples that the device got at full scale because they were beyond.
    std::uint64_t clipped = 0;
    LiveUnderruns underruns = {};
    std::uint64_t deviceUnderruns = 0;
};

/// Holds a peak for so long that its figure can be read, unless a larger one comes.
class HeldPeak {
public:
    /// The peak to show, with a new one. To be called as often as there are new ones.
    float with(float peak);

private:
    static constexpr int held = 20;
    float peak_ = 0.0F;
    int age_ = 0;
};

/// Where a status line is to be shown.
struct LineStyle {
    /// In characters.
    std::size_t width = std::numeric_limits<std::size_t>::max();
    bool hasColours = false;
};

/// One line: position, speed and loop, peak meters with the held peak, what is not as it should be, and the
/// name. Where it does not fit, the name is shortened, and then the meters are left out. What is beyond full
/// scale is red.
std::string statusLine(const PlayStatus& status, const LineStyle& style = {});

/// The underruns alone, in words.
std::string underrunText(const LiveUnderruns& underruns, std::uint64_t deviceUnderruns);

} // namespace audlmd::command

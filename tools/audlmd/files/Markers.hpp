#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// A moment of a sound file or a timeline that has a name: a cue point.
struct Marker {
    /// In samples of one channel.
    std::int64_t position = 0;
    /// In samples. 0: a moment only.
    std::int64_t length = 0;
    /// As the file has it, in any encoding. May be empty.
    std::string name;
    std::string comment = {};

    friend bool operator==(const Marker&, const Marker&) = default;
};

/// What a sampler plays again and again.
struct SampleLoop {
    /// The first sample, and the one behind the last.
    std::int64_t from = 0;
    std::int64_t to = 0;
    /// As the file has them: identifier, type, fraction of a sample, and how often (0: for ever).
    std::array<std::uint32_t, 4> settings{};

    friend bool operator==(const SampleLoop&, const SampleLoop&) = default;
};

/// How a sampler plays a file: its `smpl` chunk.
struct Sampler {
    /// As the file has them: manufacturer, product, period in nanoseconds, note, its fraction, and two on
    /// timecode.
    std::array<std::uint32_t, 7> settings{};
    std::vector<SampleLoop> loops;
    /// What only the sampler's maker knows.
    std::string rest;

    friend bool operator==(const Sampler&, const Sampler&) = default;
};

/// The part of a file or a timeline that becomes an output, in samples of the output's rate, and how it is
/// played.
struct RenderedPart {
    std::int64_t from = 0;
    /// Excluded.
    std::int64_t to = 0;
    /// The length of the whole.
    std::int64_t whole = 0;
    /// In samples of the part per sample of the output.
    double speed = 1.0;
    bool reverse = false;
};

/// The same markers in samples of another rate, to the nearest.
std::vector<Marker> atRate(std::vector<Marker> markers, double fromRate, int toRate);

/// The markers that stand in the part, where the output has them. What reaches beyond the part ends with it.
/// A marker at the end of the whole goes with the end. Backwards, a marker goes with its samples.
std::vector<Marker> markersIn(const RenderedPart& part, const std::vector<Marker>& markers);

/// The loops that lie in the part as a whole, where the output has them. Call this for a part at its own
/// speed and direction, because loops fit to the sample or not at all.
std::vector<SampleLoop> loopsIn(const RenderedPart& part, const std::vector<SampleLoop>& loops);

/// What one list does not have of the other, in words. Empty: nothing.
std::vector<std::string> lostMarkers(const std::vector<Marker>& found, const std::vector<Marker>& wanted);

} // namespace audlmd::command

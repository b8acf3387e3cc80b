#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace audlmd::command {

/// Draws a progress bar on standard error, at most ten times a second. Draws nothing if standard error is not
/// a terminal.
class Progress {
public:
    /// `total` in frames, `sampleRate` in frames per second. Without `shown` nothing is drawn. `about` stands
    /// behind the bar.
    Progress(std::int64_t total, int sampleRate, bool shown = true, std::string about = "");
    /// Erases the bar.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Call this whenever more is done. `done` is the number of frames so far.
    void update(std::int64_t done);

    /// The time since construction, in seconds.
    double elapsed() const;

private:
    std::int64_t total_;
    int sampleRate_;
    bool onTerminal_;
    std::string about_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point next_ = started_;
};

/// The last line of the report on a render: length, speed of rendering, and missing samples.
struct RenderSummary {
    std::int64_t frames = 0;
    int channels = 0;
    /// In frames per second.
    int sampleRate = 0;
    /// How long rendering and writing took.
    double seconds = 0.0;
    /// Of all channels together, see MaterialStatistics.
    std::uint64_t underrunSamples = 0;
    std::uint64_t underrunEpisodes = 0;

    std::string line() const;
};

} // namespace audlmd::command

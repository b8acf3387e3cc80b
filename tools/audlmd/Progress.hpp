#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace audlmd::command {

/// A bar on standard error, redrawn a few times a second. Nothing at all where that is not a terminal.
class Progress {
public:
    /// `total` in frames, `sampleRate` in frames per second.
    Progress(std::int64_t total, int sampleRate);
    /// Takes the bar away.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `done` frames are rendered and written.
    void update(std::int64_t done);

    /// Since the start, in seconds.
    double elapsed() const;

private:
    std::int64_t total_;
    int sampleRate_;
    bool onTerminal_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point next_ = started_;
};

/// The last line of a render: what was rendered, how fast, and what was missing.
struct RenderSummary {
    std::int64_t frames = 0;
    int channels = 0;
    int sampleRate = 0;
    double seconds = 0.0;
    std::uint64_t underrunSamples = 0;
    std::uint64_t underrunEpisodes = 0;

    std::string line() const;
};

} // namespace audlmd::command

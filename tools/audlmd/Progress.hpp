#pragma once

#include "tools/audlmd/JobLog.hpp"

#include <chrono>
#include <cstdint>

namespace audlmd::command {

/// How far a job is. Draws a bar on standard error, at most ten times a second, if that is a terminal; or
/// tells programs, at most twice a second.
class Progress {
public:
    /// `total` in frames, `sampleRate` in frames per second. Without `shown` nothing is drawn. `about` stands
    /// behind the bar.
    Progress(std::int64_t total, int sampleRate, bool shown = true, std::string about = "");
    /// In the style of the log, which must outlive this object.
    Progress(std::int64_t total, int sampleRate, const JobLog& log, std::string about = "");
    /// Erases the bar.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Call this whenever more is done. `done` is the number of frames so far.
    void update(std::int64_t done);

    /// The time since construction, in seconds.
    double elapsed() const;

private:
    void draw(std::int64_t done);

    std::int64_t total_;
    int sampleRate_;
    bool draws_;
    std::string about_;
    /// Null: no programs are told.
    const JobLog* log_ = nullptr;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point next_ = started_;
};

/// How often the frames could have been played in the seconds.
double timesRealTime(std::int64_t frames, int sampleRate, double seconds);

} // namespace audlmd::command

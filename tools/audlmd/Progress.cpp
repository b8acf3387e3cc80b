#include "tools/audlmd/Progress.hpp"

#include <algorithm>
#include <cstdio>
#include <string>
#include <unistd.h>
#include <utility>

namespace audlmd::command {
namespace {

/// The time between two drawings of the bar, and between two objects.
constexpr std::chrono::milliseconds redrawn{100};
constexpr std::chrono::milliseconds printedAgain{500};
/// In characters.
constexpr int barWidth = 40;

} // namespace

Progress::Progress(std::int64_t total, int sampleRate, bool shown, std::string about)
    : total_(total), sampleRate_(sampleRate), draws_(shown && isatty(STDERR_FILENO) == 1),
      about_(std::move(about)) {}

Progress::Progress(std::int64_t total, int sampleRate, const JobLog& log, std::string about)
    : Progress(total, sampleRate, !log.style().json && !log.style().quiet, std::move(about)) {
    if (log.style().json)
        log_ = &log;
}

Progress::~Progress() {
    if (drawn_)
        // Carriage return, then erase to the end of the line.
        std::fputs("\r\033[K", stderr);
}

void Progress::update(std::int64_t done) {
    if (!draws_ && log_ == nullptr)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now < next_)
        return;
    next_ = now + (log_ != nullptr ? printedAgain : redrawn);
    if (log_ != nullptr)
        log_->progress(done, total_);
    else
        draw(done);
}

void Progress::draw(std::int64_t done) {
    drawn_ = true;
    const double share = static_cast<double>(done) / static_cast<double>(total_);
    const std::string filled(static_cast<std::size_t>(share * barWidth), '#');
    std::fprintf(stderr, "\r[%-*s] %3d %%  %.0f times real time  %s\033[K", barWidth, filled.c_str(),
                 static_cast<int>(share * 100.0), timesRealTime(done, sampleRate_, elapsed()),
                 about_.c_str());
    std::fflush(stderr);
}

double Progress::elapsed() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
}

double timesRealTime(std::int64_t frames, int sampleRate, double seconds) {
    return static_cast<double>(frames) / sampleRate / std::max(seconds, 1e-6);
}

} // namespace audlmd::command

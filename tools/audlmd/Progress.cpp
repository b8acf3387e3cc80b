#include "tools/audlmd/Progress.hpp"

#include "host/words/Text.hpp"

#include <algorithm>
#include <cstdio>
#include <iomanip>
#include <sstream>
#include <unistd.h>
#include <utility>

namespace audlmd::command {
namespace {

/// The time between two drawings of the bar.
constexpr std::chrono::milliseconds redrawn{100};
/// In characters.
constexpr int barWidth = 40;

/// How often the frames could have been played in the seconds.
double timesRealTime(std::int64_t frames, int sampleRate, double seconds) {
    return static_cast<double>(frames) / sampleRate / std::max(seconds, 1e-6);
}

} // namespace

Progress::Progress(std::int64_t total, int sampleRate, bool shown, std::string about)
    : total_(total), sampleRate_(sampleRate), onTerminal_(shown && isatty(STDERR_FILENO) == 1),
      about_(std::move(about)) {}

Progress::~Progress() {
    if (drawn_)
        // Carriage return, then erase to the end of the line.
        std::fputs("\r\033[K", stderr);
}

void Progress::update(std::int64_t done) {
    if (!onTerminal_)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now < next_)
        return;
    next_ = now + redrawn;
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

std::string RenderSummary::line() const {
    std::ostringstream text;
    text << std::fixed << "rendered " << frames << " samples on "
         << words::counted(static_cast<std::uint64_t>(channels), "channel") << " (" << std::setprecision(3)
         << static_cast<double>(frames) / sampleRate << " s) in " << seconds << " s: " << std::setprecision(1)
         << timesRealTime(frames, sampleRate, seconds) << " times real time; underruns: " << underrunSamples
         << " samples in " << words::counted(underrunEpisodes, "episode");
    return text.str();
}

} // namespace audlmd::command

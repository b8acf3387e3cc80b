#pragma once

#include <ctime>

namespace audlmd::bench {

/// Of all threads, in seconds.
inline double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace audlmd::bench

#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stop_token>
#include <thread>

namespace audlmd::test {

/// Aborts the program, for a core or a debugger to look at, where a number stays the same for a minute.
class Watchdog {
public:
    explicit Watchdog(const std::atomic<std::uint64_t>& steps) : steps_(steps) {}

private:
    static constexpr int patience = 600;

    void watch(const std::stop_token& stop) const {
        std::uint64_t last = steps_;
        for (int still = 0; !stop.stop_requested(); ++still) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            if (steps_ != last)
                still = 0;
            last = steps_;
            if (still >= patience) {
                std::fputs("soak: nothing has moved for a minute\n", stderr);
                std::abort();
            }
        }
    }

    const std::atomic<std::uint64_t>& steps_;
    std::jthread thread_{[this](const std::stop_token& stop) { watch(stop); }};
};

} // namespace audlmd::test

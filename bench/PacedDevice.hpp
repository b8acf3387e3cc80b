#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <span>
#include <stop_token>
#include <thread>
#include <utility>
#include <vector>

namespace audlmd::bench {

/// Asks for stereo frames at 48 kHz at the pace of a sound card, on a thread of its own, until destroyed.
class PacedDevice {
public:
    using Fill = std::function<void(std::span<float> interleaved)>;

    PacedDevice(std::size_t block, Fill fill) : fill_(std::move(fill)), samples_(2 * block) {}

private:
    void run(const std::stop_token& stop) {
        const std::chrono::nanoseconds period(samples_.size() / 2 * 1'000'000'000 / 48000);
        for (auto next = std::chrono::steady_clock::now(); !stop.stop_requested(); next += period) {
            std::this_thread::sleep_until(next);
            fill_(samples_);
        }
    }

    const Fill fill_;
    std::vector<float> samples_;
    std::jthread thread_{[this](const std::stop_token& stop) { run(stop); }};
};

} // namespace audlmd::bench

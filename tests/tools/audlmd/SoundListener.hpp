#pragma once

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace audlmd::test {

/// Keeps all that comes out of a pipe, which the constructor makes: interleaved stereo floats.
class SoundListener {
public:
    /// A listener with a pace takes what comes as slowly as a sound card of 48 kHz, and so holds up whoever
    /// plays.
    SoundListener(const std::filesystem::path& pipe, bool hasPace);
    ~SoundListener();
    SoundListener(const SoundListener&) = delete;
    SoundListener& operator=(const SoundListener&) = delete;

    std::vector<float> heard() const;
    void forget();

private:
    static constexpr std::size_t frameBytes = 2 * sizeof(float);

    void listen(const std::stop_token& stop);

    const int pipe_;
    const bool hasPace_;
    mutable std::mutex mutex_;
    std::string bytes_;
    std::jthread thread_;
};

} // namespace audlmd::test

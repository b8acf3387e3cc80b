#pragma once

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace audlmd::test {

/// Keeps all that comes out of a pipe, which the constructor makes: interleaved stereo floats. Takes them as
/// slowly as a sound card of 48 kHz, and so holds up whoever plays.
class SoundListener {
public:
    explicit SoundListener(const std::filesystem::path& pipe);
    ~SoundListener();
    SoundListener(const SoundListener&) = delete;
    SoundListener& operator=(const SoundListener&) = delete;

    /// Waits until the pipe is empty. Nobody may have it open to write.
    std::vector<float> heardToTheEnd() const;
    void forget();

private:
    static constexpr std::size_t frameBytes = 2 * sizeof(float);

    void listen(const std::stop_token& stop);

    const int pipe_;
    mutable std::mutex mutex_;
    std::string bytes_;
    /// How often the pipe was found empty without a writer.
    std::atomic<int> ends_{0};
    std::jthread thread_;
};

} // namespace audlmd::test

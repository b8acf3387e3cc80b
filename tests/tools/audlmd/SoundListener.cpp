#include "tests/tools/audlmd/SoundListener.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace audlmd::test {
namespace {

using namespace std::chrono_literals;

int openPipe(const std::filesystem::path& path) {
    mkfifo(path.c_str(), 0600);
    const int pipe = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    // A full pipe holds the program up, where a sound card would.
    fcntl(pipe, F_SETPIPE_SZ, 4096);
    return pipe;
}

} // namespace

SoundListener::SoundListener(const std::filesystem::path& pipe)
    : pipe_(openPipe(pipe)), thread_([this](const std::stop_token& stop) { listen(stop); }) {}

SoundListener::~SoundListener() {
    thread_ = {};
    close(pipe_);
}

std::vector<float> SoundListener::heardToTheEnd() const {
    // The read that finds the next end may have begun before this call, the one after it has not.
    for (int times = 0; times < 2; ++times)
        ends_.wait(ends_);
    const std::lock_guard lock(mutex_);
    std::vector<float> samples(bytes_.size() / sizeof(float));
    std::memcpy(samples.data(), bytes_.data(), samples.size() * sizeof(float));
    return samples;
}

void SoundListener::forget() {
    const std::lock_guard lock(mutex_);
    // Whoever plays on is in the middle of a frame perhaps.
    bytes_.erase(0, bytes_.size() / frameBytes * frameBytes);
}

void SoundListener::listen(const std::stop_token& stop) {
    std::vector<char> bytes(4096);
    for (auto next = std::chrono::steady_clock::now(); !stop.stop_requested();) {
        const ssize_t found = read(pipe_, bytes.data(), bytes.size());
        const auto count = static_cast<std::size_t>(std::max<ssize_t>(0, found));
        if (found == 0) {
            ++ends_;
            ends_.notify_all();
        }
        {
            const std::lock_guard lock(mutex_);
            bytes_.append(bytes.data(), count);
        }
        next += std::chrono::microseconds(count / frameBytes * 1'000'000 / 48000);
        next = std::max(next, std::chrono::steady_clock::now() + 1ms);
        std::this_thread::sleep_until(next);
    }
}

} // namespace audlmd::test

#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>
#include <vector>

namespace audlmd::test {

using Path = std::filesystem::path;
using Channels = std::vector<std::vector<float>>;

/// How a run of the command ended.
struct Outcome {
    /// The exit status, or minus the signal that ended it.
    int status = 0;
    std::string output;
    std::string errors;
};

/// A folder of its own for each test, and the command to run in it.
class CommandFixture : public testing::Test {
protected:
    CommandFixture();
    ~CommandFixture() override;

    Path in(const std::string& name) const { return folder_ / name; }
    /// The names in the folder, but for what the fixture itself puts there.
    std::vector<std::string> names() const;

    /// Runs `audlmd` in the folder and waits for its end. Settings of its environment are `NAME=value`.
    Outcome run(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {});
    /// The same, with files no larger than so many bytes: as on a full disk.
    Outcome runWithFileSizeLimit(std::size_t bytes, const std::vector<std::string>& arguments);
    /// The same, ended by the signal as soon as `ready` holds.
    Outcome runUntil(const std::function<bool()>& ready, int signal,
                     const std::vector<std::string>& arguments);

    /// Runs `audlmd render` and expects success.
    void render(std::vector<std::string> arguments);

private:
    pid_t start(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                std::size_t fileSizeLimit) const;
    Outcome finish(pid_t process) const;

    Path folder_;
};

/// A sound file of floats, or of another of libsndfile's sample formats.
void writeSound(const Path& path, const Channels& channels, int sampleRate = 48000);
void writeSound(const Path& path, const Channels& channels, int sampleRate, int type);
Channels readSound(const Path& path);
/// Samples as libsndfile's ints, which hold every integer format exactly.
std::vector<int> readInts(const Path& path);

std::string readBytes(const Path& path);
void writeBytes(const Path& path, const std::string& bytes);

/// Samples on a grid of 2^-15 inside full scale, different in every channel; the same for the same seed.
Channels noise(std::size_t channels, std::size_t frames, unsigned int seed = 1);

} // namespace audlmd::test

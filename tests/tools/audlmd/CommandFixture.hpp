#pragma once

#include <gtest/gtest.h>
#include <sndfile.h>

#include <filesystem>
#include <map>
#include <string>
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

/// What is out of the ordinary about a run.
struct Surroundings {
    /// Files grow to no more than so many bytes, as on a full disk.
    std::size_t fileSizeLimit = 0;
    /// Sent as soon as the run has begun a temporary file.
    int signal = 0;
};

/// A folder of its own for each test, and the command to run in it.
class CommandFixture : public testing::Test {
protected:
    CommandFixture();
    ~CommandFixture() override;

    Path in(const std::string& name) const { return folder_ / "files" / name; }
    /// What the folder holds: the bytes of the files by their names.
    std::map<std::string, std::string> files() const;

    /// Runs `audlmd` in the folder with the words of `line`, and waits for its end.
    Outcome run(const std::string& line, const Surroundings& surroundings = {}) const;
    /// The same, and expects success without a word of error. Returns the output.
    std::string output(const std::string& line) const;
    /// The same, and expects a failure, one line of error that holds `part`, and every file as it was.
    void expectRefused(const std::string& line, const std::string& part,
                       const Surroundings& surroundings = {}) const;

private:
    Path folder_;
};

/// A sound file of floats, or of another of libsndfile's sample formats.
void writeSound(const Path& path, const Channels& channels, int sampleRate = 48000,
                int type = SF_FORMAT_WAV | SF_FORMAT_FLOAT);
Channels readSound(const Path& path);
std::vector<float> interleaved(const Channels& channels);

std::string readBytes(const Path& path);
void writeBytes(const Path& path, const std::string& bytes);

/// Samples on a grid of 2^-15 inside full scale, different in every channel; the same for the same seed.
Channels noise(std::size_t channels, std::size_t frames, unsigned int seed = 1);
/// One channel of one second at 48 kHz.
Channels sine(double frequency, double amplitude);

} // namespace audlmd::test

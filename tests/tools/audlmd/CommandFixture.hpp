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

/// Runs the command in a folder that each test has for itself.
class CommandFixture : public testing::Test {
protected:
    CommandFixture();
    ~CommandFixture() override;

    Path in(const std::string& name) const { return folder_ / "files" / name; }
    /// The bytes of all files in the folder, by name.
    std::map<std::string, std::string> files() const;

    /// Runs `audlmd` in the folder with the words of `line`, and waits for its end.
    Outcome run(const std::string& line) const;
    /// Runs `audlmd`, expects exit status 0 and nothing on standard error, and returns standard output.
    std::string output(const std::string& line) const;
    /// Runs `audlmd`, and expects a failure: one line of error that contains `part`, no output, and all files
    /// unchanged. A status of 2 is one of usage, 3 of an input, 5 of an output.
    void expectRefused(const std::string& line, const std::string& part, int status = 2) const;

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

/// Noise below full scale in steps of 2^-15, different in every channel. Equal seeds give equal noise.
Channels noise(std::size_t channels, std::size_t frames, unsigned int seed = 1);
/// Six channels of it, so soft that a fold-down of them clips nothing.
Channels softNoise(std::size_t frames);
/// One channel of one second at 48 kHz.
Channels sine(double frequency, double amplitude);

} // namespace audlmd::test

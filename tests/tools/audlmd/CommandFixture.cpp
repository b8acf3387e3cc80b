#include "tests/tools/audlmd/CommandFixture.hpp"

#include <sndfile.hh>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <numbers>
#include <random>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace audlmd::test {

CommandFixture::CommandFixture() {
    // Tests send this signal to commands, which inherit its neglect where the tests run under nohup.
    std::signal(SIGHUP, SIG_DFL);
    std::string name = (std::filesystem::temp_directory_path() / "audlmd-test-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    std::filesystem::create_directory(folder_ / "files");
}

CommandFixture::~CommandFixture() {
    std::filesystem::remove_all(folder_);
}

std::map<std::string, std::string> CommandFixture::files() const {
    std::map<std::string, std::string> found;
    std::error_code circle;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "files"))
        found[entry.path().filename().string()] = entry.is_directory(circle) ? "" : readBytes(entry.path());
    return found;
}

Outcome CommandFixture::run(const std::string& line) const {
    std::istringstream stream("audlmd " + line);
    std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    const Path output = folder_ / "output";
    const Path errors = folder_ / "errors";
    const pid_t process = fork();
    if (process == 0) {
        dup2(open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
        dup2(open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
        std::filesystem::current_path(folder_ / "files");
        setenv("XDG_CACHE_HOME", (folder_ / "cache").c_str(), 1);
        execv(AUDLMD_COMMAND, argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(process, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), readBytes(output),
            readBytes(errors)};
}

std::string CommandFixture::output(const std::string& line) const {
    const Outcome outcome = run(line);
    EXPECT_EQ(outcome.status, 0) << line;
    EXPECT_EQ(outcome.errors, "") << line;
    return outcome.output;
}

void CommandFixture::expectRefused(const std::string& line, const std::string& part, int status) const {
    const auto before = files();
    const Outcome outcome = run(line);
    EXPECT_EQ(outcome.status, status) << line;
    EXPECT_TRUE(outcome.errors.starts_with("audlmd: ")) << outcome.errors;
    EXPECT_NE(outcome.errors.find(part), std::string::npos) << outcome.errors << "has no " << part;
    EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    EXPECT_EQ(outcome.output, "") << line;
    EXPECT_TRUE(files() == before) << line;
}

void writeSound(const Path& path, const Channels& channels, int sampleRate, int type) {
    SndfileHandle file(path.string(), SFM_WRITE, type, static_cast<int>(channels.size()), sampleRate);
    // Doubles are written without libsndfile's scaling, which would take 1.0 to one step below full scale.
    file.command(SFC_SET_NORM_DOUBLE, nullptr, SF_FALSE);
    const int subtype = type & SF_FORMAT_SUBMASK;
    const double scale = subtype == SF_FORMAT_PCM_16 ? 0x1p15 : subtype == SF_FORMAT_PCM_24 ? 0x1p23 : 1.0;
    std::vector<double> samples;
    for (const float sample : interleaved(channels))
        samples.push_back(static_cast<double>(sample) * scale);
    file.write(samples.data(), static_cast<sf_count_t>(samples.size()));
}

Channels readSound(const Path& path) {
    SndfileHandle file(path.string());
    if (file.error() != 0)
        throw std::runtime_error(path.string() + ": " + file.strError());
    Channels channels(static_cast<std::size_t>(file.channels()));
    std::vector<float> frame(channels.size());
    while (file.readf(frame.data(), 1) == 1)
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
            channels[channel].push_back(frame[channel]);
    return channels;
}

std::vector<float> interleaved(const Channels& channels) {
    std::vector<float> samples;
    for (std::size_t n = 0; n < channels.front().size(); ++n)
        for (const std::vector<float>& channel : channels)
            samples.push_back(channel[n]);
    return samples;
}

std::string readBytes(const Path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeBytes(const Path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

Channels noise(std::size_t channels, std::size_t frames, unsigned int seed) {
    std::minstd_rand generator(seed);
    std::uniform_int_distribution<int> step(-30000, 30000);
    Channels made(channels, std::vector<float>(frames));
    for (std::vector<float>& channel : made)
        std::ranges::generate(channel, [&] { return static_cast<float>(step(generator)) * 0x1p-15F; });
    return made;
}

Channels softNoise(std::size_t frames) {
    Channels made = noise(6, frames);
    for (std::vector<float>& channel : made)
        for (float& sample : channel)
            sample /= 4.0F;
    return made;
}

Channels sine(double frequency, double amplitude) {
    Channels made(1);
    for (int n = 0; n < 48000; ++n)
        made[0].push_back(
            static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * frequency * n / 48000.0)));
    return made;
}

} // namespace audlmd::test

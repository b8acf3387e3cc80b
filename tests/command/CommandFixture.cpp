#include "tests/command/CommandFixture.hpp"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <random>
#include <sndfile.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace audlmd::test {
namespace {

const std::string outputName = ".stdout";
const std::string errorsName = ".stderr";

void redirect(const Path& path, int descriptor) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(file, descriptor);
}

SNDFILE* openSound(const Path& path, int mode, SF_INFO& info) {
    SNDFILE* file = sf_open(path.c_str(), mode, &info);
    if (file == nullptr)
        throw std::runtime_error(path.string() + ": " + sf_strerror(nullptr));
    return file;
}

} // namespace

CommandFixture::CommandFixture() {
    std::string name = (std::filesystem::temp_directory_path() / "audlmd-test-XXXXXX").string();
    folder_ = mkdtemp(name.data());
}

CommandFixture::~CommandFixture() {
    std::filesystem::remove_all(folder_);
}

std::vector<std::string> CommandFixture::names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
        if (const std::string name = entry.path().filename().string();
            name != outputName && name != errorsName)
            found.push_back(name);
    std::ranges::sort(found);
    return found;
}

pid_t CommandFixture::start(const std::vector<std::string>& arguments,
                            const std::vector<std::string>& environment, std::size_t fileSizeLimit) const {
    const pid_t process = fork();
    if (process != 0)
        return process;
    redirect(folder_ / outputName, STDOUT_FILENO);
    redirect(folder_ / errorsName, STDERR_FILENO);
    std::filesystem::current_path(folder_);
    for (const std::string& setting : environment)
        putenv(strdup(setting.c_str()));
    if (fileSizeLimit != 0) {
        const rlimit limit{fileSizeLimit, fileSizeLimit};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    std::vector<char*> argv{strdup("audlmd")};
    for (const std::string& argument : arguments)
        argv.push_back(strdup(argument.c_str()));
    argv.push_back(nullptr);
    execv(AUDLMD_COMMAND, argv.data());
    _exit(127);
}

Outcome CommandFixture::finish(pid_t process) const {
    int status = 0;
    waitpid(process, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), readBytes(folder_ / outputName),
            readBytes(folder_ / errorsName)};
}

Outcome CommandFixture::run(const std::vector<std::string>& arguments,
                            const std::vector<std::string>& environment) {
    return finish(start(arguments, environment, 0));
}

Outcome CommandFixture::runWithFileSizeLimit(std::size_t bytes, const std::vector<std::string>& arguments) {
    return finish(start(arguments, {}, bytes));
}

Outcome CommandFixture::runUntil(const std::function<bool()>& ready, int signal,
                                 const std::vector<std::string>& arguments) {
    const pid_t process = start(arguments, {}, 0);
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!ready() && std::chrono::steady_clock::now() < giveUp)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kill(process, signal);
    return finish(process);
}

void CommandFixture::render(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "render");
    const Outcome outcome = run(arguments);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
}

void writeSound(const Path& path, const Channels& channels, int sampleRate) {
    writeSound(path, channels, sampleRate, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
}

void writeSound(const Path& path, const Channels& channels, int sampleRate, int type) {
    SF_INFO info{};
    info.channels = static_cast<int>(channels.size());
    info.samplerate = sampleRate;
    info.format = type;
    SNDFILE* file = openSound(path, SFM_WRITE, info);
    // libsndfile scales floats to one step less than full scale, but takes doubles as they are told to be.
    sf_command(file, SFC_SET_NORM_DOUBLE, nullptr, SF_FALSE);
    const int subtype = type & SF_FORMAT_SUBMASK;
    const double scale = subtype == SF_FORMAT_PCM_16 ? 0x1p15 : subtype == SF_FORMAT_PCM_24 ? 0x1p23 : 1.0;
    std::vector<double> frame(channels.size());
    for (std::size_t n = 0; n < channels.front().size(); ++n) {
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
            frame[channel] = static_cast<double>(channels[channel][n]) * scale;
        sf_writef_double(file, frame.data(), 1);
    }
    sf_close(file);
}

Channels readSound(const Path& path) {
    SF_INFO info{};
    SNDFILE* file = openSound(path, SFM_READ, info);
    Channels channels(static_cast<std::size_t>(info.channels));
    std::vector<float> frame(channels.size());
    while (sf_readf_float(file, frame.data(), 1) == 1)
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
            channels[channel].push_back(frame[channel]);
    sf_close(file);
    return channels;
}

std::vector<int> readInts(const Path& path) {
    SF_INFO info{};
    SNDFILE* file = openSound(path, SFM_READ, info);
    std::vector<int> samples(static_cast<std::size_t>(info.frames * info.channels));
    sf_read_int(file, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(file);
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

} // namespace audlmd::test

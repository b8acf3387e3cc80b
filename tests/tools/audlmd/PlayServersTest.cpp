// Live playback through sound servers, which need no sound card either. Each test starts a server of its own,
// and is skipped where the server is not installed.

#include "tests/tools/audlmd/PlayFixture.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <optional>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace audlmd::test {
namespace {

using namespace std::chrono_literals;

bool isInstalled(const std::string& program) {
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (access((Path(folder) / program).c_str(), X_OK) == 0)
            return true;
    return false;
}

/// A program that runs until this object is destroyed. What it says is dropped.
class Background {
public:
    explicit Background(std::vector<std::string> words) : process_(fork()) {
        if (process_ != 0)
            return;
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        const int nowhere = open("/dev/null", O_RDWR);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
        execvp(argv.front(), argv.data());
        _exit(127);
    }
    ~Background() {
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
    }
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

private:
    pid_t process_;
};

bool soon(const std::function<bool()>& condition) {
    for (int tries = 0; tries < 1000; ++tries) {
        if (condition())
            return true;
        std::this_thread::sleep_for(10ms);
    }
    return false;
}

/// With a null sink, whose monitor a recorder writes into the listener's pipe.
class PulseAudio : public PlayFixture {
protected:
    PulseAudio() : PlayFixture("pcm.!default { type pulse device \"test\" }\n", false) {
        setenv("HOME", in("sound").c_str(), 1);
        setenv("PULSE_RUNTIME_PATH", in("sound").c_str(), 1);
        setenv("PULSE_SERVER", ("unix:" + in("sound/server").string()).c_str(), 1);
    }
    void SetUp() override {
        if (!isInstalled("pulseaudio") || !isInstalled("parec"))
            GTEST_SKIP() << "pulseaudio or pulseaudio-utils is not installed";
        server_.emplace(std::vector<std::string>{
            "pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
            "--disable-shm=yes", "-L",
            "module-native-protocol-unix auth-anonymous=1 socket=" + in("sound/server").string(), "-L",
            "module-null-sink sink_name=test format=float32le rate=48000 channels=2"});
        ASSERT_TRUE(soon([&] { return exists(in("sound/server")); }));
        recorder_.emplace(std::vector<std::string>{"parec", "--device=test.monitor", "--format=float32le",
                                                   "--rate=48000", "--channels=2", "--raw",
                                                   in("sound/device").string()});
        ASSERT_TRUE(soon([&] { return !listener().heard().empty(); }));
    }

private:
    std::optional<Background> server_;
    std::optional<Background> recorder_;
};

TEST_F(PulseAudio, PlaysTheSamplesOfRender) {
    writeSound(in("a.wav"), noise(2, 40'000));
    for (const std::string options : {"", "--reverse", "--speed 1.1 --gain -3"})
        expectPlaysWhatRenderWrites(options);
}

/// With the dummy driver, which takes frames at the pace of a clock and drops them.
class Jack : public PlayFixture {
protected:
    // Without a device of ALSA's, JACK has the default one.
    Jack() : PlayFixture("pcm.unusable.word 1\n", true) {
        setenv("JACK_DEFAULT_SERVER", server_.c_str(), 1);
        setenv("JACK_NO_START_SERVER", "1", 1);
        setenv("JACK_NO_AUDIO_RESERVATION", "1", 1);
    }
    void SetUp() override {
        if (!isInstalled("jackd"))
            GTEST_SKIP() << "jackd2 is not installed";
        driver_.emplace(std::vector<std::string>{"jackd", "--no-realtime", "--name", server_, "--timeout",
                                                 "5000", "-d", "dummy", "-r", "48000", "-p", "256"});
        ASSERT_TRUE(soon([&] { return run("play --list-devices").output.starts_with("* system  (JACK"); }));
    }

private:
    const std::string server_ = "audlmd-test-" + std::to_string(getpid());
    std::optional<Background> driver_;
};

TEST_F(Jack, CountsTheUnderrunsOfTheDevice) {
    writeSound(in("a.wav"), noise(2, 96'000));
    // The driver plays on without the command meanwhile.
    const Outcome outcome = run("play a.wav", {.pause = 200});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, testing::ContainsRegex("device: [1-9][0-9]* underrun"));
}

} // namespace
} // namespace audlmd::test

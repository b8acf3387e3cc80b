#include "tests/tools/audlmd/PlayFixture.hpp"
#include "tools/audlmd/play/PlayInput.hpp"
#include "tools/audlmd/play/StatusLine.hpp"
#include "tools/audlmd/play/TransportKeys.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace audlmd::test {
namespace {

using namespace std::chrono_literals;
using namespace command;
using testing::HasSubstr;

class PlayCommand : public PlayFixture {};

TEST_F(PlayCommand, PlaysTheSamplesOfRenderAndMix) {
    writeSound(in("a.wav"), noise(2, 40'000));
    for (const std::string options :
         {"", "--map 2,1", "--from 0.3", "--reverse", "--speed 1.1 --converter filtering",
          "--speed 0.8 --reverse --converter filtering", "--speed 1.5 --converter linear --reverse",
          "--speed 1.25 --converter best --fade-in 0.2", "--speed 1.25 --converter best --reverse",
          "--eq peak:1k:3 --gain 27 --level -30 --fade-in 0.2 --fade-out 0.1:log --reverse"})
        expectPlaysWhatRenderWrites(options);
    writeBytes(in("film.json"), R"({"audlmd": 1, "sampleRate": 48000, "channels": 2, "tracks": [{"name": "A1",
        "strips": [{"media": "a.wav", "at": 0, "from": 0, "to": 30000, "gain": -6},
                   {"media": "a.wav", "at": 9000, "from": 0, "to": 30000, "reverse": true, "gain": -6}]}]})");
    output("mix film.json -o mix.wav --format f32");
    std::vector<float> mix = interleaved(readSound(in("mix.wav")));
    EXPECT_TRUE(holds(heard("film.json"), mix));
    std::string two = readBytes(in("film.json"));
    two.insert(two.size() - 2, R"(, {"name": "B", "strips": [{"media": "a.wav", "to": 30000}]})");
    writeBytes(in("two.json"), two);
    EXPECT_TRUE(holds(heard("two.json --mute B"), mix));
    for (float& sample : mix)
        sample /= 2.0F;
    EXPECT_TRUE(holds(heard("film.json --gain -6.020599913"), mix));
}

TEST_F(PlayCommand, TellsWhatIsNotPlayedAsItWasAskedAndGoesOnWithTheNextInput) {
    writeSound(in("a.wav"), noise(2, 4800));
    writeSound(in("six.wav"), softNoise(4800));
    writeBytes(in("film.json"), R"({"audlmd": 1, "frameRate": 25, "tracks": [{"name": "A", "strips": [
        {"name": "six", "media": "six.wav", "at": 0, "from": 0, "to": 4800},
        {"name": "off", "media": "gone.wav", "at": 10, "from": 0, "to": 99}]}]})");
    struct {
        std::string line;
        std::vector<std::string> parts;
        int status;
    } const table[] = {
        {"a.wav --gain 3", {"clipped: channel 1: ", "by up to 2.2", "clipped: channel 2: "}, 0},
        {"a.wav --speed 20", {"note: --speed: 20 is beyond the band-limited converter"}, 0},
        {"film.json",
         {"note: track 'A', clip 'six', at 0:00:00.000: 5.1 is folded down to stereo",
          "gone.wav' is not there"},
         4},
        {"a.wav gone.wav six.wav", {"a.wav (1 of 3)", "six.wav (3 of 3)"}, 3},
    };
    for (const auto& row : table) {
        const Outcome outcome = run("play " + row.line);
        EXPECT_EQ(outcome.status, row.status) << outcome.errors;
        for (const std::string& part : row.parts)
            EXPECT_THAT(outcome.output, HasSubstr(part));
    }
}

TEST_F(PlayCommand, FoldsDownForADeviceOfFewerChannels) {
    writeSound(in("six.wav"), noise(6, 100));
    writeBytes(in("film.json"), R"({"audlmd": 1, "channels": 6, "tracks": [{"strips": [
        {"name": "one", "media": "six.wav", "at": 0, "from": 0, "to": 40},
        {"name": "two", "media": "six.wav", "at": 30, "from": 0, "to": 40}]}]})");
    for (const std::string name : {"six.wav", "film.json"}) {
        const PlayOptions options;
        PlayInput input(options, in(name), {.path = in(name)});
        const bool isFilm = name == "film.json";
        EXPECT_EQ(input.nameAt(29), isFilm ? "one" : name);
        EXPECT_EQ(input.nameAt(30), isFilm ? "two +1" : name);
        EXPECT_EQ(input.nameAt(70), name);
        EXPECT_EQ(input.foldDownTo(2), "5.1 is folded down to stereo, without LFE");
        EXPECT_EQ(input.foldDownTo(1), "stereo is folded down to mono");
        EXPECT_EQ(input.channels(), 1U);
        input.foldDownTo(2);
        EXPECT_EQ(input.makePlayer({})->channels(), 2U);
    }
}

TEST_F(PlayCommand, SaysWhatCannotBePlayed) {
    writeSound(in("a.wav"), noise(1, 4800));
    writeBytes(in("film.json"), R"({"audlmd": 1, "tracks": []})");
    // The content says which file is a timeline.
    writeBytes(in("film.wav"), "\n" + readBytes(in("film.json")));
    std::filesystem::copy(in("a.wav"), in("a.otio"));
    EXPECT_THAT(output("play --list-devices"), testing::StartsWith("* default  (ALSA, "));
    expectRefused("play", "name a sound file");
    expectRefused("play gone.wav", "gone.wav", 3);
    expectRefused("play film.json", "nothing to play", 3);
    for (const std::string film : {"film.json", "film.wav"})
        for (const std::string option :
             {"--level 3", "--eq peak:1k:3", "--fade-in 1", "--fade-out 1", "--automation a.csv",
              "--speed 2 --converter linear", "--stream 1", "--relabel 48:24"})
            expectRefused("play a.wav " + film + " " + option,
                          film + "' is a timeline, which has its own levels");
    expectRefused("play a.wav --mute A1", "--only and --mute go with a timeline");
    for (const std::string sound : {"a.wav", "a.otio"})
        expectRefused("play " + sound + " --media .", "goes with a timeline");
    expectRefused("play a.wav --device piano", "'piano'; --list-devices");
    // A device that fails while it plays, of which the libraries below write four lines.
    writeBytes(in("asoundrc"), R"(pcm.!default { type file slave.pcm { type null } file "/dev/full" })");
    expectRefused("play a.wav", "the sound device has stopped", 5);
    writeBytes(in("asoundrc"),
               "pcm.!default { type null }\npcm.one { type null }\npcm.another { type null }");
    expectRefused("play a.wav --device O", "several sound devices are called 'O'");
    for (const std::string device : {"one", "ANO"})
        EXPECT_THAT(output("play a.wav --device " + device), HasSubstr("late: "));
    writeBytes(in("asoundrc"), "pcm.unusable.word 1\n");
    expectRefused("play a.wav", "no sound device", 5);
}

/// The command on a terminal, which the test reads and types on.
class TypedCommand {
public:
    /// `line` is for a shell with job control, which calls the command $PLAY.
    explicit TypedCommand(const std::string& line)
        : process_(forkpty(&terminal_, nullptr, nullptr, nullptr)) {
        if (process_ == 0) {
            setenv("PLAY", AUDLMD_COMMAND " play", 1);
            execl("/bin/sh", "sh", "-mc", line.c_str(), nullptr);
            _exit(127);
        }
    }
    ~TypedCommand() { close(terminal_); }
    TypedCommand(const TypedCommand&) = delete;
    TypedCommand& operator=(const TypedCommand&) = delete;

    void type(const std::string& keys) const {
        EXPECT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    /// Reads until the text is on the screen, behind the text that was awaited before.
    void await(const std::string& text) {
        std::vector<char> bytes(4096);
        pollfd output{.fd = terminal_, .events = POLLIN, .revents = 0};
        while (screen_.find(text) == std::string::npos && poll(&output, 1, 5000) > 0) {
            const ssize_t count = read(terminal_, bytes.data(), bytes.size());
            if (count <= 0)
                break;
            screen_.append(bytes.data(), static_cast<std::size_t>(count));
        }
        EXPECT_THAT(screen_, HasSubstr(text));
        screen_.erase(0, screen_.find(text) + text.size());
    }
    tcflag_t modes() const {
        termios terminal{};
        tcgetattr(terminal_, &terminal);
        return terminal.c_lflag;
    }
    void kill(int signal) const { ::kill(process_, signal); }
    /// The exit status, or the signal that has ended the command.
    int end() const {
        int status = -1;
        for (int tries = 0; tries < 500 && waitpid(process_, &status, WNOHANG) == 0; ++tries)
            std::this_thread::sleep_for(10ms);
        return WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
    }

private:
    int terminal_ = -1;
    pid_t process_;
    std::string screen_;
};

TEST_F(PlayCommand, ObeysKeysAndLeavesTheTerminalAsItWas) {
    writeSound(in("a.wav"), noise(2, 48'000 * 60));
    writeSound(in("b.wav"), noise(2, 480));
    for (const int signal : {0, SIGTERM, SIGINT, SIGHUP}) {
        TypedCommand command("cd " + in("").string() + "; exec $PLAY b.wav a.wav");
        const tcflag_t before = command.modes();
        command.await("b.wav (1 of 2)");
        command.await("/0:01:00.000 +1x [");
        EXPECT_EQ(command.modes() & (ICANON | ECHO), 0U);
        command.type("?");
        command.await("the next and the previous input");
        command.type("p");
        command.await("b.wav (1 of 2)");
        command.type("n\x1A"); // Nobody could let this command go on, so it is not stopped.
        command.await("/0:01:00.000 +1x [");
        command.type("l");
        command.await("+2x [");
        command.type("k");
        command.await("| 0:00:0");
        command.type("\033[F");
        command.await("| 0:01:00.000/");
        if (signal == 0)
            command.type("q");
        else
            command.kill(signal);
        EXPECT_EQ(command.end(), signal);
        EXPECT_EQ(command.modes(), before) << signal;
    }
}

class ProgressBars : public CommandFixture {};

TEST_F(ProgressBars, ShowHowMuchIsDoneAndLeaveNothing) {
    writeSound(in("a.wav"), noise(2, 144'000));
    writeBytes(in("film.json"),
               R"({"audlmd": 1, "tracks": [{"strips": [{"media": "a.wav", "to": 144000}]}]})");
    // A bar is first drawn after the first chunk.
    for (const auto& [line, bar] : std::vector<std::pair<std::string, std::string>>{
             {"render a.wav -o b.wav --format s16", "\r[##################                      ]  45 %  "},
             {"render a.wav -o b.wav --normalise -1", "]  22 %  "},
             {"plot waveform a.wav -o a.svg", "]  45 %  "},
             {"mix film.json --picture a.svg", "]  45 %  "}}) {
        TypedCommand command("cd " + in("").string() + "; " AUDLMD_COMMAND " " + line + "; echo ended $?");
        command.await(bar);
        command.await(line.find("normalise") != line.npos ? "writing, pass 2 of 2" : " times real time");
        command.await("\r\033[K");
        command.await("ended 0");
    }
}

TEST_F(PlayCommand, PlaysInTheBackgroundWithoutKeys) {
    writeSound(in("short.wav"), noise(2, 24'000));
    writeSound(in("long.wav"), noise(2, 48'000 * 60));
    struct {
        std::string line, shown, typed;
    } const table[] = {
        {"stty tostop; $PLAY short.wav & wait $!; echo ended $?", "late: 0 samples", ""},
        {"$PLAY long.wav & sleep 1; kill $!; wait $!; echo ended $(($? - 143))", "", ""},
        {"$PLAY long.wav & sleep 0.2; fg; echo ended $?", "/0:01:00.000 +1x [", "q"},
        {"stty tostop; $PLAY short.wav </dev/null & wait $!; echo ended $?", "late: 0 samples", ""},
        // Ctrl-Z gives the terminal back, and bg plays on.
        {"$PLAY long.wav; stty -a | grep -q ' icanon' && bg; sleep 0.3; kill %1; wait %1; "
         "echo ended $(($? - 143))",
         "/0:01:00.000 +1x [", "\x1A"},
        // Stopped and let go on, the command leaves the terminal to the shell.
        {"$PLAY long.wav & (sleep 1; kill -STOP $!) & fg %1; stty echo icanon; bg %1; sleep 0.2; kill %1; "
         "wait %1; "
         "echo ended $(($? - 143))",
         "/0:01:00.000 +1x [", ""},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.line);
        TypedCommand command("cd " + in("").string() + "; " + row.line);
        const tcflag_t before = command.modes();
        command.await(row.shown);
        command.type(row.typed);
        command.await("ended 0");
        EXPECT_EQ(command.end(), 0);
        EXPECT_EQ(command.modes() & (ICANON | ECHO), before & (ICANON | ECHO));
    }
}

std::string told(const std::vector<TransportCommand>& commands) {
    struct Tell {
        std::ostringstream& text;
        void operator()(Play) const { text << "play "; }
        void operator()(Stop) const { text << "stop "; }
        void operator()(Quit) const { text << "quit "; }
        void operator()(NextInput) const { text << "next "; }
        void operator()(PreviousInput) const { text << "previous "; }
        void operator()(ShowKeys) const { text << "keys "; }
        void operator()(SetSpeed command) const { text << command.speed << "x "; }
        void operator()(Seek command) const { text << "seek " << command.position << " "; }
        void operator()(Jog command) const { text << "jog " << command.samples << " "; }
        void operator()(SetLoop command) const {
            if (command.range)
                text << "loop " << command.range->from << "-" << command.range->to << " ";
            else
                text << "no loop ";
        }
        void operator()(SetLevel command) const { text << command.decibels << "dB "; }
    };
    std::ostringstream text;
    for (const TransportCommand& command : commands)
        std::visit(Tell{text}, command);
    return text.str();
}

TEST(TransportKeys, TurnKeysIntoCommands) {
    struct Case {
        std::string keys;
        TransportNow now;
        std::string expected;
    };
    const TransportNow stopped{.isPlaying = false, .speed = 4.0, .position = 50000};
    const auto at = [](double speed) {
        return TransportNow{.isPlaying = true, .speed = speed, .position = 9000};
    };
    const Case cases[] = {{" ", stopped, "play "},
                          {" ", at(1.0), "stop "},
                          {"l", stopped, "1x play "},
                          {"J", stopped, "-1x play "},
                          {"L", at(1.0), "2x "},
                          {"l", at(4.0), "8x "},
                          {"l", at(8.0), "8x "},
                          {"l", at(-8.0), "-4x "},
                          {"l", at(-1.0), "1x "},
                          {"l", at(1.1), "2x "},
                          {"j", at(8.0), "4x "},
                          {"j", at(1.1), "1x "},
                          {"j", at(1.0), "-1x "},
                          {"j", at(-8.0), "-8x "},
                          {"k", at(-8.0), "stop 1x "},
                          {",.", stopped, "jog -1920 jog 1920 "},
                          {"\033[D\033OC", stopped, "seek 2000 seek 98000 "},
                          {"\033[D\033[1~\033OF", at(1.0), "seek 0 seek 0 seek 120000 "},
                          {"+=--", stopped, "1dB 2dB 1dB 0dB "},
                          {"\033[15~\033[A?nPq", stopped, "keys next previous quit "},
                          {"\033[1;5", stopped, ""}};
    for (const auto& [keys, now, expected] : cases) {
        TransportKeys transport({.length = 120000});
        std::string text;
        for (const Key key : keysIn(keys))
            text += told(transport.press(key, now));
        EXPECT_EQ(text, expected) << keys << " at " << now.speed;
    }
}

TEST(TransportKeys, MarkALoopAndSayWhichEndIsMissing) {
    TransportKeys keys({.length = 120000, .sampleRate = 48000, .frameRate = 24.0}, -3.0);
    EXPECT_EQ(told(keys.press(U'.', {})) + told(keys.press(U'-', {})), "jog 2000 -4dB ");
    const auto press = [&](char key, std::int64_t position) {
        return told(keys.press(static_cast<Key>(key), {.position = position}));
    };
    EXPECT_EQ(press('i', 5000), "no loop ");
    EXPECT_EQ(keys.loopStart(), RangeSample(5000));
    EXPECT_EQ(press('o', 20000), "loop 5000-20000 ");
    EXPECT_EQ(keys.loopStart(), std::nullopt);
    EXPECT_EQ(press('i', 30000), "no loop ");
    EXPECT_EQ(press('o', 40000), "loop 30000-40000 ");
    EXPECT_EQ(press('o', 31000), "no loop ");
    EXPECT_EQ(keys.loopEnd(), RangeSample(31000));
    EXPECT_EQ(press('i', 10000), "loop 10000-31000 ");
    // x forgets both ends.
    for (const char end : {'o', 'i'}) {
        EXPECT_EQ(press('x', 0), "no loop ");
        EXPECT_EQ(press(end, 20000), "no loop ");
    }
}

TEST(StatusLine, ShowsWhatFits) {
    HeldPeak peak;
    peak.with(1.5F);
    EXPECT_EQ(peak.with(0.1F), 1.5F);
    const PlayStatus full{.name = "a long name\n.wav",
                          .isPlaying = true,
                          .loops = true,
                          .speed = -8.0,
                          .position = 48000 * 3661 + 4800,
                          .length = 48000 * 7200,
                          .peaks = {0.0F, 1.5F, 0.1F},
                          .heldPeak = 2.0F,
                          .level = -3.0,
                          .clipped = 37,
                          .underruns = {.lateSamples = 12, .lateEpisodes = 1, .starvedEpisodes = 3},
                          .deviceUnderruns = 1};
    PlayStatus film{.name = "door", .loopStart = 48000, .position = 47999, .length = 96000, .peaks = {0.0F}};
    film.frameRate = 24.0;
    PlayStatus drifting = film;
    drifting.loopStart.reset();
    drifting.position = 48048 * 60 - 1; // the last of 1800 frames
    drifting.frameRate = 30000.0 / 1001.0;
    const std::string head = "> 1:01:01.100/2:00:00.000 -8x loop";
    const std::string others = " level -3 dB late 12/1 starved 0/3 device 1";
    const std::string waiting = "| 0:00:00:23/0:00:02:00@24 +1x loop from 0:00:01:00";
    const struct {
        const PlayStatus& status;
        LineStyle style;
        std::string line;
    } table[] = {
        {full, {}, head + " [-----][####!][####-]   +6.0 dB clipped 37" + others + " a long name?.wav"},
        {full,
         {.width = 110, .hasColours = true},
         head + "\033[31m   +6.0 dB\033[0m\033[31m clipped 37\033[0m" + others + " a long n..."},
        {full, {.width = 105}, head + "   +6.0 dB clipped 37" + others},
        {film, {.width = 85}, waiting + " [----------------]   -inf dB door"},
        {film, {.width = 84}, waiting + "   -inf dB door"},
        {drifting, {}, "| 0:00:59:29/0:00:01:29@29.97 +1x [----------------]   -inf dB door"},
    };
    for (const auto& [status, style, line] : table)
        EXPECT_EQ(statusLine(status, style), line);
}

} // namespace
} // namespace audlmd::test

#include "tests/tools/audlmd/CommandFixture.hpp"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <sys/wait.h>

namespace audlmd::test {
namespace {

using testing::HasSubstr;
using namespace std::literals;

class Films : public CommandFixture {
protected:
    ~Films() override { setenv("PATH", path_.c_str(), 1); }

    void writeTimeline(const std::string& strips) const {
        writeBytes(in("film.json"),
                   R"({"audlmd": 1, "sampleRate": 48000, "channels": 1, "tracks": [{"strips": [)" + strips +
                       "]}]}");
    }

    /// In the folder; `$a` is the command. Returns the exit status.
    int shell(const std::string& line) const {
        return WEXITSTATUS(std::system(("export XDG_CACHE_HOME=" + in("../cache").string() +
                                        " a=" AUDLMD_COMMAND "; cd " + in("").string() + "; " + line)
                                           .c_str()));
    }

    bool hasFfmpeg() const { return shell("ffmpeg -version > /dev/null 2>&1") == 0; }

    const std::string path_ = std::getenv("PATH");
    const std::string bytes_ = "....ftypqt  " + std::string(100, 'x');
};

TEST_F(Films, AreRefusedInTheSameWordsEverywhereWithoutFfmpeg) {
    writeSound(in("a.wav"), noise(1, 100));
    const std::string hidden = "line\n\x1B[2J\xC2\x9B.mov";
    for (const std::string& name : {"it's.mov"s, hidden, "t.json"s})
        writeBytes(in(name), bytes_);
    writeTimeline(R"({"media": "it's.mov", "from": 0, "to": 100},
                     {"media": "line\n\u001b[2J\u009b.mov", "from": 0, "to": 100})");
    setenv("PATH", "/nowhere", 1);
    const std::string said =
        "it's.mov': libsndfile does not read it, and the program ffmpeg, which may, is not "
        "installed (Debian: apt-get install ffmpeg)";
    for (const std::string line :
         {"render it's.mov -o new.wav", "plot spectrogram it's.mov -o new.png",
          "join a.wav it's.mov -o new.wav", "play it's.mov", "mix film.json -o new.wav --strict"})
        expectRefused(line, said, 3);
    expectRefused("mix it's.mov -o new.wav", "use audlmd render for it", 3);
    const std::string told = output("mix film.json --list");
    EXPECT_THAT(told, HasSubstr(said));
    EXPECT_EQ(told.find_first_of("\x1B\x9B"), std::string::npos);
    expectRefused("render a.wav --stream 2 -o new.wav", "'a.wav': there is no sound stream 2, it has 1", 3);
    expectRefused("render - --stream 2 -o new.wav", "--stream is for films");
    EXPECT_EQ(shell("$a render - -o new.wav < it\\'s.mov 2> errors"), 3);
    EXPECT_THAT(readBytes(in("errors")), HasSubstr("standard input: Format not recognised. ffmpeg decodes"));
}

TEST_F(Films, GiveWayToTheSoundBesideThem) {
    setenv("PATH", "/nowhere", 1);
    writeSound(in("film.wav"), noise(1, 100));
    writeTimeline(R"({"media": "film.mov"})");
    writeBytes(in("film.mov"), bytes_);
    EXPECT_THAT(output("mix film.json --list"), HasSubstr("/film.wav\n"));
    writeTimeline(R"({"media": "film.mov#stream=1", "from": 0, "to": 100})");
    expectRefused("mix film.json -o new.wav --strict", "film.mov': libsndfile does not read it", 3);
}

TEST_F(Films, PlayTheStreamThatIsNamed) {
    if (!hasFfmpeg())
        GTEST_SKIP() << "ffmpeg is not installed";
    writeSound(in("a.wav"), noise(1, 48'000, 1));
    writeSound(in("b.wav"), noise(1, 48'000, 2));
    writeSound(in("two.wav"), noise(1, 48'000, 3));
    ASSERT_EQ(shell("ffmpeg -v error -i a.wav -i b.wav -map 0 -map 1 -c copy two.mkv < /dev/null"), 0);
    writeTimeline(R"({"media": "two.mkv#stream=2"}, {"media": "two.mkv", "at": 48000},
                     {"media": "two.mkv#stream=1", "at": 96000})");
    output("mix film.json -o mix.wav --strict --picture mix.svg");
    output("render two.mkv --stream 2 -o first.wav --cache kept");
    output("join b.wav two.wav two.mkv -o join.wav");
    EXPECT_TRUE(readSound(in("first.wav")) == readSound(in("b.wav")));
    EXPECT_TRUE(readSound(in("mix.wav")) == readSound(in("join.wav")));
    output("plot spectrogram two.mkv --stream 2 -o two.svg");
    EXPECT_THAT(output("cache"),
                HasSubstr("/two.mkv, stream 2\n2 files, 0.000 GB of at most 32.000 GB, in "));
    // A file of this name is meant where there is one.
    writeSound(in("two.mkv#stream=2"), noise(1, 48'000, 4));
    EXPECT_THAT(output("mix film.json --list"), HasSubstr("/two.mkv#stream=2\n"));
    EXPECT_EQ(output("cache --clear"), "removed 2 files\n");
}

TEST_F(Films, LeaveNothingWhereASignalEndsTheirDecoding) {
    writeBytes(in("film.mov"), bytes_);
    std::filesystem::create_directory(in("bin"));
    writeBytes(in("bin/ffprobe"), "#!/bin/sh\necho '{\"streams\": [{\"codec_type\": \"audio\"}]}'\n");
    writeBytes(in("bin/ffmpeg"), "#!/bin/sh\necho $$ > pid; exec sleep 100\n");
    ASSERT_EQ(shell("chmod +x bin/*"), 0);
    for (const std::string signal : {"HUP", "TERM", "KILL"}) {
        shell("rm -f pid; PATH=$PWD/bin:$PATH; $a render film.mov -o new.wav & "
              "until [ -s pid ]; do sleep 0.01; done; kill -" +
              signal + " $!; wait; true");
        EXPECT_NE(shell("sleep 0.2; grep -q '^State:.[^ZX]' /proc/$(cat pid)/status 2> /dev/null"), 0)
            << signal;
        EXPECT_EQ(shell("[ \"$(ls ../cache/audlmd)\" = lock ] && [ ! -e new.wav ]"), 0) << signal;
    }
}

} // namespace
} // namespace audlmd::test

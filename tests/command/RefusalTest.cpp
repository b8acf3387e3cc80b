// What `audlmd render` refuses, and what it leaves behind: nothing, and whatever was there before.

#include "tests/command/CommandFixture.hpp"

#include <algorithm>
#include <csignal>
#include <map>
#include <sndfile.h>

namespace audlmd::test {
namespace {

class Refusals : public CommandFixture {
protected:
    Refusals() {
        writeSound(in("a.wav"), noise(2, 48000));
        writeBytes(in("out.wav"), "before");
    }

    /// One line that holds `part`, a failure, and every file as it was.
    void expectRefused(const Outcome& outcome, const std::string& part) {
        EXPECT_GT(outcome.status, 0) << part;
        EXPECT_TRUE(outcome.errors.starts_with("audlmd: ")) << outcome.errors;
        EXPECT_NE(outcome.errors.find(part), std::string::npos) << outcome.errors << "has no " << part;
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(readBytes(in("out.wav")), "before") << part;
        for (const std::string& name : names())
            EXPECT_FALSE(name.starts_with(".")) << part << " left " << name;
    }

    void expectRefused(std::vector<std::string> options, const std::string& part) {
        options.insert(options.begin(), {"render", "a.wav", "-o", "out.wav"});
        expectRefused(run(options), part);
    }

    void expectInputRefused(const std::string& input, const std::string& part) {
        expectRefused(run({"render", input, "-o", "out.wav"}), part);
    }
};

TEST_F(Refusals, OfOptionsThatCannotStandTogether) {
    writeBytes(in("ride.csv"), "0,0\n");
    expectRefused({"--to", "1", "--duration", "1"}, "--to and --duration cannot stand together");
    expectRefused({"--level", "0", "--automation", "ride.csv"},
                  "--level and --automation cannot stand together");
    expectRefused({"--automation-reverse"}, "--automation-reverse needs --automation");
    expectRefused({"--converter", "linear"}, "--converter needs --speed");
    expectRefused(run({"render", "a.wav"}), "-o");
}

TEST_F(Refusals, OfWordsThatMeanNothing) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> refused{
        {{"--louder"}, "--louder"},
        {{"--format", "s12"}, "'s12' is not a format"},
        {{"--from", "soon"}, "--from: 'soon' is not a time"},
        {{"--from", "1:60"}, "--from: '1:60' is not a time"},
        {{"--from", "-1"}, "--from: '-1' is not a time"},
        {{"--to", "12x"}, "--to: '12x' is not a time"},
        {{"--block", "0"}, "--block"},
        {{"--threads", "many"}, "--threads"},
        {{"--fade-in", "1:round"}, "'round' is not a curve"},
        {{"--fade-out", "0"}, "shorter than one sample"},
        {{"--fade-in", "2"}, "fade"},
        {{"--gain", "loud"}, "--gain: 'loud' is not a number"},
        {{"--gain", "+11"}, "--gain: '+11' is not a level"},
        {{"--level", "nan"}, "--level: 'nan' is not a level"},
        {{"--eq", "bell:1k:3"}, "'bell' is not a kind of band"},
        {{"--eq", "peak:1k"}, "should be peak:frequency:gain"},
        {{"--eq", "lowpass:24k"}, "half the sample rate"},
        {{"--eq", "peak:1k:3:0"}, "Q"},
        {std::vector<std::string>(12, "--eq=highpass:30"), "12 bands"},
        {{"--speed", "nan"}, "--speed"},
        {{"--speed", "inf"}, "--speed"},
        {{"--speed", "-1"}, "--reverse plays backwards"},
        {{"--speed", "2", "--converter", "cubic"}, "'cubic' is not a converter"},
        {{"--automation", "none.csv"}, "cannot read 'none.csv'"}};
    for (const auto& [options, part] : refused)
        expectRefused(options, part);
    for (const auto& [text, part] :
         std::map<std::string, std::string>{{"0,0\n1 3\n", "bad.csv line 2"},
                                            {"0,0\n1,soft\n", "bad.csv line 2"},
                                            {"1,0\n0,0\n", "comes after a later one"},
                                            {"time,decibels\n", "holds no automation"}}) {
        writeBytes(in("bad.csv"), text);
        expectRefused({"--automation", "bad.csv"}, part);
    }
}

TEST_F(Refusals, OfPositionsOutsideTheMaterial) {
    expectRefused({"--from", "1.5"}, "--from is at sample 72000, outside 'a.wav'");
    expectRefused({"--to", "48001smp"}, "--to is at sample 48001, outside 'a.wav'");
    expectRefused({"--from", "0.5", "--duration", "0.6"}, "--duration is at sample 52800, outside 'a.wav'");
    expectRefused({"--duration", "4611686018427387904smp"}, "outside 'a.wav'");
    expectRefused({"--from", "0.5", "--to", "0.5"}, "holds nothing to render");
}

TEST_F(Refusals, OfInputThatIsNoWholeSound) {
    writeBytes(in("text.wav"), "no sound at all");
    writeSound(in("empty.wav"), {{}, {}});
    const std::string whole = readBytes(in("a.wav"));
    writeBytes(in("short.wav"), whole.substr(0, whole.size() / 2));
    std::filesystem::create_directory(in("folder"));
    expectInputRefused("none.wav", "none.wav");
    expectInputRefused("text.wav", "text.wav");
    expectInputRefused("empty.wav", "holds no samples");
    expectInputRefused("short.wav", "short.wav");
    expectInputRefused("folder", "folder");
}

TEST_F(Refusals, OfInputThatFailsOnTheWay) {
    writeSound(in("a.flac"), noise(2, 400000), 48000, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    std::string damaged = readBytes(in("a.flac"));
    std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(damaged.size() / 2), 40000, '\0');
    writeBytes(in("damaged.flac"), damaged);
    expectInputRefused("damaged.flac", "damaged.flac");
}

TEST_F(Refusals, OfOutputThatCannotBeWritten) {
    const auto to = [&](const std::string& output) { return run({"render", "a.wav", "-o", output}); };
    std::filesystem::create_directory(in("folder.wav"));
    expectRefused(to("/dev/full"), "cannot write '/dev/full': ");
    expectRefused(to("nowhere/out.wav"), "cannot write 'nowhere/out.wav': ");
    expectRefused(to("folder.wav"), "it is a folder");
    expectRefused(to("out.mp3"), "the extension names the kind of file");
    expectRefused(to("./a.wav"), "is the input");
    expectRefused(to("out.wav/out.wav"), "cannot write 'out.wav/out.wav'");
    expectRefused(runWithFileSizeLimit(1000, {"render", "a.wav", "-o", "out.wav"}), "cannot write 'out.wav'");
    for (const std::string name : {"new.wav", "new.flac", "new.aiff", "new.raw"}) {
        render({"a.wav", "-o", name});
        const std::size_t size = std::filesystem::file_size(in(name));
        std::filesystem::remove(in(name));
        for (const std::size_t limit : {std::size_t{1000}, size - 1})
            expectRefused(runWithFileSizeLimit(limit, {"render", "a.wav", "-o", name}),
                          "cannot write '" + name);
    }
    EXPECT_EQ(names(), (std::vector<std::string>{"a.wav", "folder.wav", "out.wav"}));
}

TEST_F(Refusals, OfMixesThatDoNotFit) {
    const auto refuse = [&](const std::string& existing, const std::string& part,
                            const std::vector<std::string>& options = {}) {
        const std::string before = readBytes(in(existing));
        std::vector<std::string> all{"--mix-into", existing};
        all.insert(all.end(), options.begin(), options.end());
        expectRefused(all, part);
        EXPECT_TRUE(readBytes(in(existing)) == before) << existing;
    };
    writeSound(in("mono.wav"), noise(1, 48000));
    writeSound(in("slow.wav"), noise(2, 48000), 44100);
    writeSound(in("long.wav"), noise(2, 48001));
    writeSound(in("law.wav"), noise(2, 48000), 48000, SF_FORMAT_WAV | SF_FORMAT_ULAW);
    writeSound(in("b.wav"), noise(2, 48000));
    writeBytes(in("odd.raw"), "12345");
    refuse("mono.wav", "its channel count is 1 channels, but what is rendered has 2");
    refuse("slow.wav", "its rate is 44100 Hz");
    refuse("long.wav", "its length is 48001 frames");
    refuse("b.wav", "its length is 48000 frames", {"--speed", "2"});
    refuse("law.wav", "none of the formats");
    refuse("b.wav", "its samples are f32, but --format asks for s16", {"--format", "s16"});
    refuse("odd.raw", "name it with --format");
    refuse("odd.raw", "not a whole number of frames", {"--format", "s16"});
    refuse("none.wav", "none.wav");
    writeSound(in("same.wav"), noise(2, 48000));
    const std::string before = readBytes(in("same.wav"));
    expectRefused(run({"render", "a.wav", "-o", "same.wav", "--mix-into", "same.wav"}), "never changed");
    EXPECT_TRUE(readBytes(in("same.wav")) == before);
}

TEST_F(Refusals, ToGoOnAfterASignalLeaveNothingBehind) {
    writeSound(in("long.wav"), noise(1, 480000));
    const auto rendering = [&] {
        return std::ranges::any_of(names(), [](const std::string& name) { return name.starts_with("."); });
    };
    for (const int signal : {SIGINT, SIGTERM}) {
        const Outcome outcome = runUntil(rendering, signal,
                                         {"render", "long.wav", "-o", "out.wav", "--speed", "0.001",
                                          "--converter", "linear", "--format", "u8"});
        EXPECT_EQ(outcome.status, -signal);
        EXPECT_FALSE(rendering());
        EXPECT_EQ(readBytes(in("out.wav")), "before");
    }
}

} // namespace
} // namespace audlmd::test

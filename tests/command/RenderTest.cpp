// What `audlmd render` writes, seen from outside: the samples of the files.

#include "tests/command/CommandFixture.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <sndfile.h>

namespace audlmd::test {
namespace {

class Render : public CommandFixture {
protected:
    /// Renders a.wav and returns the result's samples.
    Channels rendered(std::vector<std::string> options) {
        options.insert(options.begin(), {"a.wav", "-o", "out.wav"});
        render(options);
        return readSound(in("out.wav"));
    }
};

Channels constant(float value, std::size_t frames) {
    return {std::vector<float>(frames, value)};
}

float decibels(double value) {
    return static_cast<float>(std::pow(10.0, value / 20.0));
}

double rms(const std::vector<float>& samples) {
    double sum = 0.0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

TEST_F(Render, CopiesEveryChannelOfAFloatFile) {
    for (const std::size_t channels : {1U, 2U, 5U}) {
        const Channels sound = noise(channels, 70000);
        writeSound(in("a.wav"), sound);
        EXPECT_EQ(rendered({}), sound) << channels << " channels";
    }
}

TEST_F(Render, ReadsWhatLibsndfileReads) {
    const Channels sound = noise(2, 5000);
    for (const int type : {SF_FORMAT_FLAC | SF_FORMAT_PCM_16, SF_FORMAT_AIFF | SF_FORMAT_PCM_24,
                           SF_FORMAT_CAF | SF_FORMAT_DOUBLE, SF_FORMAT_WAV | SF_FORMAT_PCM_16}) {
        writeSound(in("a.wav"), sound, 44100, type);
        EXPECT_EQ(rendered({}), sound) << std::hex << type;
    }
}

TEST_F(Render, PlaysARangeForwardsAndBackwards) {
    const Channels sound = noise(2, 48000 * 3);
    writeSound(in("a.wav"), sound);
    Channels part = sound;
    for (std::vector<float>& channel : part)
        channel = {channel.begin() + 24000, channel.begin() + 108000};
    const Channels forwards = rendered({"--from", "0.5", "--to", "2.25"});
    EXPECT_EQ(forwards, part);
    for (std::vector<float>& channel : part)
        std::ranges::reverse(channel);
    EXPECT_EQ(rendered({"--from", "0.5", "--to", "2.25", "--reverse"}), part);
}

TEST_F(Render, TakesATimeInEveryNotation) {
    writeSound(in("a.wav"), constant(0.5F, 8000 * 70), 8000);
    const std::map<std::string, std::size_t> lengths{{"62.5", 500000},      {"3s", 24000},
                                                     {"250ms", 2000},       {"1:02.5", 500000},
                                                     {"0:01:02.5", 500000}, {"12345smp", 12345}};
    for (const auto& [text, frames] : lengths)
        EXPECT_EQ(rendered({"--duration", text}).front().size(), frames) << text;
}

TEST_F(Render, AppliesFixedLevels) {
    writeSound(in("a.wav"), constant(0.25F, 1000));
    const Channels levelled = rendered({"--gain", "-6", "--level", "+3"});
    for (const float sample : levelled.front())
        ASSERT_NEAR(sample, 0.25F * decibels(-3.0), 1e-4);
    EXPECT_EQ(rendered({"--gain", "-inf"}), constant(0.0F, 1000));
}

TEST_F(Render, FadesInAndOutAsHeard) {
    writeSound(in("a.wav"), constant(0.5F, 48000));
    for (const std::string direction : {"", "--reverse"}) {
        std::vector<std::string> options{"--fade-in", "0.25", "--fade-out", "0.5:power"};
        if (!direction.empty())
            options.push_back(direction);
        const std::vector<float> faded = rendered(options).front();
        EXPECT_EQ(faded[0], 0.0F);
        EXPECT_NEAR(faded[6000], 0.25F, 1e-4);
        EXPECT_EQ(faded[12000], 0.5F);
        EXPECT_EQ(faded[23999], 0.5F);
        EXPECT_NEAR(faded[36000], 0.5 * std::sqrt(0.5), 1e-3);
        EXPECT_LT(faded[47999], 1e-3F);
    }
    const std::vector<float> fast =
        rendered({"--speed", "2", "--converter", "linear", "--fade-in", "0.25"}).front();
    EXPECT_NEAR(fast[6000], 0.25F, 1e-4);
    EXPECT_NEAR(fast[12000], 0.5F, 1e-4);
    EXPECT_NEAR(rendered({"--fade-out", "1:log"}).front()[12000], 0.5F * decibels(-6.8), 2e-3);
}

TEST_F(Render, FollowsAnAutomationInEitherDirection) {
    writeSound(in("a.wav"), constant(0.5F, 48000));
    writeBytes(in("ride.csv"), "time,decibels\n# soft, then loud\n0, -20\n\n500ms,-20\n0:00.5,0\n");
    const std::vector<float> ride = rendered({"--automation", "ride.csv"}).front();
    EXPECT_NEAR(ride[100], 0.05F, 1e-4);
    EXPECT_NEAR(ride[24100], 0.5F, 1e-4);
    const std::vector<float> back = rendered({"--automation", "ride.csv", "--automation-reverse"}).front();
    EXPECT_NEAR(back[100], 0.5F, 1e-4);
    EXPECT_NEAR(back[47900], 0.05F, 1e-4);
}

TEST_F(Render, EqualisesWithUpToFiveBands) {
    Channels sound = noise(1, 48000);
    for (std::size_t n = 0; n < 48000; ++n)
        sound[0][n] =
            0.25F * static_cast<float>(std::sin(2.0 * M_PI * 1000.0 * static_cast<double>(n) / 48000.0));
    writeSound(in("a.wav"), sound);
    const auto change = [&](const std::vector<std::string>& options) {
        return 20.0 * std::log10(rms(rendered(options).front()) / rms(sound.front()));
    };
    EXPECT_NEAR(change({"--eq", "peak:1k:+6:0.7"}), 6.0, 0.05);
    EXPECT_LT(change({"--eq", "highpass:10k"}), -35.0);
    EXPECT_NEAR(change({"--eq", "peak:1k:+6", "--eq", "peak:1k:-3:2", "--eq", "lowshelf:50:-9", "--eq",
                        "highshelf:16k:3:1", "--eq", "lowpass:20k:0.7"}),
                3.0, 0.2);
}

TEST_F(Render, PlaysAtAnotherSpeed) {
    Channels sound = constant(0.0F, 48000);
    for (std::size_t n = 0; n < 48000; ++n)
        sound[0][n] =
            0.5F * static_cast<float>(std::sin(2.0 * M_PI * 500.0 * static_cast<double>(n) / 48000.0));
    writeSound(in("a.wav"), sound);
    for (const std::string converter : {"filtering", "linear"}) {
        const std::vector<float> fast = rendered({"--speed", "1.5", "--converter", converter}).front();
        ASSERT_EQ(fast.size(), 32000U);
        int crossings = 0;
        for (std::size_t n = 1; n < fast.size(); ++n)
            crossings += fast[n - 1] < 0.0F && fast[n] >= 0.0F;
        EXPECT_NEAR(crossings, 500, 1) << converter;
        EXPECT_NEAR(rms(fast), rms(sound[0]), 0.01) << converter;
    }
}

TEST_F(Render, SaysSoWhereTheSpeedLimitBites) {
    writeSound(in("a.wav"), noise(1, 48000));
    const std::vector<std::string> fast{"render", "a.wav", "-o", "out.wav", "--speed", "4"};
    EXPECT_EQ(run(fast).errors, "");
    const Outcome limited = run(fast, {"AUDLMD_AudioPlaybackSpeedLimit=2"});
    EXPECT_EQ(limited.status, 0);
    EXPECT_TRUE(limited.errors.starts_with("audlmd: note: ")) << limited.errors;
    EXPECT_EQ(readSound(in("out.wav")).front().size(), 24000U);
}

TEST_F(Render, GivesTheSameBytesForAnyBlockAndAnyThreads) {
    writeSound(in("a.wav"), noise(3, 100000));
    writeBytes(in("ride.csv"), "0,0\n1,-12\n2,3\n");
    const std::vector<std::vector<std::string>> sounds{
        {"--format", "s24"},
        {"--eq", "peak:1k:3", "--fade-in", "0.7:log", "--fade-out", "0.4:power", "--gain", "-2"},
        {"--automation", "ride.csv", "--reverse", "--automation-reverse"},
        {"--speed", "1.1", "--eq", "lowshelf:200:4"},
        {"--speed", "0.7", "--reverse", "--fade-in", "1"},
        {"--speed", "1.3", "--converter", "linear", "--reverse", "--automation", "ride.csv"}};
    for (const std::vector<std::string>& sound : sounds) {
        std::string bytes;
        for (const std::vector<std::string>& sizes :
             std::vector<std::vector<std::string>>{{},
                                                   {"--block", "1", "--threads", "1"},
                                                   {"--block", "777", "--threads", "2"},
                                                   {"--block", "16777216", "--threads", "7"}}) {
            std::vector<std::string> options = sound;
            options.insert(options.end(), sizes.begin(), sizes.end());
            rendered(options);
            if (bytes.empty())
                bytes = readBytes(in("out.wav"));
            EXPECT_TRUE(bytes == readBytes(in("out.wav"))) << testing::PrintToString(options);
        }
    }
}

TEST_F(Render, EndsWithOneLineOfFigures) {
    writeSound(in("a.wav"), noise(2, 48000));
    const Outcome outcome = run({"render", "a.wav", "-o", "out.wav"});
    EXPECT_TRUE(outcome.output.starts_with("rendered 48000 samples on 2 channels (1.000 s) in "))
        << outcome.output;
    EXPECT_NE(outcome.output.find(" times real time; underruns: 0 samples in 0 episodes\n"),
              std::string::npos);
    EXPECT_EQ(std::ranges::count(outcome.output, '\n'), 1);
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(Render, ExplainsWhatItDoesWithoutDoingIt) {
    writeSound(in("a.wav"), noise(1, 48000));
    const Outcome outcome = run({"render", "a.wav", "--gain", "0", "--level", "-6", "--speed", "1.5",
                                 "--format", "s16", "--explain"});
    EXPECT_EQ(outcome.status, 0);
    for (const char* part : {"mode code 1602 (0x642)", "direction              1", "srcStage               2",
                             "  FilteringSRCIterator\n  FixedLevelApplyingIterator\n  "
                             "FixedLevelApplyingIterator\n  NullIterator\n"
                             "  SampleCache::ForwardIterator\n",
                             "output type 2 of 14 in the registration order: Aud::Sample<16, 2,", "speed",
                             "1.5", "output length 32000 samples"})
        EXPECT_NE(outcome.output.find(part), std::string::npos) << part << "\nin\n" << outcome.output;
    EXPECT_EQ(names(), std::vector<std::string>{"a.wav"});
}

} // namespace
} // namespace audlmd::test

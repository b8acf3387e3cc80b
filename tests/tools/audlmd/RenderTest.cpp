// The samples in the files that `audlmd render` writes.

#include "host/signal/GainLaws.hpp"
#include "tests/tools/audlmd/CommandFixture.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <span>
#include <sstream>
#include <tuple>

namespace audlmd::test {
namespace {

using testing::HasSubstr;

class Render : public CommandFixture {
protected:
    /// Renders a.wav and returns the result's samples.
    Channels rendered(const std::string& options) const {
        output("render a.wav -o out.wav " + options);
        return readSound(in("out.wav"));
    }
};

TEST_F(Render, CopiesEveryChannelOfWhatLibsndfileReads) {
    for (const auto& [type, channels] : std::map<int, std::size_t>{{SF_FORMAT_WAV | SF_FORMAT_FLOAT, 5},
                                                                   {SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 2},
                                                                   {SF_FORMAT_AIFF | SF_FORMAT_PCM_24, 1},
                                                                   {SF_FORMAT_CAF | SF_FORMAT_DOUBLE, 2}}) {
        const Channels sound = noise(channels, 70000);
        writeSound(in("a.wav"), sound, 44100, type);
        EXPECT_TRUE(rendered("") == sound) << std::hex << type;
    }
}

TEST_F(Render, PlaysARangeForwardsAndBackwards) {
    Channels sound = noise(2, 48000 * 3);
    writeSound(in("a.wav"), sound);
    for (std::vector<float>& channel : sound)
        channel = {channel.begin() + 24000, channel.begin() + 108000};
    EXPECT_TRUE(rendered("--from 0.5 --to 2.25") == sound);
    for (std::vector<float>& channel : sound)
        std::ranges::reverse(channel);
    EXPECT_TRUE(rendered("--from 0.5 --to 2.25 --reverse") == sound);
}

TEST_F(Render, WritesEachInputIntoAFolderAlsoBehindOneThatFails) {
    writeSound(in("a.wav"), noise(1, 100), 8000, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    writeSound(in("b.ogg"), noise(2, 9000), 48000, SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    const Outcome outcome = run("render a.wav none.wav b.ogg -o new/ --suffix _x --quiet");
    EXPECT_EQ(outcome.status, 3);
    EXPECT_TRUE(outcome.output.starts_with("b.ogg: over full scale, not clipped: channel 1: "))
        << outcome.output;
    EXPECT_THAT(
        outcome.errors,
        testing::MatchesRegex(
            "audlmd: 'none.wav': .*\naudlmd: 1 of 3 inputs failed, see above; the others are in 'new/'\n"));
    EXPECT_EQ(readSound(in("new/a_x.wav")), readSound(in("a.wav")));
    EXPECT_EQ(readSound(in("new/b_x.wav")), readSound(in("b.ogg")));
    output("render a.wav b.ogg -o new --kind w64");
    EXPECT_EQ(readSound(in("new/b.w64")), readSound(in("b.ogg")));
}

TEST_F(Render, WritesSeveralOutputsFromOnePassOrNone) {
    writeSound(in("a.wav"), noise(2, 9000));
    writeSound(in("s.wav"), noise(2, 9000), 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_32);
    for (const std::string line : {"render a.wav --gain 3", "mix a.wav s.wav", "render s.wav"})
        for (const std::string how : {"", " --format s16", " --format s16 --dither", " --truncate"}) {
            if (line == "render s.wav" && how.empty())
                continue;
            for (const std::string name : {"x.wav", "x.flac", "x.raw"})
                output(line + how + " -o alone" + name);
            const std::string told = output(line + how + " -o x.wav -o x.flac -o x.raw -o x.ogg -o x.mp3");
            for (const std::string name : {"x.wav", "x.flac", "x.raw"})
                EXPECT_TRUE(readBytes(in(name)) == readBytes(in("alone" + name))) << line << how << name;
            EXPECT_EQ(told.find("--format is not for it") != told.npos, how.starts_with(" --format")) << told;
            for (const std::string name : {"x.ogg", "x.mp3"})
                EXPECT_EQ(readSound(in(name))[1].size(), 9000U) << line << how << name;
        }
    EXPECT_THAT(output("render a.wav --gain 9 -o x.wav -o x.flac"),
                testing::AllOf(HasSubstr("clipped in 'x.flac': channel 1: "),
                               HasSubstr("not clipped in 'x.wav': channel 2: ")));
    EXPECT_THAT(output("render a.wav --gain 9 -o x.wav -o x.flac --json --quiet"),
                HasSubstr(R"("clips":true,"format":"s24","output":"x.flac")"));
    for (const auto& [outputs, part, status] :
         {std::tuple{"-o new.wav -o no/x.flac", "'no/x.flac' cannot be written", 5},
          {"-o new.wav -o ./new.wav", "are one file", 2},
          {"-o new.wav -o a.wav", "is the input", 2},
          {"-o new.flac -o new.wav --format f32", "does not hold f32", 2},
          {"-o new.wav -o new.mp3 --rate 12345", "new.mp3' cannot be written: as a MP3 file", 5}})
        expectRefused(std::string("render a.wav ") + outputs, part, status);
    expectRefused("render s.wav -o new.wav -o new.ogg", "32-bit samples");
}

TEST_F(Render, TakesATimeInEveryNotation) {
    writeSound(in("a.wav"), noise(1, 8000 * 70), 8000);
    for (const auto& [text, frames] : std::map<std::string, std::size_t>{{"62.5", 500000},
                                                                         {"3s", 24000},
                                                                         {"250ms", 2000},
                                                                         {"1:02.5", 500000},
                                                                         {"0:01:02.5", 500000},
                                                                         {"12345smp", 12345},
                                                                         {"0:00:01:12@25", 11840},
                                                                         {"0:00:01:15@30000/1001", 12012},
                                                                         {"0:01:00;02@29.97", 480480}})
        EXPECT_EQ(rendered("--duration " + text).front().size(), frames) << text;
}

TEST_F(Render, AppliesEveryLevelWhereItIsToBeHeard) {
    writeSound(in("a.wav"), {std::vector<float>(48000, 0.5F)});
    writeBytes(in("ride.csv"), "time,decibels\n# soft, then loud\n0, -20\n\n500ms,-20\n0:00.5,0\n");
    const std::map<std::size_t, double> faded{
        {0, 0.0}, {6000, 0.5}, {12000, 1.0}, {23999, 1.0}, {36000, std::sqrt(0.5)}, {47999, 0.0}};
    // For each set of options, the gains at some samples.
    const std::map<std::string, std::map<std::size_t, double>> expected{
        {"--gain -6dB --level +3dB", {{0, gainOfDecibels(-3.0)}, {47999, gainOfDecibels(-3.0)}}},
        {"--gain -inf", {{500, 0.0}}},
        {"--gain 60 --level -60", {{500, 1.0}}},
        {"--fade-in 0.25 --fade-out 0.5:power", faded},
        {"--fade-in 0.25 --fade-out 0.5:power --reverse", faded},
        {"--fade-out 1:log", {{12000, mixerStyleGain(0.75)}}},
        {"--fade-in 1smp", {{0, 0.0}, {1, 1.0}}},
        {"--fade-in 0.25 --speed 2 --converter linear", {{6000, 0.5}, {12000, 1.0}}},
        {"--automation ride.csv", {{100, 0.1}, {24100, 1.0}}},
        {"--automation ride.csv --automation-reverse", {{100, 1.0}, {47900, 0.1}}}};
    for (const auto& [options, gains] : expected) {
        const std::vector<float> levelled = rendered(options).front();
        for (const auto& [sample, gain] : gains)
            EXPECT_NEAR(levelled.at(sample), 0.5 * gain, 1e-4) << options << ", sample " << sample;
    }
}

TEST_F(Render, EqualisesWithSeveralBands) {
    writeSound(in("a.wav"), sine(1000.0, 0.25));
    const auto change = [&](const std::string& options) {
        const std::vector<float> heard = rendered(options).front();
        return decibelsOfGain(4.0 *
                              static_cast<double>(*std::max_element(heard.begin() + 24000, heard.end())));
    };
    EXPECT_NEAR(change("--eq peak:1k:+6:0.7"), 6.0, 0.05);
    EXPECT_LT(change("--eq highpass:10k"), -35.0);
    EXPECT_NEAR(change("--eq peak:1k:+6 --eq peak:1k:-3:2 --eq lowshelf:50:-9 --eq highshelf:16k:3:1 "
                       "--eq lowpass:20k:0.7"),
                3.0, 0.2);
    output("render --eq peak:1k:+6 a.wav -o out.wav"); // One band for each --eq: the next word is the input.
}

TEST_F(Render, TellsHowManySamplesAreOverFullScale) {
    Channels sound = noise(2, 48000);
    sound[1][24000] = 1.5F;
    sound[1][24001] = 1.0F;
    writeSound(in("a.wav"), sound);
    writeSound(in("soft.wav"), {2, std::vector<float>(48000, 0.25F)}, 48000,
               SF_FORMAT_WAV | SF_FORMAT_PCM_24);
    const std::string exact =
        "clipped: channel 2: 1 sample, by up to 3.52 dB, first at 0:00:00.500\nrendered";
    const std::string kept = "over full scale, not " + exact;
    const std::string most = "clipped or at full scale: channel 2: 2 samples, first at 0:00:00.500\nrendered";
    for (const auto& [options, text] :
         std::map<std::string, std::string>{{"--truncate", exact},
                                            {"--block 7 --format u8", exact},
                                            {"--speed 1 --gain -12", "rendered"},
                                            {"--through-tables --format s24", exact},
                                            {"--through-tables --truncate", most},
                                            {"--through-tables --format s24 --truncate", most},
                                            {"--through-tables", kept},
                                            {"", kept}})
        EXPECT_TRUE(output("render a.wav -o out.wav " + options).starts_with(text)) << options;
    EXPECT_EQ(rendered(""), sound);
    // Of a sum, the sum is what counts.
    EXPECT_NE(output("render a.wav -o out.wav --mix-into soft.wav")
                  .find("channel 2: " +
                        std::to_string(std::ranges::count_if(
                            sound[1], [](float sample) { return std::abs(sample + 0.25F) > 1.0F; })) +
                        " samples, by up to 4.86 dB"),
              std::string::npos);
}

TEST_F(Render, TakesWhatIsThereOfATruncatedRecordingWhereItIsAskedTo) {
    const Channels sound = noise(2, 48000);
    writeSound(in("a.wav"), sound);
    std::filesystem::resize_file(in("a.wav"), std::filesystem::file_size(in("a.wav")) - 8 * 12000);
    expectRefused("render a.wav -o out.wav", "'a.wav': truncated", 3);
    const std::string note = "note: 'a.wav' is truncated: what is there is taken, 0:00:00.750\n";
    EXPECT_TRUE(output("render a.wav -o out.wav --partial").starts_with(note));
    output("join a.wav a.wav -o joined.wav --partial");
    EXPECT_EQ(readSound(in("joined.wav"))[0].size(), 72000U);
    EXPECT_NE(output("info a.wav --partial").find("truncated"), std::string::npos);
    const Channels part = readSound(in("out.wav"));
    EXPECT_TRUE(std::ranges::equal(part[1], std::span(sound[1]).first(36000)));
}

TEST_F(Render, TellsProgramsAnObjectALine) {
    writeSound(in("a.wav"), {std::vector<float>(200'000, 1.5F)});
    std::vector<nlohmann::json> told;
    const auto tell = [&](const std::string& line) {
        told.clear();
        std::istringstream lines(run(line + " --json").output);
        for (std::string object; std::getline(lines, object);)
            told.push_back(nlohmann::json::parse(object));
        return told.back();
    };
    const nlohmann::json failed = tell("render a.wav none.wav -o out/ --format s16 --duration 9s");
    EXPECT_EQ(failed, (nlohmann::json{{"event", "error"},
                                      {"input", "none.wav"},
                                      {"exitStatus", 3},
                                      {"text", "'none.wav': No such file or directory."}}));
    EXPECT_EQ(told.front()["event"], "note");
    EXPECT_EQ(told[1]["event"], "progress");
    EXPECT_LT(told[1]["frames"], 200'000);
    EXPECT_EQ(told[1]["of"], 200'000);
    const nlohmann::json& last = told[told.size() - 2];
    EXPECT_EQ(last["event"], "result");
    EXPECT_EQ(last["output"], "out/a.wav");
    EXPECT_EQ(last["frames"], 200'000);
    EXPECT_EQ(last["channels"][0]["clipped"], 200'000);
    EXPECT_NEAR(last["channels"][0]["peak"].get<double>(), 3.52, 0.01);
}

TEST_F(Render, EndsWithFiguresAndRefusesWhatTheSpeedLimitExcludes) {
    writeSound(in("a.wav"), noise(1, 48000));
    const std::string line = "render a.wav -o out.wav --speed 4 --converter filtering";
    const std::string figures = output(line);
    EXPECT_TRUE(figures.starts_with("rendered 12000 samples on 1 channel (0.250 s) in ")) << figures;
    EXPECT_TRUE(figures.ends_with(" times real time; underruns: 0 samples in 0 episodes\n")) << figures;
    setenv("AUDLMD_AudioPlaybackSpeedLimit", "2", 1);
    expectRefused(line, "to 2 (the setting AudioPlaybackSpeedLimit), not at 4: choose the linear converter");
    expectRefused("play a.wav --speed 4 --converter filtering", "choose the linear converter");
    output("render a.wav -o out.wav --speed 4 --converter linear");
    output("render a.wav -o out.wav --speed 4");
    EXPECT_THAT(output("render a.wav -o out.wav --speed 2 --eq peak:12k:3"),
                HasSubstr("is heard at 24000 Hz, half the sample rate or above; the filtering one is used"));
    // An empty variable is none, so the file counts, and without a file the default.
    setenv("AUDLMD_AudioPlaybackSpeedLimit", "", 1);
    writeBytes(in("my.conf"), "AudioPlaybackSpeedLimit = 3\n");
    setenv("AUDLMD_CONFIG", in("my.conf").c_str(), 1);
    expectRefused(line, "to 3 (the setting");
    writeBytes(in("my.conf"), "AudioPlaybackSpedLimit = 3\nAudioPlaybackSpeedLimit = 20\nVectorBits = 64\n");
    setenv("AUDLMD_AudioPlaybackSpeedlimit", "4", 1);
    EXPECT_EQ(
        run(line).errors,
        "audlmd: note: " + in("my.conf").string() +
            ":1: 'AudioPlaybackSpedLimit' is no setting; did you mean AudioPlaybackSpeedLimit?\n"
            "audlmd: note: the environment variable AUDLMD_AudioPlaybackSpeedlimit is no setting; did "
            "you mean "
            "AUDLMD_AudioPlaybackSpeedLimit?\n"
            "audlmd: note: the setting AudioPlaybackSpeedLimit is 20, but 8 is the nearest that can be "
            "played\n"
            "audlmd: note: the setting VectorBits is 64, but 0 is the nearest that this processor has\n");
    unsetenv("AUDLMD_AudioPlaybackSpeedlimit");
    setenv("AUDLMD_CONFIG", "", 1);
    expectRefused("render a.wav -o out.wav --speed 6.5 --converter filtering", "to 6 (the setting");
    setenv("AUDLMD_CONFIG", in("no.conf").c_str(), 1);
    EXPECT_NE(run(line).errors.find("no.conf: AUDLMD_CONFIG names this file, but it is not there\n"),
              std::string::npos);
    for (const char* name : {"AUDLMD_AudioPlaybackSpeedLimit", "AUDLMD_CONFIG"})
        unsetenv(name);
}

TEST_F(Render, WritesTheSameBytesForAnyBlockThreadsAndFunctions) {
    // What another way of scaling or summing would change: a zero below zero, a sample among the smallest
    // floats, one beyond full scale, and silence in which an equaliser rings on.
    Channels sound = noise(3, 100000);
    for (std::vector<float>& channel : sound)
        std::fill(channel.begin() + 60000, channel.end(), 0.0F);
    sound[0][12350] = -0.0F;
    sound[1][12351] = 1e-40F;
    sound[2][12352] = 1.5F;
    writeSound(in("a.wav"), sound);
    writeBytes(in("ride.csv"), "0,0\n1,-12\n2,3\n");
    const std::string ride = "--automation " + in("ride.csv").string();
    for (const auto& [options, sizes] : std::map<std::string, std::string>{
             {"--reverse", " --block 777 --threads 2"},
             {"--eq peak:1k:3 --eq highpass:4k --fade-in 0.7:log --fade-out 0.4:power", " --block 99"},
             {"--reverse --automation-reverse " + ride, " --block 16777216 --threads 7"},
             {"--speed 1.9 --eq lowshelf:200:4 --level 6", " --block 777 --threads 1"},
             {"--speed 1.3 --converter linear --reverse " + ride, ""},
             {"--from 12345smp --duration 9smp --level 10 --gain 60", " --block 1 --threads 1"}}) {
        const Channels inlined = rendered(options + sizes);
        EXPECT_TRUE(inlined == rendered(options + " --through-tables")) << options << sizes;
        const std::string line = " --format s24 --dither " + options;
        output("render a.wav -o plain.raw" + line);
        output("render a.wav -o sum.raw --mix-into plain.raw" + line + sizes);
        output("render a.wav -o tables.raw --mix-into plain.raw --through-tables" + line);
        EXPECT_TRUE(readBytes(in("sum.raw")) == readBytes(in("tables.raw"))) << options << sizes;
    }
}

/// Beside two other programs, where they are installed.
TEST_F(Render, DithersATinyToneWithNoHarmonicAboveTheNoise) {
    const std::vector<float> tone = sine(1000.0, gainOfDecibels(-90.0)).front();
    writeSound(in("a.wav"), {tone, tone});
    output("render a.wav -o audlmd.wav --format s16 --dither");
    const std::string go = "cd '" + in("").string() + "' && ";
    for (const std::string other :
         {"sox -V1 a.wav -b 16 sox.wav",
          "ffmpeg -v error -i a.wav -af aresample=osf=s16:dither_method=triangular ffmpeg.wav"})
        if (std::system((go + other).c_str()) != 0)
            std::puts(("not compared: " + other).c_str());
    for (const std::string name : {"audlmd.wav", "sox.wav", "ffmpeg.wav"}) {
        if (!exists(in(name)))
            continue;
        const Channels channels = readSound(in(name));
        EXPECT_NE(channels[0], channels[1]) << name;
        const std::vector<float>& dithered = channels[0];
        // In steps. The mean period of the tone, which is 48 samples long, has all harmonics.
        std::vector<double> period(48);
        double error = 0.0;
        for (std::size_t n = 0; n < tone.size(); ++n) {
            period[n % 48] += static_cast<double>(dithered.at(n)) * 32.768;
            error += std::pow(static_cast<double>(dithered[n] - tone[n]) * 32768.0, 2.0) / 48000.0;
        }
        // The noise alone has lines of 0.005 steps; without dither the third harmonic has 0.19.
        for (int harmonic = 1; harmonic < 24; ++harmonic) {
            std::complex<double> line;
            for (int n = 0; n < 48; ++n)
                line += std::polar(period[static_cast<std::size_t>(n)] / 24.0,
                                   std::numbers::pi * harmonic * n / 24.0);
            EXPECT_NEAR(std::abs(line), harmonic == 1 ? 1.036 : 0.0, 0.02) << name << ", " << harmonic;
        }
        EXPECT_NEAR(std::sqrt(error), 0.5, 0.01) << name;
    }
}

TEST_F(Render, ExplainsWhatItDoesWithoutDoingIt) {
    writeSound(in("a.wav"), noise(1, 48000));
    const std::string text = output(
        "render a.wav --gain 12.0412 --level -6 --speed 1.5 --converter filtering --format s16 --explain");
    for (const char* part :
         {"mode code 1602 (0x642)", "direction              1", "srcStage               2",
          "output type 2 of 14 in the registration order: Aud::Sample<16, 2,", "output length 32000 samples",
          "subSampleStart                   1 + 536870912/", "levelUValue             1.2796", "2^1\n",
          "outerLevelUValue                 0.776060581 (-6.00 dB)"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\nin\n" << text;
    // Between its fades the strip needs no envelope, and is rendered by the mode that has none.
    const std::string faded =
        output("render a.wav --fade-in 0.1 --fade-out 0.2 --speed 1.5 --converter linear --explain");
    for (const char* part :
         {"without the envelope: mode code 1056\n", "envelope.lastRampStep            -6.9499",
          "subSampleStart                   0 + 1/"})
        EXPECT_NE(faded.find(part), std::string::npos) << part << "\nin\n" << faded;
    writeBytes(in("ride.csv"), "0,0\n1,-6\n");
    for (const auto& [options, parts] : std::map<std::string, std::vector<std::string>>{
             {"--fade-in 0.1:log --reverse --eq peak:1k:3 --automation ride.csv",
              {"equaliser.band0 ", " 4 (ramp-hold)\n", " 2 (log)\n", "dynamicLevel.nodes               2\n",
               "dynamicLevel.samplesToNextNode   ", "dynamicLevel.stationary          0\n"}},
             {"--fade-in 0.1:log --fade-out 0.1:power --speed 1.5 --converter filtering --reverse",
              {"reverseFilteringStartPosition    48000\n", "envelope.holdLength              33600\n",
               "envelope.lastRampCurve           3 (power)\n"}}}) {
        const std::string told = output("render a.wav --explain " + options);
        for (const std::string& part : parts)
            EXPECT_THAT(told, HasSubstr(part)) << options;
    }
    EXPECT_EQ(files().size(), 2U);
}

TEST_F(Render, PicksAndFoldsDownChannelsAndSaysWhatTheyAre) {
    const Channels sound = softNoise(100);
    writeSound(in("a.wav"), sound);
    const std::map<std::string, std::vector<std::size_t>> picked{
        {"--map 2", {1}},
        {"--map 1,1", {0, 0}},
        {"--map L,R", {0, 1}},
        {"--map Rs,LFE,3", {5, 3, 2}},
        {"--channels 6", {0, 1, 2, 3, 4, 5}},
        {"--channels 5.1film", {0, 2, 1, 4, 5, 3}},
        {"--map 2,1,4,3,6,5 --channels 5.1smpte", {1, 0, 3, 2, 5, 4}}};
    for (const auto& [options, channels] : picked) {
        const Channels heard = rendered(options);
        ASSERT_EQ(heard.size(), channels.size()) << options;
        for (std::size_t channel = 0; channel < heard.size(); ++channel)
            EXPECT_TRUE(heard[channel] == sound[channels[channel]]) << options << ", channel " << channel;
    }
    const std::string note = "note: 'a.wav': 5.1 is folded down to stereo, without LFE\n";
    EXPECT_TRUE(output("render a.wav -o s.wav --channels stereo --rate 44100").starts_with(note));
    EXPECT_TRUE(output("render a.wav -o s.wav --channels 2").starts_with(note));
    output("render s.wav -o m.wav --channels mono");
    output("render s.wav -o l.wav --map L --channels stereo");
    EXPECT_EQ(readSound(in("l.wav")), (Channels{readSound(in("s.wav"))[0], readSound(in("s.wav"))[0]}));
    for (std::size_t n = 0; n < 100; ++n) {
        const float left = sound[0][n] + 0.70710678F * (sound[2][n] + sound[4][n]);
        const float right = sound[1][n] + 0.70710678F * (sound[2][n] + sound[5][n]);
        EXPECT_NEAR(readSound(in("s.wav"))[0][n], left, 1e-6);
        EXPECT_NEAR(readSound(in("m.wav"))[0][n], (left + right) / 2, 1e-6);
    }
}

TEST_F(Render, ConvertsTheRateAndKeepsPitchAndLength) {
    writeSound(in("a.wav"), sine(1000.0, 0.5));
    output("render a.wav -o b.wav --rate 44100 --from 0.25 --duration 0.5");
    const std::vector<float> converted = readSound(in("b.wav")).at(0);
    ASSERT_EQ(converted.size(), 22050U);
    for (std::size_t n = 0; n < converted.size(); ++n) {
        const double time = 0.25 + static_cast<double>(n) / 44100.0;
        ASSERT_NEAR(converted[n], 0.5 * std::sin(2.0 * std::numbers::pi * 1000.0 * time), 2e-6) << n;
    }
    output("render a.wav -o c.wav --rate 44100 --from 0.25 --duration 0.5 --reverse --block 37");
    std::vector<float> reversed = readSound(in("c.wav")).at(0);
    std::ranges::reverse(reversed);
    EXPECT_EQ(reversed, converted);
    // Taken at its own rate anew, nothing is changed; slices are parts of the whole.
    EXPECT_EQ(rendered("--relabel 480:441 --rate 44100").at(0), readSound(in("a.wav")).at(0));
    const std::vector<float> slowed = rendered("--relabel 25:24 --speed 1.5").at(0);
    EXPECT_EQ(slowed.size(), 33334U);
    EXPECT_TRUE(std::ranges::equal(rendered("--relabel 25:24 --from 0.5").at(0),
                                   std::span(rendered("--relabel 25:24").at(0)).subspan(24000)));
}

} // namespace
} // namespace audlmd::test

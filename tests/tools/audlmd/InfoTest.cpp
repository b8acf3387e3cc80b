// `audlmd info`: what a file holds, how loud it is, beside the standard's own signals and ffmpeg.

#include "host/signal/GainLaws.hpp"
#include "tests/tools/audlmd/CommandFixture.hpp"

#include <nlohmann/json.hpp>
#include <sndfile.hh>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <regex>
#include <sstream>

namespace audlmd::test {
namespace {

using Json = nlohmann::json;

/// A sine at each of the levels, in dB, one behind the other, `seconds` each.
std::vector<float> tone(const std::vector<double>& levels, double seconds, double frequency = 1000.0) {
    std::vector<float> samples;
    const auto length = static_cast<std::size_t>(48000.0 * seconds);
    for (std::size_t n = 0; n < length * levels.size(); ++n)
        samples.push_back(static_cast<float>(
            gainOfDecibels(levels[n / length]) *
            std::sin(2.0 * std::numbers::pi * (frequency * static_cast<double>(n) / 48000.0 + 0.125))));
    return samples;
}

class Info : public CommandFixture {
protected:
    Json infoOf(const std::string& name) const { return Json::parse(output("info --json --quiet " + name)); }
};

/// Signals of EBU Tech 3341 and 3342, shortened.
TEST_F(Info, MeasuresLoudnessAndPeaksAsTheStandardsSay) {
    const std::vector<float> sine23 = tone({-23.0}, 4.0);
    const std::vector<float> loud = tone({-3.0}, 4.0);
    const Channels film{tone({-28.0}, 4.0), tone({-28.0}, 4.0), tone({-24.0}, 4.0), loud,
                        tone({-30.0}, 4.0), tone({-30.0}, 4.0)};
    struct Case {
        std::string name;
        Channels channels;
        std::map<std::string, double> loudness;
    };
    for (const auto& [name, channels, loudness] : std::vector<Case>{
             {"stereo.wav",
              {sine23, sine23},
              {{"integrated", -23.0},
               {"range", 0.0},
               {"highestMomentary", -23.0},
               {"highestShortTerm", -23.0}}},
             {"mono.wav",
              {tone({-20.0}, 3.0)},
              {{"integrated", -23.0}, {"highestMomentary", -23.0}, {"highestShortTerm", -23.0}}},
             {"gated.wav", {tone({-40.0, -20.0, -20.0, -20.0, -40.0}, 6.0)}, {{"integrated", -23.0}}},
             {"range.wav", {tone({-20.0, -30.0}, 12.0)}, {{"range", 10.0}, {"highestShortTerm", -23.0}}},
             {"brief.wav", {tone({-99.0, -20.0, -99.0}, 0.5)}, {{"highestMomentary", -23.0}}},
             {"film.wav", film, {{"integrated", -23.0}}}}) {
        writeSound(in(name), channels);
        const Json info = infoOf(name);
        for (const auto& [what, level] : loudness)
            EXPECT_NEAR(info["loudness"].at(what).get<double>(), level, what == "range" ? 0.5 : 0.1)
                << name << what;
    }
    EXPECT_FALSE(infoOf("mono.wav")["loudness"].contains("range"));
    EXPECT_FALSE(infoOf("brief.wav")["loudness"].contains("highestShortTerm"));
    // The layout says which channel is the LFE, and which are the surrounds of more.
    output("render film.wav -o order.caf --channels 5.1film");
    EXPECT_NEAR(infoOf("order.caf")["loudness"]["integrated"].get<double>(), -23.0, 0.1);
    output("render mono.wav -o rear.wav --map 1,1,1,1,1,1,1,1");
    output("render rear.wav -o rear.caf --channels 7.1");
    // Seven count, two of them 1.41 times as much.
    EXPECT_NEAR(infoOf("rear.wav")["loudness"]["integrated"].get<double>(),
                -23.0 + 10.0 * std::log10(5.0 + 2.0 * 1.41), 0.1);
    // Between the samples of a quarter of the rate lies the top.
    writeSound(in("between.wav"), {tone({-6.0}, 1.0, 12000.0)});
    const Json between = infoOf("between.wav")["channels"][0];
    EXPECT_NEAR(between["peak"].get<double>(), -9.03, 0.02);
    EXPECT_NEAR(between["truePeak"].get<double>(), -6.0, 0.2);
}

TEST_F(Info, SaysWhatIsNotDefined) {
    writeSound(in("silence.wav"), Channels(1, std::vector<float>(48000 * 4)));
    EXPECT_EQ(
        infoOf("silence.wav")["loudness"],
        Json::parse(
            R"({"integrated": null, "range": 0.0, "highestMomentary": null, "highestShortTerm": null})"));
    EXPECT_EQ(infoOf("silence.wav")["channels"][0]["truePeak"], nullptr);
    writeSound(in("empty.wav"), {{}, {}});
    writeSound(in("slow.wav"), noise(1, 4000), 4000);
    writeSound(in("many.wav"), noise(65, 10));
    Channels odd = noise(1, 48000);
    odd[0][7] = NAN;
    odd[0][8] = -INFINITY;
    writeSound(in("odd.wav"), odd);
    EXPECT_NEAR(infoOf("odd.wav")["loudness"]["integrated"].get<double>(), -2.0, 2.0);
    for (const auto& [name, line] : std::vector<std::pair<std::string, std::string>>{
             {"empty.wav", "integrated loudness   not defined below 0.4 s\n"},
             {"silence.wav", "integrated loudness     -inf LUFS\n"},
             {"slow.wav",
              "loudness              not defined: it is measured from 8000 Hz on, not at 4000 Hz\n"},
             {"many.wav", "channels              65, of which the file says nothing\n"},
             {"odd.wav", "none; 2 samples NaN or infinite\n"}})
        EXPECT_NE(output("info " + name).find(line), std::string::npos) << output("info " + name);
}

TEST_F(Info, FindsRunsOfClippedSamples) {
    const float most = 1.0F - 0x1p-15F;
    writeSound(in("a.wav"),
               {{0.5F, most, most, most, 0.0F, -most, -1.0F, -1.0F, -1.0F, most, 0.0F, most, -1.0F},
                {0.5F, most, 0.0F, most, 0.0F, -most, 0.0F, -1.0F, 0.0F, most, 0.0F, most, -1.0F}},
               48000, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    const Json channels = infoOf("a.wav")["channels"];
    EXPECT_EQ(channels[0]["clippedRuns"], 2);
    EXPECT_EQ(channels[0]["longestClippedRun"], 4);
    EXPECT_EQ(channels[0]["firstClippedRun"], 1);
    EXPECT_EQ(channels[1]["clippedRuns"], 0);
    // A run goes on from block to block, and floats clip at 1.0.
    Channels floats(1, std::vector<float>(65540, 1.5F));
    std::fill_n(floats[0].begin(), 65530, most);
    writeSound(in("b.wav"), floats);
    EXPECT_EQ(infoOf("b.wav")["channels"][0]["longestClippedRun"], 10);
    EXPECT_EQ(infoOf("b.wav")["channels"][0]["firstClippedRun"], 65530);
}

TEST_F(Info, ListsWhatAFileHolds) {
    {
        SndfileHandle file(in("in.wav").string(), SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 2, 48000);
        file.setString(SF_STR_TITLE, "A door");
        SF_BROADCAST_INFO broadcast{};
        std::ranges::copy(std::string("oak"), broadcast.description);
        std::ranges::copy(std::string("2026-01-02"), broadcast.origination_date);
        broadcast.time_reference_low = 48000 * 3600U;
        file.command(SFC_SET_BROADCAST_INFO, &broadcast, sizeof broadcast);
        SF_CUES cues{};
        cues.cue_count = 2;
        for (std::uint32_t n = 0; n < 2; ++n)
            cues.cue_points[n] = {.indx = static_cast<std::int32_t>(n),
                                  .position = 96000 - 48000 * n,
                                  .fcc_chunk = 0x61746164,
                                  .chunk_start = 0,
                                  .block_start = 0,
                                  .sample_offset = 96000 - 48000 * n,
                                  .name = {}};
        file.command(SFC_SET_CUE, &cues, sizeof cues);
        std::string text = "text";
        SF_CHUNK_INFO chunk{.id = "wxyz", .id_size = 4, .datalen = 4, .data = text.data()};
        sf_set_chunk(file.rawHandle(), &chunk);
        chunk = {.id = "void", .id_size = 4, .datalen = 0, .data = text.data()};
        sf_set_chunk(file.rawHandle(), &chunk);
        const std::vector<short> samples(2 * 96000, 16384);
        file.writef(samples.data(), 96000);
    }
    // The coding history has libsndfile's version, which decides how long it is.
    const std::regex byVersion("bext [0-9]+|libsndfile-[0-9.]+");
    EXPECT_EQ(std::regex_replace(output("info in.wav"), byVersion, "..."),
              R"(in.wav
  kind                  WAV
  format                s16 (Signed 16 bit PCM)
  sample rate           48000 Hz
  length                0:00:02.000, 96000 samples
  channels              2, stereo: L R
  chunks, in bytes      fmt 16, LIST 20, ..., cue 52, wxyz 4, void 0, data 384000
  of other programs     void, wxyz
  title                 A door
  bext description      oak
  bext originated       2026-01-02
  bext coding history   A=PCM,F=48000,W=16,M=stereo,T=...
  bext time reference   1:00:00.000, 172800000 samples
  markers               0:00:01.000
                        0:00:02.000
  levels, in dB         channel     peak   true peak   clipped runs
                        L          -6.02       -4.99   none
                        R          -6.02       -4.99   none
  integrated loudness    -29.3 LUFS
  loudness range        not defined below 4 s
  highest momentary      -29.3 LUFS
  highest short-term    not defined below 3 s
)");
    const Json info = infoOf("in.wav");
    EXPECT_EQ(info["tags"], Json::parse(R"({"title": "A door"})"));
    EXPECT_EQ(info["bext"]["time reference"], 172800000);
    EXPECT_EQ(info["markers"].size(), 2U);
    EXPECT_EQ(info["markers"][1], Json::parse(R"({"at": 96000, "length": 0, "name": "", "comment": ""})"));
    for (const auto& [name, kind, format] :
         std::vector<std::tuple<std::string, std::string, std::string>>{{"a.flac", "FLAC", "s24"},
                                                                        {"a.rf64", "RF64", "f32"},
                                                                        {"a.aiff", "AIFF", "s8"},
                                                                        {"a.wav", "WAV", "u8"}}) {
        output("render in.wav --no-metadata -o " + name + " --gain -1 --format " + format);
        const Json other = infoOf(name);
        EXPECT_EQ(std::tuple(other["kind"], other["format"], other["frames"]),
                  std::tuple(kind, format, 96000))
            << name;
    }
    EXPECT_EQ(infoOf("a.rf64")["chunks"].back(), Json::parse(R"({"name": "data", "bytes": 768000})"));
}

TEST_F(Info, GoesOnBehindAFileThatCannotBeReadAndReadsPipes) {
    writeSound(in("a.wav"), noise(1, 480));
    const Outcome outcome = run("info a.wav none.wav a.wav --json --quiet");
    EXPECT_EQ(outcome.status, 3);
    std::istringstream lines(outcome.output);
    std::string told;
    for (std::string line; std::getline(lines, line);)
        told += Json::parse(line)["event"].get<std::string>() + " " +
                Json::parse(line)["input"].get<std::string>() + "\n";
    EXPECT_EQ(told, "result a.wav\nerror none.wav\nresult a.wav\n");
    EXPECT_TRUE(outcome.errors.starts_with("audlmd: 'none.wav': "));
    EXPECT_NE(outcome.errors.find("\naudlmd: 1 of 3 inputs failed, see above\n"), std::string::npos);
    expectRefused("info none.wav", "none.wav", 3);
    const std::string go = "cd " + in("").string() + " && " AUDLMD_COMMAND " info - ";
    EXPECT_EQ(std::system((go + "< a.wav > piped").c_str()), 0);
    EXPECT_EQ(readBytes(in("piped")), "-" + output("info a.wav").substr(5));
    EXPECT_NE(std::system((go + "< piped 2> errors").c_str()), 0);
    EXPECT_TRUE(readBytes(in("errors")).starts_with("audlmd: standard input: "));
}

TEST_F(Info, AgreesWithFfmpeg) {
    writeSound(in("a.wav"), {tone({-16.0, -26.0}, 12.0, 440.0), tone({-23.0, -33.0}, 12.0, 7000.0)});
    if (std::system(
            ("cd " + in("").string() +
             " && ffmpeg -v info -nostats -i a.wav -af ebur128=peak=true:framelog=verbose -f null - 2> judge")
                .c_str()) != 0)
        GTEST_SKIP() << "ffmpeg is not installed";
    const std::string judge = readBytes(in("judge"));
    const auto said = [&](const std::string& label) {
        return std::stod(judge.substr(judge.find(label, judge.find("Summary")) + label.size()));
    };
    const Json info = infoOf("a.wav");
    EXPECT_NEAR(info["loudness"]["integrated"].get<double>(), said("I:"), 0.1);
    EXPECT_NEAR(info["loudness"]["range"].get<double>(), said("LRA:"), 0.5);
    EXPECT_NEAR(std::max(info["channels"][0]["truePeak"].get<double>(),
                         info["channels"][1]["truePeak"].get<double>()),
                said("Peak:"), 0.2);
}

} // namespace
} // namespace audlmd::test

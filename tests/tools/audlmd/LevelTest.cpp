// Outputs that are brought to a level: by one gain, as loud as foreign meters say, or not at all.

#include "host/signal/GainLaws.hpp"
#include "tests/tools/audlmd/CommandFixture.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <regex>

namespace audlmd::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

class Levels : public CommandFixture {
protected:
    Levels() {
        // Soft passages and loud ones, so that there are gates and a range.
        Channels sound = noise(2, 48000 * 8);
        for (std::vector<float>& channel : sound)
            for (std::size_t n = 0; n < channel.size(); ++n)
                channel[n] *= n / 48000 % 4 < 2 ? 0.02F : 0.1F;
        // In the way of a high loudness.
        sound[1][70'000] = -0.9F;
        writeSound(in("a.wav"), sound);
        // Out of reach of the relative gate, and in part of the absolute one.
        for (std::vector<float>& channel : sound)
            for (float& sample : channel)
                sample *= 0.004F;
        writeSound(in("soft.wav"), sound);
    }

    Json infoOf(const std::string& name) const { return Json::parse(output("info --json --quiet " + name)); }

    /// What a shell prints in the folder; empty where the program is not there.
    std::string printed(const std::string& line) const {
        const std::string all = "cd " + in("").string() + " && { " + line + "; } > printed 2>&1";
        return std::system(all.c_str()) == 0 ? readBytes(in("printed")) : "";
    }

    /// Whether the program is there that a line begins with.
    bool isThere(const std::string& line) const {
        return !printed("command -v " + line.substr(0, line.find(' '))).empty();
    }

    static double numberIn(const std::string& text, const std::string& pattern) {
        std::smatch found;
        return std::regex_search(text, found, std::regex(pattern)) ? std::stod(found[1]) : NAN;
    }
};

TEST_F(Levels, AreReachedByOneGain) {
    struct Case {
        std::string line;
        std::string key;
        double level;
    };
    writeBytes(in("film.json"),
               R"({"audlmd": 1, "sampleRate": 48000, "channels": 2, "timeReference": 480, "tracks": [
                  {"strips": [{"media": "a.wav"}]}, {"strips": [{"media": "soft.wav"}]}]})");
    for (const auto& [line, key, level] :
         std::vector<Case>{{"render a.wav --loudness -23LUFS", "integrated", -23.0},
                           {"render a.wav --loudness -30 --format s16 --dither", "integrated", -30.0},
                           {"render a.wav --loudness -23 --truncate --through-tables", "integrated", -23.0},
                           {"render soft.wav --loudness -31", "integrated", -31.0},
                           {"mix film.json --loudness -27 --true-peak -1dBTP", "integrated", -27.0},
                           {"render a.wav --normalise 0dB --format s24", "samplePeak", 0.0},
                           {"mix a.wav soft.wav --normalise 3", "samplePeak", 3.0}}) {
        const Json told = Json::parse(output(line + " -o out.wav --json --quiet"));
        EXPECT_EQ(told["levels"][key], level) << line;
        const Json info = infoOf("out.wav");
        double truePeak = -99.0;
        double samplePeak = -99.0;
        for (const Json& channel : info["channels"]) {
            truePeak = std::max(truePeak, channel["truePeak"].get<double>());
            samplePeak = std::max(samplePeak, channel["peak"].get<double>());
        }
        EXPECT_NEAR(told["levels"]["samplePeak"].get<double>(), samplePeak, 0.02) << line;
        if (key == "samplePeak")
            continue;
        EXPECT_NEAR(told["levels"]["truePeak"].get<double>(), truePeak, 0.05) << line;
        for (const auto& [name, value] : info["loudness"].items())
            EXPECT_NEAR(told["levels"][name].get<double>(), value.get<double>(), 0.02) << line << name;
    }
    // One factor, of single precision.
    const double gain =
        Json::parse(output("render a.wav --loudness -23 -o out.wav --json --quiet"))["levels"]["gain"];
    Channels expected = readSound(in("a.wav"));
    for (std::vector<float>& channel : expected)
        for (float& sample : channel)
            sample *= static_cast<float>(gainOfDecibels(gain));
    EXPECT_TRUE(readSound(in("out.wav")) == expected);
    // Of the stems as well, whose sum the mix stays.
    const Json stems = Json::parse(
        output("mix film.json -o out.wav -o out.flac --stems stems --loudness -27 --json --quiet"))["stems"];
    for (const std::size_t stem : {0U, 1U}) {
        const Json info = infoOf("stems/0" + std::to_string(stem + 1) + ".wav");
        for (const auto& [name, value] : info["loudness"].items())
            // Below the gate there is no loudness.
            if (const Json& level = stems[stem]["levels"][name]; value.is_null())
                EXPECT_TRUE(level.is_null()) << stem << name;
            else
                EXPECT_NEAR(level.get<double>(), value.get<double>(), 0.02) << stem << name;
    }
    Channels sum = readSound(in("stems/01.wav"));
    const Channels second = readSound(in("stems/02.wav"));
    for (std::size_t channel = 0; channel < sum.size(); ++channel)
        for (std::size_t n = 0; n < sum[channel].size(); ++n)
            sum[channel][n] += second[channel][n];
    EXPECT_TRUE(readSound(in("out.wav")) == sum);
    EXPECT_NEAR(infoOf("out.flac")["loudness"]["integrated"].get<double>(), -27.0, 0.02);
    EXPECT_THAT(output("render a.wav soft.wav -o both/ --loudness -23"),
                HasSubstr("soft.wav: levels: loudness -23.0 LUFS, range "));
}

TEST_F(Levels, StandInTheBroadcastExtension) {
    writeBytes(in("film.json"), R"({"audlmd": 1, "sampleRate": 48000, "channels": 2, "timeReference": 480,
                                    "tracks": [{"strips": [{"media": "a.wav", "from": 0, "to": 96000}]}]})");
    const Json levels =
        Json::parse(output("mix film.json -o out.wav --loudness -23.45 --json --quiet"))["levels"];
    SF_INFO info{};
    SNDFILE* const file = sf_open(in("out.wav").c_str(), SFM_READ, &info);
    SF_BROADCAST_INFO found{};
    EXPECT_EQ(sf_command(file, SFC_GET_BROADCAST_INFO, &found, sizeof found), SF_TRUE);
    sf_close(file);
    EXPECT_EQ(found.version, 2);
    EXPECT_EQ(found.loudness_value, -2345);
    EXPECT_EQ(found.max_true_peak_level, std::lround(levels["truePeak"].get<double>() * 100.0));
    EXPECT_EQ(found.max_momentary_loudness, std::lround(levels["highestMomentary"].get<double>() * 100.0));
    // It is too short for them.
    EXPECT_EQ(found.max_shortterm_loudness, 0x7FFF);
    EXPECT_EQ(found.loudness_range, 0x7FFF);
}

TEST_F(Levels, ThatPeaksForbidAreNamedAndPossibleOnesAreTaken) {
    for (const auto& [options, limit, clipped] :
         std::vector<std::tuple<std::string, std::string, std::string>>{
             {"--loudness -6 --true-peak -1", "the true peak to ", "truePeak"},
             {"--loudness -6 --format s16", "where s16 clips", "samplePeak"}}) {
        expectRefused("render a.wav -o new.wav " + options, limit);
        const std::string line = run("render a.wav -o new.wav " + options).errors;
        const double possible = numberIn(line, R"(ask for --loudness (-[0-9.]+),)");
        output("render a.wav -o new.wav " +
               std::regex_replace(options, std::regex("-6"), std::to_string(possible)));
        const Json told = Json::parse(
            output("mix a.wav soft.wav -o new.wav --json " + options + " --loudness-or-peak --quiet"));
        EXPECT_NEAR(told["levels"][clipped].get<double>(), clipped == "truePeak" ? -1.0 : 0.0, 1e-6);
        EXPECT_NEAR(told["levels"]["integrated"].get<double>(), possible, 0.2);
        EXPECT_THAT(output("render a.wav -o new.wav --quiet --loudness-or-peak " + options),
                    HasSubstr("less loud than asked: --loudness -6 takes a gain of +"));
        std::filesystem::remove(in("new.wav"));
    }
    writeSound(in("short.wav"), noise(1, 19000));
    writeSound(in("silence.wav"), Channels(1, std::vector<float>(48000)));
    writeSound(in("slow.wav"), noise(1, 8000), 4000);
    writeBytes(in("film.json"), R"({"audlmd": 1, "tracks": [{"strips": [{"media": "a.wav"}]}]})");
    for (const auto& [line, part, status] : std::vector<std::tuple<std::string, std::string, int>>{
             {"render short.wav --loudness -23", "it is shorter than 0.4 s", 3},
             {"render silence.wav --loudness -23", "it is silent; nothing is written", 3},
             {"render silence.wav --normalise -1", "--normalise: no gain brings the output there", 3},
             {"render slow.wav --loudness -23", "it is measured from 8000 Hz on", 2},
             {"render a.wav --normalise 1 --format s16", "Ask for --normalise 0", 2},
             {"render a.wav --loudness -23 --normalise 0", "cannot stand together", 2},
             {"render a.wav --loudness -51", "'-51' is not a level from -50 to 0 LUFS", 2},
             {"render a.wav --true-peak -1", "--true-peak needs --loudness", 2},
             {"render a.wav --normalise 0 --loudness-or-peak", "--loudness-or-peak needs --loudness", 2},
             {"render a.wav --loudness -23 --mix-into soft.wav", "mix first", 2},
             {"mix film.json --loudness -23 --slice 1/2", "which a --slice does not know", 2},
             {"render a.wav --peaks p.txt", "use .json or .dat", 2},
             {"render a.wav --peaks-bits 16", "--peaks", 2}})
        expectRefused(line + " -o new.wav", part, status);
}

TEST_F(Levels, AreThoseOfForeignMeters) {
    output("render a.wav -o out.wav --loudness -23");
    const Json info = infoOf("out.wav");
    const double truePeak = std::max(info["channels"][0]["truePeak"].get<double>(),
                                     info["channels"][1]["truePeak"].get<double>());
    bool isJudged = false;
    for (const auto& [line, loudness, peak] : std::vector<std::tuple<std::string, std::string, std::string>>{
             {"ffmpeg -hide_banner -nostats -i out.wav -af ebur128=peak=true:framelog=verbose -f null -",
              R"(I: +(-[0-9.]+) LUFS)", R"(Peak: +(-?[0-9.]+) dBFS)"},
             {"loudgain out.wav", R"(Loudness: +(-[0-9.]+) LUFS)", R"(\((-?[0-9.]+) dBTP\))"}}) {
        if (!isThere(line))
            continue;
        isJudged = true;
        const std::string told = printed(line);
        EXPECT_NEAR(numberIn(told, loudness), -23.0, 0.1) << told;
        EXPECT_NEAR(numberIn(told, peak), truePeak, 0.2) << told;
    }
    if (!isJudged)
        GTEST_SKIP() << "neither ffmpeg nor loudgain is installed";
}

TEST_F(Levels, StandBesideMasksMarkersTimesAndStemsThatForeignProgramsRead) {
    writeSound(in("wide.wav"), softNoise(48000));
    writeBytes(in("film.json"), R"({"audlmd": 1, "name": "Bridge", "sampleRate": 48000, "channels": 6,
        "timeReference": 172800000, "markers": [{"name": "door", "at": 12000}, {"name": "gate", "at": 30000}],
        "tracks": [{"strips": [{"media": "wide.wav", "layout": "5.1"}]},
                   {"strips": [{"media": "wide.wav", "layout": "5.1", "reverse": true, "gain": -7}]}]})");
    output("mix film.json -o out.wav -o out.rf64 -o out.flac --channels 5.1 --loudness -30 --stems stems");
    // A sum that is rounded to double and then to single precision is that of single precision.
    writeBytes(in("sum.py"), R"(
import array
def samples(path):
    data = open(path, "rb").read()
    start = data.index(b"data") + 8
    return array.array("f", data[start:start + 4 * 6 * 48000])
sums = map(float.__add__, samples("stems/01.wav"), samples("stems/02.wav"))
print(array.array("f", sums) == samples("out.wav"))
)");
    const std::string probe =
        "ffprobe -v error -of csv -show_entries "
        "stream=channel_layout:chapter=start:chapter_tags=title:format_tags=title,time_reference ";
    const std::string probed = "stream,5.1\nchapter,12000,door\nchapter,30000,gate\nformat,";
    const std::string inform =
        "mediainfo --Output='Audio;%Format% %ChannelLayout% %Delay% %LoudnessValue% %BitDepth%' ";
    std::size_t judges = 0;
    for (const auto& [line, expected] : std::vector<std::pair<std::string, std::string>>{
             {probe + "out.wav", probed + "Bridge,172800000\n"},
             {probe + "out.rf64", probed + "172800000,Bridge\n"},
             {inform + "out.wav", "PCM L R C LFE Lb Rb 3600000.000000 -30.00 32\n"},
             // Of libsndfile's headers of floats it says that they are short.
             {"sox --info -V1 -c out.wav", "6\n"},
             {"sox --info -V1 -s out.rf64", "48000\n"},
             {"sox --info -a out.flac", "title=Bridge\n"},
             {"python3 sum.py", "True\n"}}) {
        if (!isThere(line))
            continue;
        ++judges;
        EXPECT_EQ(printed(line), expected) << line;
    }
    if (judges == 0)
        GTEST_SKIP() << "none of ffprobe, mediainfo, sox and python3 is installed";
}

TEST_F(Levels, OfWaveformsGoToPlayersInWebPages) {
    // Three channels of stretches of 4, the last one shorter; the third is clipped by the format.
    writeSound(in("b.wav"), {{0.5F, -0.25F, 0.0F, 0.125F, 0.25F, 0.75F},
                             {0.0F, 0.0F, 0.0F, 0.0F, -1.0F, -0.5F},
                             {2.0F, 1.5F, 2.0F, 2.0F, -3.0F, -2.0F}});
    output("render b.wav -o out.wav --format s16 --peaks p.json --peaks-samples 4 --block 5 --quiet");
    const std::string header =
        R"({"version":2,"channels":3,"sample_rate":48000,"samples_per_pixel":4,"bits":)";
    EXPECT_EQ(readBytes(in("p.json")),
              header + R"(8,"length":2,"data":[-32,64,0,0,127,127,32,96,-128,-64,-128,-128]})" + "\n");
    output("mix b.wav a.wav -o out.wav --peaks p.dat --peaks-bits 16 --normalise 0");
    output("mix b.wav a.wav -o out.wav --peaks p.json --peaks-bits 16 --normalise 0");
    const Json peaks = Json::parse(readBytes(in("p.json")));
    EXPECT_EQ(peaks["length"], 48000 * 8 / 256);
    const std::string read =
        printed("export NODE_PATH=$(npm root -g 2> /dev/null) && node -e 'const fs = require(\"fs\"), W = "
                "require(\"waveform-data\");"
                "const w = [fs.readFileSync(\"p.dat\"), fs.readFileSync(\"p.json\")].map((b, n) => W.create("
                "n ? JSON.parse(b) : b.buffer.slice(b.byteOffset, b.byteOffset + b.length)));"
                "for (const x of w) console.log(x.length, x.channels, x.bits, x.sample_rate, x.scale,"
                "x.channel(1).min_array().join(), x.channel(1).max_array().join())'");
    if (read.empty())
        GTEST_SKIP() << "npm's waveform-data is not installed";
    std::string lowest;
    std::string highest;
    for (std::size_t n = 0; n < peaks["length"]; ++n) {
        const Json& data = peaks["data"];
        const auto channels = peaks["channels"].get<std::size_t>();
        lowest += (n == 0 ? "" : ",") + data[(n * channels + 1) * 2].dump();
        highest += (n == 0 ? "" : ",") + data[(n * channels + 1) * 2 + 1].dump();
    }
    const std::string line =
        "1500 " + peaks["channels"].dump() + " 16 48000 256 " + lowest + " " + highest + "\n";
    EXPECT_EQ(read, line + line);
}

} // namespace
} // namespace audlmd::test

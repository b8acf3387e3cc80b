// `audlmd join`.

#include "tests/tools/audlmd/CommandFixture.hpp"

#include <nlohmann/json.hpp>
#include <sndfile.hh>

namespace audlmd::test {
namespace {

class Join : public CommandFixture {
protected:
    Join() {
        writeSound(in("a.wav"), noise(2, 9600), 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        writeSound(in("b.wav"), noise(2, 5000, 2), 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    }

    int formatOf(const std::string& name) const {
        return SndfileHandle(in(name).string()).format() & SF_FORMAT_SUBMASK;
    }
};

TEST_F(Join, PutsFilesBehindEachOtherAndChangesNoBit) {
    output("join a.wav b.wav a.wav -o joined.flac");
    EXPECT_EQ(formatOf("joined.flac"), SF_FORMAT_PCM_16);
    Channels expected = readSound(in("a.wav"));
    for (const std::string name : {"b.wav", "a.wav"})
        for (std::size_t channel = 0; channel < 2; ++channel) {
            const std::vector<float> more = readSound(in(name))[channel];
            expected[channel].insert(expected[channel].end(), more.begin(), more.end());
        }
    EXPECT_TRUE(readSound(in("joined.flac")) == expected);

    // At the first rate, on the most channels, and as floats where something is converted.
    writeSound(in("c.wav"), noise(1, 4410), 44100, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    output("join c.wav b.wav -o joined.wav");
    EXPECT_EQ(formatOf("joined.wav"), SF_FORMAT_FLOAT);
    const Channels converted = readSound(in("joined.wav"));
    ASSERT_EQ(converted.size(), 2U);
    EXPECT_EQ(converted[0].size(), 4410U + 4594U);
    EXPECT_EQ(converted[0][4000], converted[1][4000]);
}

TEST_F(Join, Crossfades) {
    for (const std::string name : {"c.wav", "d.wav"})
        writeSound(in(name), {std::vector<float>(9600, 0.5F)});
    for (const auto& [curve, middle] : {std::pair{"", 0.70710678F}, {":linear", 0.5F}}) {
        output(std::string("join c.wav d.wav -o joined.wav --crossfade 50ms") + curve);
        const std::vector<float> joined = readSound(in("joined.wav"))[0];
        ASSERT_EQ(joined.size(), 16800U) << curve;
        EXPECT_EQ(joined[7199], 0.5F) << curve;
        EXPECT_NEAR(joined[8400], middle, 1e-3) << curve;
        EXPECT_EQ(joined[9600], 0.5F) << curve;
    }
}

TEST_F(Join, JoinsTheSlicesOfAMixToTheWholeAndItsReport) {
    writeSound(in("loud.wav"), {std::vector<float>(9600, 1.5F)});
    writeBytes(in("film.json"), R"({"audlmd": 1, "name": "film", "timeReference": 4800,
        "markers": [{"name": "in", "at": 10}, {"name": "late", "at": 9000}], "tracks": [{"strips": [
        {"media": "loud.wav", "at": 0}, {"media": "none.wav", "at": 4000, "to": 4000}]}]})");
    for (const std::string kind : {"wav --format s32 --dither", "raw --format s24in32", "flac"}) {
        const std::string extension = kind.substr(0, kind.find(' '));
        const auto mix = [&](const std::string& name, const std::string& options) {
            run("mix film.json -o " + name + "." + kind + " --report " + name + ".json" + options);
        };
        mix("whole", "");
        for (const std::string number : {"1", "2", "3"})
            mix(number, " --slice " + number + "/3");
        EXPECT_EQ(
            run("join --slices 3.json 1.json 2.json -o joined." + extension + " --report all.json").status,
            4);
        EXPECT_TRUE(readBytes(in("joined." + extension)) == readBytes(in("whole." + extension))) << kind;
        nlohmann::json whole = nlohmann::json::parse(readBytes(in("whole.json")));
        nlohmann::json all = nlohmann::json::parse(readBytes(in("all.json")));
        EXPECT_EQ(whole["channels"][0]["samples"], 9600) << kind;
        EXPECT_EQ(whole["exitStatus"], 4) << kind;
        EXPECT_EQ(all["outputs"][0]["output"], "joined." + extension);
        all["outputs"][0]["output"] = "whole." + extension;
        for (nlohmann::json* report : {&whole, &all})
            for (const char* key : {"seconds", "slowest", "output"})
                report->erase(key);
        EXPECT_EQ(all, whole) << kind;
    }

    expectRefused("join --slices 3.json 1.json -o j.flac", "slice 2 of 3 is missing", 3);
    expectRefused("join --slices 1.json 1.json 2.json 3.json -o j.flac", "slice 1 is there twice", 3);
    expectRefused("join --slices film.json -o j.flac", "'film.json': this is no report of a slice", 3);
    expectRefused("join --slices 1.json 2.json 3.json -o j.flac --format s16", "as they are");
    run("mix film.json -o 2.flac --slice 2/3 --report 2.json --from 1smp");
    expectRefused("join --slices 1.json 2.json 3.json -o j.flac",
                  "'2.json': this slice belongs to another mix", 3);
    run("mix film.json -o 2.flac --slice 2/3 --report 2.json --strict");
    expectRefused("join --slices 1.json 2.json 3.json -o j.flac", "'2.json': this slice failed", 3);
    run("mix film.json -o 2.flac --slice 2/3 --report 2.json");
    writeBytes(in("2.flac"), readBytes(in("whole.flac")));
    expectRefused("join --slices 1.json 2.json 3.json -o j.flac", "'2.flac': these samples are not those", 3);
}

TEST_F(Join, AndMixPutsFilesBesideEachOther) {
    output("mix b.wav a.wav -o both.wav");
    const Channels a = readSound(in("a.wav"));
    const Channels b = readSound(in("b.wav"));
    const Channels both = readSound(in("both.wav"));
    ASSERT_EQ(both[1].size(), 9600U);
    EXPECT_EQ(both[1][4999], a[1][4999] + b[1][4999]);
    EXPECT_EQ(both[1][5000], a[1][5000]);
    writeBytes(in("film.json"), R"({"audlmd": 1, "tracks": []})");
    expectRefused("mix a.wav film.json -o mix.wav", "'film.json' is a timeline");
}

TEST_F(Join, RefusesWhatLeavesAGap) {
    writeSound(in("empty.wav"), {{}, {}});
    expectRefused("join a.wav -o joined.wav", "INPUT: name two");
    expectRefused("join a.wav b.wav", "name the file to write with -o");
    expectRefused("join a.wav b.wav -o a.wav", "name another file");
    expectRefused("join a.wav empty.wav -o joined.wav", "'empty.wav' holds no samples", 3);
    expectRefused("join a.wav none.wav -o joined.wav", "none.wav", 3);
    expectRefused("join a.wav b.wav a.wav -o joined.wav --crossfade 60ms",
                  "'b.wav' is too short to be crossfaded for 60ms");
}

} // namespace
} // namespace audlmd::test

#include "tests/host/timeline/TimelineFixture.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace audlmd::test {
namespace {

TEST(JsonTimeline, KeepsEveryKey) {
    const Json written =
        Json::parse(R"({"audlmd": 1, "name": "n", "sampleRate": 44100, "channels": 1, "length": 9,
        "timeReference": 8, "frameRate": 23.976, "markers": [{"name": "m", "at": 3}], "notes": [{"where": "w", "text": "t", "at": -3, "silences": true},
            {"where": "w", "text": "u", "silences": false}],
        "tracks": [{"name": "A", "strips": [{"name": "s", "media": "C:/m", "silence": "off", "at": 1, "length": 2, "skip": 4,
            "from": -5, "to": 60, "reverse": true, "speed": 0.5, "converter": "linear", "gain": "-inf", "relabel": "1001:1000", "layout": "stereo",
            "fadeIn": {"length": 7, "curve": "log"}, "fadeOut": {"length": 6, "curve": "power"},
            "equaliser": [{"kind": "lowshelf", "frequency": 100.5, "gain": -1.5, "q": 2.5}],
            "automation": {"points": [[-1, "-inf"], [2, "-inf"]], "reverse": true},
            "routing": [[0.5, -0.25]], "pan": -50}]}]})");
    const Timeline read = readJson(written, options());
    EXPECT_EQ(Json::parse(writeJson(read)), written);
    const TimelineStrip& strip = read.tracks.at(0).strips.at(0);
    EXPECT_EQ(strip.settings.fade.fadeOutSamples, 6U);
    EXPECT_EQ(strip.settings.fade.fadeOutCurve, FadeCurve::power);
    EXPECT_EQ(strip.settings.automation.value().direction, DynamicLevelDirection::reverse);
    EXPECT_EQ(strip.settings.sampleRate, 44'100.0);
    EXPECT_EQ(strip.settings.from, -5);
    EXPECT_TRUE(strip.settings.reverse);
}

TEST(JsonTimeline, FillsInWhatIsLeftOut) {
    ReadOptions how = options();
    how.media = [](const std::string&) { return MediaFacts{44'100, 44'100, 0}; };
    // Behind a mark of the byte order, which some editors write.
    const Timeline read = readTimeline("\xEF\xBB\xBF"
                                       R"( {"audlmd": 1, "name": NaN, "tracks": [{"strips": [
        {"media": "x.wav", "at": "15e-1s", "speed": 2, "skip": 1000, "fadeIn": {"length": "0.25s"}, "fadeOut": {}},
        {"media": "s3://x.wav", "speed": 0.000001, "length": 5}, {"media": "x.wav", "relabel": "24:23.976"},
        {"files": ["x.wav", "/y.wav"], "layout": "stereo", "to": 9},
        {"media": "x.wav", "speed": 1.5, "converter": "best", "equaliser": [{"kind": "peak", "frequency": 16000}]}]}]})",
                                       how);
    EXPECT_EQ(read.name, "NaN");
    const TimelineStrip& strip = read.tracks.at(0).strips.at(0);
    EXPECT_EQ(strip.media, "/media/x.wav");
    EXPECT_EQ(strip.at, 72'000);
    EXPECT_EQ(strip.settings.to, 48'000);
    EXPECT_EQ(strip.length, 23'000);
    EXPECT_EQ(strip.settings.converter, Converter::best);
    EXPECT_EQ(strip.settings.fade.fadeInSamples, 12'000U);
    EXPECT_EQ(strip.settings.fade.fadeOutSamples, 0U);
    EXPECT_EQ(read.length, 95'000);
    EXPECT_EQ(read.tracks.at(0).strips.at(1).media, "s3://x.wav");
    EXPECT_EQ(read.tracks.at(0).strips.at(2).length, 48'048);
    EXPECT_EQ(read.tracks.at(0).strips.at(3).media, "/media/x.wav#with=/y.wav");
    // Slower than the filtering converter plays.
    EXPECT_EQ(read.tracks.at(0).strips.at(1).settings.converter, Converter::linear);
    EXPECT_NE(read.notes.at(0).text.find("the linear one is used"), std::string::npos);
    EXPECT_EQ(read.tracks.at(0).strips.at(4).settings.converter, Converter::filtering);
    EXPECT_NE(read.notes.at(1).text.find("16000 Hz, which is heard at 24000 Hz"), std::string::npos);
}

TEST(JsonTimeline, NotesWhatIsSilentOnce) {
    ReadOptions how = options();
    how.media = [](const std::string&) { return MediaFacts{44'100, 44'100, 0}; };
    const Timeline read = readTimeline(
        R"({"audlmd": 1, "tracks": [{"name": "A", "strips": [
        {"name": "x", "at": 9, "from": -1000, "to": 96000, "automation": {"points": [[-480, 0], [120000, 0]]}},
        {"name": "y", "at": 0, "from": 0, "to": 96000, "length": 48000},
        {"name": "z", "at": 0, "from": 0, "to": 96000, "silence": "muted"}]}]})",
        how);
    ASSERT_EQ(read.notes.size(), 4U);
    const std::vector<std::string> expected{"plays 0.021 s before the start", "plays 1.000 s beyond the end",
                                            "up to 0.010 s before", "up to 0.479 s beyond"};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(read.notes[i].where, "track 'A', clip 'x'");
        EXPECT_NE(read.notes[i].text.find(expected[i]), std::string::npos) << read.notes[i].text;
        EXPECT_EQ(read.notes[i].at, 9);
        EXPECT_EQ(read.notes[i].silences, i < 2);
    }
    EXPECT_EQ(endOfSound(read), 9 + 97'000);
    EXPECT_EQ(writeJson(readTimeline(writeJson(read), how)), writeJson(read));
}

TEST(JsonTimeline, RefusesNamingStripAndKey) {
    for (const auto& [strip, expected] : std::vector<std::pair<std::string, std::string>>{
             {R"("too": 9)", "\"too\" is not known"},
             {R"("at": -1)", "\"at\" must be"},
             {R"("at": "1.5")", "\"at\" must be"},
             {R"("at": "+1.5s")", "\"at\" must be"},
             {R"("at": "infs")", "\"at\" must be"},
             {R"("at": "99999999999999999s")", "\"at\" must be"},
             {R"("from": -1152921504606846977)", "\"from\" must be"},
             {R"("from": 18446744073709551615)", "\"from\" must be"},
             {R"("at": 1152921504606846977)", "at most 2^60 samples"},
             {R"("at": 1152921504606846976)", "\"length\" leads beyond 2^60"},
             {R"("media": "a.wav\u0000b")", "zero byte"},
             {R"("gain": NaN)", "\"gain\""},
             {R"("from": 20)", "\"to\" lies before"},
             {R"("from": -8796093022208)", "more samples than any file"},
             {R"("to": null)", "\"to\" is missing"},
             {R"("speed": 0)", "\"speed\" must be"},
             {R"("speed": 2, "converter": "none")", "needs a converter"},
             {R"("converter": "good")", "none, linear, filtering, best"},
             {R"("layout": "wide")", "\"layout\" must be one of mono, stereo"},
             {R"("files": [])", "\"files\" must be a list of paths"},
             {R"("files": ["a"], "media": "b")", "in place of \"media\""},
             {R"("relabel": "24")", "\"relabel\" must be a text with the rate that it has, a colon"},
             {R"("fadeIn": {"length": 11})", "fade"},
             {R"("fadeIn": {"curve": "s"})", "\"curve\" must be one of linear, log, power"},
             {R"("gain": "loud")", "\"gain\""},
             {R"("automation": {"points": []})", "at least one node"},
             {R"("automation": {"points": [[0, 11]]})", "\"points\""},
             {R"("automation": {"points": [[0]]})", "\"points\""},
             {R"("automation": {"points": [5]})", "\"points\""},
             {R"("automation": {"points": 5})", "\"points\" must be a list"},
             {R"("automation": {"points": [[5, 0], [4, 0]]})", "before the node"},
             {R"("equaliser": ["peak:1k:loud"])", "'loud' is not a number"},
             {R"("equaliser": [{}, {}, {}, {}, {}, {}])", "five is the most"},
             {R"("routing": [[1], [1, 1]])", "\"routing\""}}) {
        const std::string line =
            refusal(R"({"audlmd": 1, "tracks": [{"name": "A", "strips": [{"name": "x", "to": 10, )" + strip +
                    "}]}]}");
        EXPECT_TRUE(line.starts_with("track 'A', clip 'x': ")) << line;
        EXPECT_NE(line.find(expected), std::string::npos) << line;
    }
    EXPECT_NE(refusal(R"({"audlmd": 2})").find("must be 1"), std::string::npos);
    ReadOptions how = options();
    how.media = [](const std::string&) { return MediaFacts{100, 0, 0}; };
    EXPECT_NE(refusal(R"({"audlmd": 1, "tracks": [{"strips": [{"media": "a.wav"}]}]})", how)
                  .find("the length of the file is not known: it has no sample rate"),
              std::string::npos);
    EXPECT_NE(refusal(R"({"audlmd": 1, "sampelRate": 2})").find("\"sampelRate\""), std::string::npos);
}

} // namespace
} // namespace audlmd::test

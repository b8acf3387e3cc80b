#include "host/words/Text.hpp"
#include "tests/host/timeline/TimelineFixture.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <random>

namespace audlmd::test {
namespace {

/// The line of an error, or of the first note that counts as a failure. Everything but that clip is played.
std::string failureOf(std::vector<Json> children) {
    children.push_back(clip("last", 0, 1));
    try {
        const Timeline read = readOtio(timeline({track(children)}), options());
        EXPECT_EQ(read.tracks.at(0).strips.back().name, "last");
        EXPECT_TRUE(read.tracks[0].strips.back().silence.empty());
        const auto note = std::ranges::find_if(read.notes, &TimelineNote::silences);
        return note == read.notes.end() ? "" : "played without " + note->where + ": " + note->text;
    } catch (const TimelineError& error) {
        return error.what();
    }
}

TEST(OtioRefusal, IsOneLineThatNamesTrackAndClip) {
    struct Case {
        std::vector<Json> children;
        std::string expected;
        bool isRefused = false;
    };
    const auto set = [](const std::string& parameter, const std::string& members) {
        return Json::parse(R"({"effects": [{"OTIO_SCHEMA": "Effect.1", "metadata": {"any": {"Parameters": [
            {"Parameter ID": ")" +
                           parameter + "\", " + members + "}]}}}]}");
    };
    const auto keyed = [&set](const std::string& frame) {
        return set("volume", R"("Key Frames": {")" + frame + R"(": {"Value": 1}})");
    };
    const auto effect = [](const Json& value) { return Json{{"effects", {value}}}; };
    const auto named = [](Json value, const Json& more) {
        value.update({{"name", "x"}});
        value.update(more);
        return value;
    };
    const auto own = [](const Json& block) { return Json{{"metadata", {{"audlmd", block}}}}; };
    const auto faraway = [](double seconds) {
        const Json points = Json::array({Json::array({seconds, 0})});
        return clip("x", 0, 5,
                    {{"effects", {warp(1e5)}}, {"metadata", {{"audlmd", {{"automation", points}}}}}});
    };
    const auto shown = [](const Json& times) { return Json{{"source_range", times}}; };
    for (const Case& c : std::vector<Case>{
             {{clip("x", 0, -5)}, "the duration of source_range is negative"},
             {{clip("x", 1e300, 5)}, "too long"},
             {{clip("x", 0, 9223372036854775808.0)}, "too long"},
             {{clip("x", 0, 5, shown(range(0, 5, 0)))}, "0 is not a rate"},
             {{clip("x", 0, 5, shown({{"start_time", time(0)}}))}, "the duration of source_range is missing"},
             {{clip("x", 0, 5, shown({{"start_time", 1}, {"duration", 2}}))}, "has no number"},
             {{clip("x", 0, 5, {{"OTIO_SCHEMA", "Clip.3"}})}, "schema Clip.3 is not known", true},
             {{clip("x", 0, 5, {{"OTIO_SCHEMA", "Clip.0"}})}, "schema Clip.0 is not known", true},
             {{clip("x", 0, 5, {{"OTIO_SCHEMA", "Clip"}})}, "schema Clip is not known", true},
             {{clip("x", 0, 5, {{"OTIO_SCHEMA", "Clap.1"}})}, "schema Clap is not known", true},
             {{clip("x", 0, 5, {{"OTIO_SCHEMA", nullptr}})}, "no OTIO_SCHEMA", true},
             {{clip("x", 0, 5, {{"source_range", nullptr}, {"media_references", nullptr}})}, "how long"},
             {{clip("x", 0, 5, {{"effects", {warp(1e8)}}})}, "the speed must be"},
             {{clip("x", 0, 5, {{"effects", {warp(1e300)}}})}, "no speed that can be played"},
             {{clip("x", 0, 2e10, {{"effects", {warp(1e5)}}})}, "more samples than any file"},
             {{clip("x", 0, 5), transition(6, 0)}, "fades are longer than the clip by 0.040 s"},
             {{clip("x", 0, 5, {{"enabled", 0}})}, "\"enabled\" is not true or false", true},
             {{clip("x", 0, 5, {{"effects", Json::object()}})}, "\"effects\" is not a list", true},
             {{clip("x", 0, 5, {{"markers", 1}})}, "\"markers\" is not a list", true},
             {{clip("x", 0, 5, keyed("soon"))}, "the key frame 'soon' of \"volume\" is not a number"},
             {{clip("x", 0, 5, keyed("1e13"))}, "the key frame '1e13' of \"volume\" is not a number"},
             {{clip("x", 0, 5, keyed("-1e13"))}, "the key frame '-1e13' of \"volume\" is not a number"},
             {{clip("x", 0, 5, set("volume", R"("Key Frames": {"0": {}})"))},
              "\"volume\" is not in decibels"},
             {{clip("x", 0, 5, set("volume", R"("Parameter Value": 61)"))}, "\"volume\" is not in decibels"},
             {{clip("x", 0, 5, set("faderIn", R"("Parameter Value": "5")"))}, "\"faderIn\" is not a number"},
             {{clip("x", 0, 5, set("faderOut", R"("Parameter Value": -1)"))}, "\"faderOut\" is not a number"},
             {{clip("x", 0, 5, effect({{"OTIO_SCHEMA", "LinearTimeWarp.1"}}))}, "no number \"time_scalar\""},
             {{clip("x", 0, 5, effect({{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"time_scalar", "2"}}))},
              "no number \"time_scalar\""},
             {{clip("x", 0, 5, effect({{"OTIO_SCHEMA", "Effect.1"}, {"effect_name", "e"}, {"enabled", 1}}))},
              "\"enabled\" of the effect 'e' is not true or false"},
             {{named(track({}), {{"children", 5}})}, "\"children\" is not a list", true},
             {{named(track({}), shown(range(0, -5)))}, "the duration of source_range is negative"},
             {{named(gap(1), shown(range(0, -5)))}, "the duration of source_range is negative"},
             {{clip("x", 0, 5, own({{"gain", 61}}))}, "\"gain\" must be decibels up to 60"},
             {{clip("x", 0, 5, own({{"gain", 55}, {"level", 10}}))},
              "all gains together are more than +60 dB"},
             {{clip("x", 0, 5, own({{"gian", 1}}))}, "\"gian\" is not known"},
             {{clip("x", 0, 5, own(5))}, "an object in braces is missing"},
             {{clip("x", 0, 5,
                    {{"effects", {warp(2)}}, {"metadata", {{"audlmd", {{"converter", "none"}}}}}})},
              "the converter \"none\" plays at speed 1 only"},
             {{clip("x", 0, 5, own({{"equaliser", {"fuzz"}}}))},
              "cannot be read: equaliser: 'fuzz' is not a kind of band"},
             {{clip("x", 0, 5, own({{"equaliser", {{{"frequency", 24000}}}}}))}, "equaliser: "},
             {{clip("x", 0, 5, own({{"equaliser", {5}}}))}, "must be a list of bands"},
             {{clip("x", 0, 5, own({{"routing", {{1}}}}))}, "must have 2 rows"},
             {{clip("x", 0, 5, own({{"routing", {1, 2}}}))}, "must have 2 rows"},
             {{clip("x", 0, 5, own({{"routing", {Json::array(), Json::array()}}}))}, "must have 2 rows"},
             {{clip("x", 0, 5, own({{"routing", Json::parse(R"([["1"], [1]])")}}))}, "must have 2 rows"},
             {{clip("x", 0, 5, own({{"routing", Json::parse("[[1], [-1.1e6]]")}}))}, "must have 2 rows"},
             {{clip("x", 0, 5, own({{"gain", 50}, {"level", 10.1}}))}, "\"level\""},
             {{clip("x", 0, 5, own({{"automation", {{1, 0}, {0, 0}}}}))}, "in order of time"},
             {{faraway(1e9)}, "its times are beyond 2^60 samples"},
             {{faraway(-1e9)}, "its times are beyond 2^60 samples"},
             {{clip("x", 0, 5, own({{"automation", 5}}))}, "\"automation\" must be a list"},
             {{clip("x", 0, 5, own({{"automation", {5}}}))}, "a list of [seconds, decibels]"},
             {{clip("x", 0, 5, own({{"automation", Json::array({Json::array({1.1e9, 0})})}}))},
              "a list of [seconds, decibels]"},
             {{clip("x", 0, 5, own({{"automation", Json::array({Json::array({1})})}}))},
              "a list of [seconds, decibels]"},
             {{clip("x", 0, 5, own({{"automation", Json::array({Json::array({"1", 2})})}}))},
              "a list of [seconds, decibels]"}}) {
        const std::string line = failureOf(c.children);
        const std::string place =
            c.isRefused ? "track 'A1', clip 'x': " : "played without track 'A1', clip 'x': ";
        EXPECT_TRUE(line.starts_with(place)) << line;
        EXPECT_NE(line.find(c.expected), std::string::npos) << line;
    }
}

TEST(OtioRefusal, IsPrintableAndShort) {
    for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
             {"two\nlines\033[2J\x7f", "two?lines?[2J?"},
             {"\u009b2J \u0080", "?2J ?"},
             {"\u202e\u202a\u2066\u2069\u200e\u200f\u061c\u2028\u2029", "?????????"},
             {"T\u00fcr \u65e5 \U0001F3B5", "T\u00fcr \u65e5 \U0001F3B5"},
             {"\xfc\xc0\x80 \xed\xa0\x80 \xe6\x97", "??? ??? ??"},
             {std::string(500, 'x'), std::string(80, 'x') + "..."}})
        EXPECT_EQ(words::printable(text), expected);
    const std::string line = failureOf({clip("two\nlines" + std::string(500, 'x'), 0, -1)});
    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_LT(line.size(), 300U);
}

TEST(OtioRefusal, LeavesOutTransitionsThatCannotBePlayed) {
    EXPECT_NE(failureOf({clip("a", 0, 5), transition(1, 1), track({})}).find("beside a nested"),
              std::string::npos);
    EXPECT_NE(failureOf({transition(1, 1), transition(1, 1)}).find("follow one another"), std::string::npos);
    EXPECT_NE(failureOf({composition("Stack.1", {transition(1, 1)})}).find("must stand in a track"),
              std::string::npos);
    EXPECT_NE(
        failureOf({clip("a", 0, 5), {{"OTIO_SCHEMA", "Transition.1"}}}).find("in_offset of a transition"),
        std::string::npos);
    const Timeline above = readOtio(timeline({transition(1, 1), track({clip("a", 0, 5)})}), options());
    EXPECT_EQ(above.notes.at(0).where, "clip '#1'");
    EXPECT_NE(above.notes[0].text.find("must stand in a track"), std::string::npos);
    const TimelineStrip hard =
        stripsOf({clip("a", 0, 5), transition(1, 1), composition("Stack.1", {clip("b", 0, 5)})}).at(0);
    EXPECT_EQ(hard.length, 5 * 1920);
    EXPECT_EQ(hard.settings.fade.fadeOutSamples, 0U);
}

TEST(OtioRefusal, SaysWhatIsWrongWithAText) {
    const auto nested = [](int depth, const std::string& open, const std::string& close) {
        std::string text;
        for (int i = 0; i < depth; ++i)
            text += open;
        for (int i = 0; i < depth; ++i)
            text += close;
        return text;
    };
    Json deep = track({});
    for (int i = 0; i < 70; ++i)
        deep = track({deep});
    const auto collection = [](const std::vector<Json>& children) {
        return composition("SerializableCollection.1", children);
    };
    const Json one = timeline({}, {{"name", "one"}});
    const Json two = collection({timeline({}, {{"name", "two"}})});
    ReadOptions chosen = options();
    chosen.timeline = "two";
    EXPECT_EQ(readTimeline(R"({"audlmd": 1, "name": "two"})", chosen).name, "two");
    EXPECT_NE(refusal(R"({"audlmd": 1, "name": "one"})", chosen).find("there is 'one'"), std::string::npos);
    EXPECT_NE(refusal(collection({two, two}).dump(), chosen).find("2 timelines of that name"),
              std::string::npos);
    Json collected = one;
    for (int i = 0; i < 70; ++i)
        collected = collection({collected});
    EXPECT_EQ(readOtio(collection({one, two}), chosen).name, "two");
    EXPECT_NE(refusal(one.dump(), chosen).find("there is 'one'"), std::string::npos);
    for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
             {"", "empty"},
             {"{\n \"a\": [NaN, -Infinity, x]}", "line 2, column 24: this is not JSON"},
             {"{\"audlmd\": 1, \"any\": \"[\\\"\", \"length\": +Inf}", "\"length\" must be"},
             {"[-Infinity", "line 1, column 11: this is not JSON"},
             {"{\"audlmd\": 1, \"channels\": 1025}", "a whole number from 1 to 1024"},
             {"{\"a\": 1e999}", "too large"},
             {"RIFF....", "line 1, column 1: this is not JSON"},
             {"[1]", "this is no timeline"},
             {"{\"OTIO_SCHEMA\": \"Clip.1\"}", "holds a Clip, not a Timeline"},
             {"{\"OTIO_SCHEMA\": \"Timeline.9\"}", "Timeline.9 is not known"},
             {"{\"OTIO_SCHEMA\": \"Timeline.1\"}", "no Stack"},
             {collection({}).dump(), "holds a SerializableCollection, not a Timeline"},
             {collected.dump(), "holds a SerializableCollection, not a Timeline"},
             {R"({"OTIO_SCHEMA": "SerializableCollection.1", "children": 5})",
              "holds a SerializableCollection"},
             {collection(std::vector<Json>(21, one)).dump(), "'one' and more"},
             {collection({one, two}).dump(), "holds 2 timelines; name one: 'one', 'two'"},
             {collection({one}).dump(), ""},
             {timeline({deep}).dump(), "more than 64 levels deep"},
             {nested(100'000, "[", "]"), "more than 512 levels deep"},
             {nested(100'000, "{\"children\":[", "]}"), "more than 512 levels deep"}}) {
        const std::string line = refusal(text);
        EXPECT_NE(line.find(expected), std::string::npos) << line;
        EXPECT_EQ(line.empty(), expected.empty()) << line;
    }
    // A few tenths of a second; a time that grew with the square would be minutes.
    const auto begin = std::chrono::steady_clock::now();
    std::string many = "[{}";
    for (int i = 0; i < 200'000; ++i)
        many += ",{}";
    refusal(many + "]");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

/// Files with some of everything.
std::vector<std::string> seeds() {
    const Json own{{"metadata", {{"audlmd", {{"gain", -2}, {"automation", {{0, 0}, {1, -6}}}}}}}};
    const Json stack = composition("Stack.1", {track({clip("n", 5, 30)}), clip("m", 1, 2)},
                                   {{"source_range", range(1, 25)}, {"effects", {warp(-0.5)}}});
    const Timeline read = readOtio(
        timeline({track({clip("a", 100, 50, own), transition(4, 4), clip("b", 200, 50), stack})}), options());
    return {timeline({track({clip("a", 9, 50, own), transition(4, 4), clip("b", 20, 50), stack})}).dump(),
            writeJson(read)};
}

// A longer run: AUDLMD_MUTATION_SECONDS=10
TEST(OtioRefusal, SurvivesMutatedFiles) {
    const unsigned int seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::vector<std::string> files = seeds();
    const std::vector<std::string> pieces{"-1",   "1e300", "null",   "[]",   "{}",   "9223372036854775808",
                                          "\"\"", "0",     "1e-300", "NaN",  "true", ",",
                                          "\"",   "}",     "0.1",    "24000"};
    const char* seconds = std::getenv("AUDLMD_MUTATION_SECONDS");
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::seconds(seconds ? std::atoi(seconds) : 0);
    int understood = 0;
    for (int i = 0; i < 1000 || std::chrono::steady_clock::now() < end; ++i) {
        std::string text = files[random() % files.size()];
        for (unsigned int changes = static_cast<unsigned int>(random() % 3) + 1; changes > 0; --changes) {
            // Most changes replace a whole number or text, so that the file stays JSON.
            std::size_t begin = text.find_first_of("0123456789:", random() % text.size());
            begin = begin == std::string::npos ? 0 : begin + (text[begin] == ':' ? 1 : 0);
            const std::size_t stop = std::min(text.find_first_of(",]}", begin), text.size());
            text.replace(begin, random() % 8 == 0 ? random() % 5 : stop - begin,
                         pieces[random() % pieces.size()]);
        }
        const std::string line = refusal(text);
        ASSERT_EQ(line.find('\n'), std::string::npos) << text;
        understood += line.empty() ? 1 : 0;
    }
    EXPECT_GT(understood, 20);
}

} // namespace
} // namespace audlmd::test

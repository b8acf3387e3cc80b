#include "tests/tools/timeline/TimelineFixture.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <random>

namespace audlmd::test {
namespace {

std::string refusalOf(const std::vector<Json>& children) {
    return refusal(timeline({track(children)}).dump());
}

TEST(OtioRefusal, IsOneLineThatNamesTrackAndClip) {
    struct Case {
        std::vector<Json> children;
        std::string expected;
    };
    const Json ramp{{"effects", {{{"OTIO_SCHEMA", "TimeEffect.1"}, {"name", "ramp"}}}}};
    const auto own = [](const Json& block) { return Json{{"metadata", {{"audlmd", block}}}}; };
    const auto shown = [](const Json& times) { return Json{{"source_range", times}}; };
    for (const Case& c : std::vector<Case>{
             {{clip("x", 0, 5, ramp)}, "'ramp' changes the speed over time"},
             {{clip("x", 0, -5)}, "the duration of source_range is negative"},
             {{clip("x", -1, 5)}, "the start of source_range is negative"},
             {{clip("x", 1e300, 5)}, "too long"},
             {{clip("x", 0, 9223372036854775808.0)}, "too long"},
             {{clip("x", 0, 5, shown(range(0, 5, 0)))}, "0 is not a rate"},
             {{clip("x", 0, 5, shown({{"start_time", time(0)}}))}, "the duration of source_range is missing"},
             {{clip("x", 0, 5, shown({{"start_time", 1}, {"duration", 2}}))}, "has no number"},
             {{clip("x", 0, 5, {{"OTIO_SCHEMA", "Clip.3"}})}, "schema Clip.3 is not known"},
             {{clip("x", 0, 5, {{"OTIO_SCHEMA", "Clap.1"}})}, "schema Clap is not known"},
             {{clip("x", 0, 5, {{"OTIO_SCHEMA", nullptr}})}, "no OTIO_SCHEMA"},
             {{clip("x", 0, 5, {{"source_range", nullptr}, {"media_references", nullptr}})}, "how long"},
             {{clip("x", 0, 5, {{"effects", {warp(1e8)}}})}, "the speed must be"},
             {{clip("x", 0, 5, {{"effects", {warp(1e300)}}})}, "no speed that can be played"},
             {{clip("x", 0, 2e10, {{"effects", {warp(1e5)}}})}, "more samples than any file"},
             {{clip("x", 0, 5), transition(6, 0)}, "fades are longer than the clip by 0.040 s"},
             {{clip("x", 0, 5, own({{"gain", 61}}))}, "\"gain\" must be decibels up to 60"},
             {{clip("x", 0, 5, own({{"gian", 1}}))}, "\"gian\" is not known"},
             {{clip("x", 0, 5, own({{"equaliser", {"fuzz"}}}))}, "no such band"},
             {{clip("x", 0, 5, own({{"equaliser", {{{"frequency", 24000}}}}}))}, "equaliser: "},
             {{clip("x", 0, 5, own({{"routing", {{1}}}}))}, "must have 2 rows"},
             {{clip("x", 0, 5, own({{"gain", 50}, {"level", 10.1}}))}, "\"level\""},
             {{clip("x", 0, 5, own({{"automation", {{1, 0}, {0, 0}}}}))}, "in order of time"}}) {
        const std::string line = refusalOf(c.children);
        EXPECT_TRUE(line.starts_with("track 'A1', clip 'x': ")) << line;
        EXPECT_NE(line.find(c.expected), std::string::npos) << line;
    }
}

TEST(OtioRefusal, IsPrintableAndShort) {
    const Json named = clip("two\nlines\033[2J" + std::string(500, 'x'), 0, -1);
    const std::string line = refusalOf({named});
    EXPECT_EQ(line.find_first_of("\n\033"), std::string::npos);
    EXPECT_LT(line.size(), 200U);
}

TEST(OtioRefusal, NamesTransitionsThatCannotBePlayed) {
    EXPECT_NE(refusalOf({clip("a", 0, 5), transition(1, 1), track({})}).find("beside a nested"),
              std::string::npos);
    EXPECT_NE(refusalOf({transition(1, 1), transition(1, 1)}).find("follow one another"), std::string::npos);
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
    for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
             {"", "empty"},
             {"{\n \"a\": NaN}", "line 2, column"},
             {"{\"a\": [1, -Infinity]}", "Infinity is not a number"},
             {"{\"a\": Inf}", "Inf is not a number"},
             {"{\"a\": 1e999}", "too large"},
             {"RIFF....", "line 1, column 1: this is not JSON"},
             {"[1]", "this is no timeline"},
             {"{\"OTIO_SCHEMA\": \"Clip.1\"}", "holds a Clip, not a Timeline"},
             {"{\"OTIO_SCHEMA\": \"Timeline.9\"}", "Timeline.9 is not known"},
             {"{\"OTIO_SCHEMA\": \"Timeline.1\"}", "no Stack"},
             {timeline({deep}).dump(), "more than 64 levels deep"},
             {nested(100'000, "[", "]"), "more than 512 levels deep"},
             {nested(100'000, "{\"children\":[", "]}"), "more than 512 levels deep"}}) {
        const std::string line = refusal(text);
        EXPECT_NE(line.find(expected), std::string::npos) << line;
    }
}

/// Files with some of everything.
std::vector<std::string> seeds() {
    const Json own{{"metadata", {{"audlmd", {{"gain", -2}, {"automation", {{0, 0}, {1, -6}}}}}}}};
    const Json stack = composition("Stack.1", {track({clip("n", 5, 30)}), clip("m", 1, 2)},
                                   {{"source_range", range(1, 25)}, {"effects", {warp(-0.5)}}});
    const Timeline read = readOtio(
        timeline({track({clip("a", 100, 50, own), transition(4, 4), clip("b", 200, 50), stack})}), options());
    return {timeline({track({clip("a", 9, 50, own), transition(4, 4), clip("b", 20, 50), stack})}).dump(),
            writeJson(read).dump()};
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

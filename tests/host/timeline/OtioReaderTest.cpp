#include "tests/host/timeline/TimelineFixture.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace audlmd::test {
namespace {

TEST(OtioReader, ReadsAFileAsItIsWritten) {
    const Timeline read = readTimeline(R"({
        "OTIO_SCHEMA": "Timeline.1", "name": "film", "metadata": {"any": {"thing": [1]}},
        "global_start_time": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24.0, "value": 86400.0},
        "tracks": {"OTIO_SCHEMA": "Stack.1", "name": "tracks", "source_range": null, "children": [
            {"OTIO_SCHEMA": "Track.1", "name": "V1", "kind": "Video", "children": [{"nonsense": 1}]},
            {"OTIO_SCHEMA": "Track.1", "name": "off", "kind": "Audio", "enabled": false, "children": []},
            {"OTIO_SCHEMA": "Track.1", "name": "A1", "kind": "Audio", "children": [
                {"OTIO_SCHEMA": "Clip.1", "name": "door", "source_range": null, "markers": [
                    {"OTIO_SCHEMA": "Marker.2", "name": "slam", "marked_range": {
                        "start_time": {"rate": 24, "value": 12}, "duration": {"rate": 24, "value": 0}}}],
                 "media_reference": {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "takes/1.wav",
                    "available_range": {"OTIO_SCHEMA": "TimeRange.1",
                        "start_time": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24.0, "value": 0.0},
                        "duration": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24.0, "value": 48.0}}}}]}]}})",
                                       options());
    EXPECT_EQ(read.name, "film");
    EXPECT_EQ(read.timeReference, 3600 * 48000);
    EXPECT_EQ(read.frameRate, 24.0);
    EXPECT_EQ(read.length, 96000);
    ASSERT_EQ(read.tracks.size(), 1U);
    EXPECT_EQ(read.tracks[0].name, "A1");
    const TimelineStrip& strip = read.tracks[0].strips.at(0);
    EXPECT_EQ(strip.media, "/media/takes/1.wav");
    EXPECT_EQ(strip.length, 96000);
    EXPECT_EQ(strip.settings.to, 96000);
    ASSERT_EQ(read.markers.size(), 1U);
    EXPECT_EQ(read.markers[0].at, 24000);
    ASSERT_EQ(read.notes.size(), 2U);
    EXPECT_NE(read.notes[0].where.find("V1"), std::string::npos);
    EXPECT_NE(read.notes[1].text.find("disabled"), std::string::npos);
}

TEST(OtioReader, RoundsTheExactSumOfDurationsOnce) {
    std::vector<Json> children;
    for (int i = 0; i < 1999; ++i)
        children.push_back(clip("", 0, 1, {{"source_range", range(0, 1, i % 2 == 0 ? 29.97 : 59.94)}}));
    const std::vector<TimelineStrip> strips = stripsOf(children);
    for (const std::size_t i : {1U, 2U, 3U, 1001U, 1998U}) {
        const auto exact = static_cast<double>((i + 1) / 2) * 1601.6 + static_cast<double>(i / 2) * 800.8;
        EXPECT_EQ(strips.at(i).at, std::llround(exact)) << i;
        EXPECT_EQ(strips.at(i).at, strips.at(i - 1).at + strips.at(i - 1).length) << i;
    }
}

TEST(OtioReader, CountsTheRangeFromWhereTheMediumBegins) {
    std::string url = "file:///b%20c.wav";
    std::string relabel = "1:1";
    const auto file = [&url](const Json& available) {
        return Json{
            {"OTIO_SCHEMA", "ExternalReference.1"}, {"target_url", url}, {"available_range", available}};
    };
    const auto of = [&](const Json& shown, const Json& available) {
        ReadOptions how = options();
        how.media = [](const std::string&) { return MediaFacts{441'000, 44'100, 44'100}; };
        const Json more{{"source_range", shown},
                        {"media_references", {{"DEFAULT_MEDIA", Json()}, {"x", file(available)}}},
                        {"active_media_reference_key", "x"},
                        {"metadata", {{"audlmd", {{"relabel", relabel}}}}}};
        return readOtio(timeline({track({clip("a", 0, 0, more)})}), how).tracks.at(0).strips.at(0);
    };
    EXPECT_EQ(of(range(90'010, 5), range(90'000, 50)).settings.from, 10 * frame);
    EXPECT_EQ(of(range(90'010, 5), range(90'000, 50)).settings.to, 15 * frame);
    EXPECT_EQ(of(Json(), range(90'000, 50)).length, 50 * frame);
    EXPECT_EQ(of(Json(), Json()).length, 480'000);
    EXPECT_EQ(of(range(35, 5), Json()).settings.from, 10 * frame);
    relabel = "25:24";
    EXPECT_EQ(of(Json(), Json()).length, 500'000);
    EXPECT_EQ(of(range(35, 5), Json()).settings.from, 67'200 - 50'000);
    relabel = "1:1";
    for (const auto& [written, media] :
         std::vector<std::pair<std::string, std::string>>{{"file:///b%20c.wav", "/b c.wav"},
                                                          {"file:///C:/b%4", "C:/b%4"},
                                                          {"file:///C:b%20", "/C:b "},
                                                          {"file:/b.wav", "/b.wav"},
                                                          {"file://b.wav", "/media/b.wav"},
                                                          {"s3://b%20c.wav", "s3://b%20c.wav"},
                                                          {"C:\\b%20", "C:\\b%20"},
                                                          {"C:b%20", "/media/C:b "},
                                                          {"1:/b%20", "/media/1:/b "},
                                                          {"/b%20c", "/b%20c"}}) {
        url = written;
        EXPECT_EQ(of(Json(), Json()).media, media);
    }
    // Empty time first.
    EXPECT_EQ(of(range(-10, 25), range(0, 50)).settings.from, -10 * frame);
    // The file's own timecode begins at one second: what lies before its end counts from 0 where nothing of
    // the file would be heard otherwise.
    EXPECT_EQ(of(range(5, 5), Json()).settings.from, 5 * frame);
    EXPECT_EQ(of(range(20, 10), Json()).settings.from, -5 * frame);
    EXPECT_EQ(of(range(300, 10), Json()).settings.from, 275 * frame);
    // One hour in two spellings of 24000/1001. The exporter has kept the seconds, and not the frames.
    const double exporter = 23.976024627685547;
    EXPECT_EQ(of(range(86'400 * exporter / 23.976, 24, exporter), range(86'400, 240, 23.976)).settings.from,
              0);
    EXPECT_EQ(of(range(86'410, 24, exporter), range(86'400, 240, 23.976)).settings.from, 20'020);
    EXPECT_EQ(of(range(86'400, 24, exporter), range(86'400 * 23.976 / exporter, 240, 23.976)).settings.from,
              0);
}

TEST(OtioReader, MultipliesTimeWarpsAndKeepsTheDuration) {
    struct Case {
        std::vector<Json> warps;
        double speed;
        bool reverse;
        std::int64_t frames;
    };
    for (const Case& c : {Case{{warp(2)}, 2, false, 20},
                          {{warp(-1)}, 1, true, 10},
                          {{warp(-3), warp(-0.5)}, 1.5, false, 15},
                          {{warp(-0.1)}, 0.1, true, 1}}) {
        const TimelineStrip strip =
            stripsOf({clip("a", 100, 10, {{"effects", c.warps}}), clip("b", 0, 1)}).at(0);
        EXPECT_DOUBLE_EQ(strip.settings.speed, c.speed);
        EXPECT_EQ(strip.settings.reverse, c.reverse);
        EXPECT_EQ(strip.settings.from, 100 * frame);
        EXPECT_EQ(strip.settings.to, (100 + c.frames) * frame);
        EXPECT_EQ(strip.length, 10 * frame);
        EXPECT_EQ(strip.settings.converter, c.speed == 1.0 ? Converter::none : Converter::best);
    }
}

TEST(OtioReader, SaysWhyAClipIsSilentAndPlaysTheOthers) {
    const auto reference = [](const Json& value) {
        return Json{{"media_references", {{"DEFAULT_MEDIA", value}}}};
    };
    const auto effect = [](const Json& value) { return Json{{"effects", {value}}}; };
    const Json missing{{"OTIO_SCHEMA", "MissingReference.1"}, {"name", "lost.wav"}};
    const Json zero{{"OTIO_SCHEMA", "ExternalReference.1"}, {"target_url", "a%00b.wav"}};
    struct Case {
        Json more;
        std::string expected;
        bool silences;
        std::string media;
        bool isSilent = true;
    };
    for (const Case& c : std::vector<Case>{
             {reference({{"OTIO_SCHEMA", "GeneratorReference.1"}}), "GeneratorReference", true, ""},
             {reference(zero), "zero byte", true, ""},
             {{{"media_references", nullptr}, {"name", ""}}, "it refers to no file", true, ""},
             {{{"media_references", nullptr}}, "'x' is looked for", false, "/media/x", false},
             {reference(missing), "'lost.wav' is looked for", false, "/media/lost.wav", false},
             {effect({{"OTIO_SCHEMA", "FreezeFrame.1"}}), "frozen", false, "/a.wav"},
             {effect(warp(0)), "time warp of 0", false, "/a.wav"},
             {{{"enabled", false}}, "disabled", false, "/a.wav"},
             {effect({{"OTIO_SCHEMA", "Glow.7"}, {"name", "shine"}}), "shine", false, "/a.wav", false},
             {effect({{"OTIO_SCHEMA", "TimeEffect.1"}, {"time_scalar", -1}}), "at the constant speed -1",
              true, "/a.wav", false},
             {effect(warp(1e-5)), "the linear one is used", false, "/a.wav", false},
             {{{"source_range", range(998, 5)}}, "plays 0.120 s beyond the end", true, "/a.wav", false},
             {{{"source_range", range(998, 3)}}, "plays 0.040 s beyond the end", false, "/a.wav", false},
             {{{"source_range", range(-2, 5)}}, "plays 0.080 s before the start", false, "/a.wav", false}}) {
        const Timeline read =
            readOtio(timeline({track({gap(3), clip("x", 0, 5, c.more), clip("y", 0, 1)})}), options());
        ASSERT_EQ(read.notes.size(), 1U) << c.expected;
        EXPECT_NE(read.notes[0].text.find(c.expected), std::string::npos) << read.notes[0].text;
        EXPECT_TRUE(read.notes[0].where.starts_with("track 'A1', clip ")) << read.notes[0].where;
        EXPECT_EQ(read.notes[0].at, 3 * frame) << c.expected;
        EXPECT_EQ(read.notes[0].silences, c.silences) << c.expected;
        const std::vector<TimelineStrip>& strips = read.tracks[0].strips;
        ASSERT_EQ(strips.size(), 2U);
        EXPECT_EQ(strips[0].at, 3 * frame);
        EXPECT_EQ(strips[0].media, c.media);
        EXPECT_EQ(!strips[0].silence.empty(), c.isSilent) << c.expected;
        EXPECT_EQ(strips[1].at, strips[0].at + strips[0].length);
        EXPECT_TRUE(strips[1].silence.empty());
    }
}

TEST(OtioReader, ComparesTheKindOfATrackWithoutCase) {
    const auto read = [](const std::string& kind) {
        return readOtio(timeline({track({clip("a", 0, 5)}, {{"kind", kind}})}), options());
    };
    EXPECT_EQ(read("AUDIO").tracks.size(), 1U);
    EXPECT_TRUE(read("audio").notes.empty());
    for (const auto& [kind, silences] : {std::pair("VIDEO", false), std::pair("Subtitle", true)}) {
        const Timeline other = read(kind);
        EXPECT_TRUE(other.tracks.empty());
        ASSERT_EQ(other.notes.size(), 1U);
        EXPECT_EQ(other.notes[0].silences, silences) << other.notes[0].text;
        EXPECT_EQ(other.length, 5 * frame);
    }
}

TEST(OtioReader, WaitsForTheLongestChildOfAnyKind) {
    const auto second = [](const Json& beside) {
        const Json stack = composition("Stack.1", {track({clip("a", 0, 10)}), beside});
        return stripsOf({stack, clip("b", 0, 5)}).at(1).at;
    };
    const Json pictures = track({clip("p", 0, 20), transition(2, 2), gap(10)}, {{"kind", "Video"}});
    EXPECT_EQ(second(pictures), 30 * frame);
    EXPECT_EQ(second(track({clip("p", 0, 30)}, {{"enabled", false}})), 30 * frame);
    EXPECT_EQ(second(composition("Stack.1", {pictures})), 30 * frame);
    // A picture of unknown length moves what follows, which counts as a failure.
    const Json odd = track({{{"OTIO_SCHEMA", "Caption.1"}}}, {{"kind", "Video"}});
    const Timeline read =
        readOtio(timeline({track({composition("Stack.1", {odd}), clip("b", 0, 5)})}), options());
    EXPECT_TRUE(std::ranges::any_of(read.notes, &TimelineNote::silences));

    const Timeline film = readOtio(timeline({track({clip("a", 0, 10)}), pictures}), options());
    EXPECT_EQ(film.length, 30 * frame);
    EXPECT_EQ(endOfSound(film), 10 * frame);
}

TEST(OtioReader, CrossesFadesOverATransition) {
    const std::vector<TimelineStrip> strips =
        stripsOf({clip("a", 100, 50, {{"effects", {warp(2)}}}), transition(10, 5),
                  clip("b", 200, 50, {{"effects", {warp(-1)}}}), transition(3, 2, "Linear"), gap(10)});
    const TimelineStrip& a = strips.at(0);
    EXPECT_EQ(a.length, 55 * frame);
    EXPECT_EQ(a.settings.to, (100 + 110) * frame);
    EXPECT_EQ(a.settings.fade.fadeOutSamples, 30U * frame); // 15 frames as heard, at speed 2
    EXPECT_EQ(a.settings.fade.fadeOutCurve, FadeCurve::power);
    const TimelineStrip& b = strips.at(1);
    EXPECT_EQ(b.at, 40 * frame);
    EXPECT_EQ(b.length, 62 * frame);
    // Backwards, an earlier start is later material.
    EXPECT_EQ(b.settings.to, 260 * frame);
    EXPECT_EQ(b.settings.from, 198 * frame);
    EXPECT_EQ(b.settings.fade.fadeInSamples, 15U * frame);
    EXPECT_EQ(b.settings.fade.fadeOutSamples, 5U * frame);
    EXPECT_EQ(b.settings.fade.fadeOutCurve, FadeCurve::linear);

    // What would start before the timeline does is left out, with its part of the fade.
    const TimelineStrip first = stripsOf({transition(4, 6), clip("a", 100, 50), transition(2, 8)}).at(0);
    EXPECT_EQ(first.at, 0);
    EXPECT_EQ(first.skip, 4 * frame);
    EXPECT_EQ(first.length, 58 * frame);
    EXPECT_EQ(first.settings.from, 96 * frame);
    EXPECT_EQ(first.settings.fade.fadeInSamples, 10U * frame);
}

TEST(OtioReader, TrimsNestedCompositions) {
    // Of two clips nothing is left.
    const Json inner = track({clip("a", 100, 50), transition(4, 4), clip("b", 200, 50),
                              clip("beyond", 0, 5, {{"effects", {warp(1e8)}}})},
                             {{"source_range", range(48, 30)}});
    const Json stack = composition("Stack.1", {inner, clip("c", 300, 20)}, {{"source_range", range(1, 25)}});
    const std::vector<TimelineStrip> strips = stripsOf({gap(10), stack, clip("none", 0, 0), clip("d", 0, 5)});
    ASSERT_EQ(strips.size(), 4U);
    const auto named = [&](const std::string& name) {
        return *std::find_if(strips.begin(), strips.end(), [&](const auto& s) { return s.name == name; });
    };
    // Cut in the middle of its fade-out: 49 of 54 frames are skipped.
    EXPECT_EQ(named("a").at, 10 * frame);
    EXPECT_EQ(named("a").skip, 49 * frame);
    EXPECT_EQ(named("a").length, 5 * frame);
    EXPECT_EQ(named("b").skip, 3 * frame);
    EXPECT_EQ(named("b").length, 25 * frame);
    EXPECT_EQ(named("c").skip, 1 * frame);
    EXPECT_EQ(named("c").length, 19 * frame);
    EXPECT_EQ(named("d").at, 35 * frame);

    // Nothing is told of what lies before or behind.
    const Json marked{{"markers",
                       {{{"OTIO_SCHEMA", "Marker.1"}, {"marked_range", range(0, 0)}},
                        {{"OTIO_SCHEMA", "Marker.1"}, {"marked_range", range(9, 0)}},
                        {{"OTIO_SCHEMA", "Marker.1"}}}}};
    const Json old = composition("Sequence.1",
                                 {clip("gone", 0, 5, {{"enabled", true}}),
                                  clip("left", 0, 9, marked),
                                  {{"OTIO_SCHEMA", "Filler.1"}},
                                  clip("gone", 0, 5)},
                                 {{"kind", "Audio"}, {"source_range", range(6, 4)}});
    const Timeline read =
        readOtio({{"OTIO_SCHEMA", "Timeline.1"},
                  {"tracks", composition("Stack.1", {old}, {{"source_range", range(1, 2)}})}},
                 options());
    ASSERT_EQ(read.tracks.at(0).strips.size(), 1U);
    EXPECT_EQ(read.tracks[0].strips[0].skip, 2 * frame);
    EXPECT_EQ(read.length, 2 * frame);
    EXPECT_TRUE(read.markers.empty());
    EXPECT_TRUE(read.notes.empty());
}

TEST(OtioReader, NotesWhatCompositionsCannotPlay) {
    for (const char* block : {R"({"fadeIn": 1})", R"({"fadeOut": 1})", R"({"automation": [[0, 0]]})",
                              R"({"equaliser": ["peak:1k:3"]})", R"({"converter": "linear"})",
                              R"({"routing": [[1], [1]]})", R"({"pan": 9})", R"({"gain": 3})"}) {
        const Json own{{"metadata", {{"audlmd", Json::parse(block)}}}};
        const Timeline read = readOtio(timeline({track({clip("a", 0, 5)}, own)}), options());
        EXPECT_EQ(read.notes.empty(), std::string(block).find("gain") != std::string::npos) << block;
        for (const TimelineNote& note : read.notes)
            EXPECT_NE(note.text.find("only gain and speed are played"), std::string::npos) << note.text;
    }
    const Json solo{{"name", "solo"}, {"metadata", {{"any", {{"SoloOn", true}}}}}};
    const Timeline alone =
        readOtio(timeline({track({clip("a", 0, 5)}), track({clip("b", 0, 5)}, solo)}), options());
    ASSERT_EQ(alone.tracks.size(), 1U);
    EXPECT_EQ(alone.tracks[0].name, "solo");
    EXPECT_EQ(alone.notes.at(0).text, "silent: another track is soloed");
    EXPECT_FALSE(alone.notes.at(0).silences);
    // A row that is no part of the sound, and a place that no output has.
    Json off = timeline({track({clip("a", 0, 5)})});
    off["tracks"]["enabled"] = false;
    EXPECT_NE(readOtio(off, options()).notes.at(0).text.find("disabled"), std::string::npos);
    ReadOptions fast = options();
    fast.sampleRate = 768'000;
    std::vector<Json> children(1502, gap(2.5e10));
    children.push_back(clip("a", 0, 0));
    off["tracks"] = composition("Stack.1", {track(children)}, {{"source_range", range(0, 5)}});
    const Timeline far = readOtio(off, fast);
    EXPECT_TRUE(far.tracks.at(0).strips.empty());
    EXPECT_NE(far.notes.at(0).text.find("its times are beyond 2^60 samples"), std::string::npos);
}

TEST(OtioReader, PlaysANestedStackBackwardsAtItsSpeed) {
    const Json marker{{"OTIO_SCHEMA", "Marker.1"}, {"name", "m"}, {"marked_range", range(4, 0)}};
    const Json stack = composition("Stack.1", {track({gap(4), clip("a", 100, 16, {{"effects", {warp(3)}}})})},
                                   {{"source_range", range(0, 10)},
                                    {"effects", {warp(-2)}},
                                    {"markers", {marker}},
                                    {"metadata", {{"audlmd", {{"gain", -3}}}}}});
    const Json outer = track({stack, clip("b", 0, 10)}, {{"metadata", {{"audlmd", {{"gain", -2}}}}}});
    const Timeline read = readOtio(timeline({outer}), options());
    const TimelineStrip& a = read.tracks[0].strips.at(0);
    EXPECT_EQ(a.at, 0);
    EXPECT_EQ(a.length, 8 * frame);
    EXPECT_TRUE(a.settings.reverse);
    EXPECT_DOUBLE_EQ(a.settings.speed, 6.0);
    EXPECT_EQ(a.settings.from, 100 * frame);
    EXPECT_EQ(a.settings.to, 148 * frame);
    EXPECT_DOUBLE_EQ(a.gainDb, -5.0);
    EXPECT_EQ(read.markers.at(0).at, 8 * frame);
    EXPECT_EQ(read.tracks[0].strips.at(1).at, 10 * frame);
}

} // namespace
} // namespace audlmd::test

#include "host/timeline/List.hpp"

#include "tests/host/timeline/TimelineFixture.hpp"

#include <gtest/gtest.h>

namespace audlmd::test {
namespace {

TEST(List, ShowsWhatSoundsWhen) {
    Timeline timeline;
    const auto strip = [](const char* name, std::int64_t at, std::int64_t length) {
        TimelineStrip made;
        made.name = name;
        made.media = "/a.wav";
        made.at = at;
        made.length = length;
        return made;
    };
    TimelineStrip door = strip("T\u00fcr", 48'000, 24'000);
    door.skip = 24'000;
    door.settings.from = 0;
    door.settings.to = 96'000;
    door.settings.speed = 2.0;
    door.settings.reverse = true;
    door.settings.fade.fadeOutSamples = 48'000;
    door.settings.fade.fadeOutCurve = FadeCurve::log;
    door.settings.equaliser = {{BandKind::peak, 1000, -3, 2}, {BandKind::highPass, 80, 0, 0.5}};
    TimelineStrip rain = strip("rain\033[2J", 0, 48'000LL * 3661);
    rain.settings.to = std::int64_t{rain.length};
    rain.settings.automation = AutomationWalk{Automation({{0, 1.0F}})};
    rain.gainDb = -6.5;
    TimelineStrip off = strip("off", 96'000, 48'000);
    off.silence = "disabled";
    timeline.name = "film\n";
    timeline.length = 48'000LL * 3700;
    timeline.timeReference = 48'000LL * 3600;
    timeline.tracks = {{"A1", {door, off}}, {"A2", {rain}}};
    timeline.markers = {{"cue", 72'000}};
    timeline.notes = {{"track 'A1'", "muted"}, {"clip 'a\xC2\x9B'", "odd", -24'030}, {"track 'A1'", "muted"}};
    EXPECT_EQ(
        list(timeline, [](const std::string& media) { return "/found" + media; }),
        "film?: 1:01:40.000 at 48000 Hz, 2 channels, 3 clips on 2 tracks; starts at 1:00:00.000; the last "
        "sound "
        "ends at 1:01:01.000\n"
        "track  clip      timecode     output                     source                     speed  "
        "direction  "
        "gain                  fades         equaliser                       file\n"
        "A1     T\u00fcr       1:00:01.000  0:00:01.000 - 0:00:01.500  0:00:00.000 - 0:00:01.000  2      "
        "backwards  0 dB                  out 0.5s log  peak:1000:-3:2 highpass:80:0.5  /found/a.wav\n"
        "A1     off       1:00:02.000  0:00:02.000 - 0:00:03.000  0:00:00.000 - 0:00:00.000  1      forwards "
        "  "
        "0 dB                                                                silent: disabled\n"
        "A2     rain?[2J  1:00:00.000  0:00:00.000 - 1:01:01.000  0:00:00.000 - 1:01:01.000  1      forwards "
        "  "
        "-6.5 dB + automation                                                /found/a.wav\n"
        "marker 0:00:01.500  cue\n"
        "note: track 'A1': muted (2 times)\n"
        "note: clip 'a?', at -0:00:00.501: odd\n");

    TimelineStrip faded = strip("in", 0, 48'000);
    faded.settings.to = 48'000;
    faded.settings.fade.fadeInSamples = 12'000;
    Timeline plain;
    plain.length = 48'000;
    plain.tracks = {{"A1", {faded, faded}}};
    plain.tracks[0].strips[1].settings.fade.fadeOutSamples = 24'000;
    const std::string text = list(plain, [](const std::string& media) { return media; });
    EXPECT_TRUE(text.starts_with("timeline: 0:00:01.000 at 48000 Hz, 2 channels, 2 clips on 1 track\n"))
        << text;
    EXPECT_EQ(text.find("timecode"), std::string::npos);
    EXPECT_NE(text.find(" in 0.25s linear  "), std::string::npos) << text;
    EXPECT_NE(text.find(" in 0.25s linear, out 0.5s linear  "), std::string::npos) << text;
}

} // namespace
} // namespace audlmd::test

#include "tests/tools/timeline/TimelineFixture.hpp"

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
    rain.settings.to = rain.length;
    rain.settings.automation = AutomationWalk{Automation({{0, 1.0F}})};
    rain.gainDb = -6.5;
    timeline.tracks = {{"A1", {door}}, {"A2", {rain}}};
    timeline.markers = {{"cue", 72'000}};
    timeline.notes = {{"track 'A1'", "muted"}};
    EXPECT_EQ(
        list(timeline),
        "track  clip      output                     source                     speed  direction  gain"
        "                  fades         equaliser                       file\n"
        "A1     T\u00fcr       0:00:01.000 - 0:00:01.500  0:00:00.000 - 0:00:01.000  2      backwards  0 dB"
        "                  out 0.5s log  peak:1000:-3:2 highpass:80:0.5  /a.wav\n"
        "A2     rain?[2J  0:00:00.000 - 1:01:01.000  0:00:00.000 - 1:01:01.000  1      forwards   -6.5 dB + "
        "automation                                                /a.wav\n"
        "marker 0:00:01.500  cue\n"
        "note   track 'A1': muted\n");
}

} // namespace
} // namespace audlmd::test

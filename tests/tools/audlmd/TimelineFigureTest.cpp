// The picture of a timeline: by what the sketch holds, by where boxes lie, and by what is drawn.

#include "tools/audlmd/mix/picture/TimelineFigure.hpp"

#include "tests/tools/plot/Drawing.hpp"
#include "tools/audlmd/mix/picture/TimelinePainter.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace audlmd::test {
namespace {

using namespace command;

constexpr std::int64_t second = 48000;

/// Four seconds: silence, or silence with a last second at half of full scale.
struct LoudAtTheEnd final : SampleSource {
    explicit LoudAtTheEnd(int sampleRate, bool isLoud) : rate(sampleRate), loud(isLoud) {}
    std::int64_t length() const override { return 4 * rate; }
    void read(std::int64_t position, std::span<float> samples) override {
        for (float& sample : samples)
            sample = loud && position++ >= 3 * rate ? -0.5F : 0.0F;
        samplesRead += std::ssize(samples);
    }
    int rate;
    bool loud;
    std::int64_t samplesRead = 0;
};

/// Media whose names begin with an "a" can be opened.
Media openMedium(const std::string& name) {
    if (!name.starts_with('a'))
        throw std::runtime_error("not there");
    return {{std::make_shared<LoudAtTheEnd>(48000, true)}, 48000};
}

TimelineStrip strip(std::int64_t at, std::int64_t length, const std::string& media = "a") {
    TimelineStrip strip;
    strip.name = strip.media = media;
    strip.at = at;
    strip.length = length;
    strip.settings.to = length;
    return strip;
}

/// Four seconds with one track.
Timeline timeline(const std::vector<TimelineStrip>& strips) {
    Timeline timeline;
    timeline.length = 4 * second;
    timeline.tracks = {{"", strips}};
    return timeline;
}

TEST(TimelineFigure, ShowsTheMaterialAsItIsPlayedInOnePass) {
    struct Case {
        int rate;
        bool reverse;
        double speed;
        std::int64_t skip;
        /// In columns of 1/25 s.
        double loudFrom, loudTo;
    };
    for (const auto& [rate, reverse, speed, skip, loudFrom, loudTo] :
         {Case{48000, false, 1.0, 0, 75, 100},
          {48000, true, 1.0, 0, 0, 25},
          {24000, false, 1.0, 0, 75, 100},
          {96000, true, 1.0, 0, 0, 25},
          {48000, false, 2.0, 0, 38, 50},
          {48000, true, 0.5, second, 0, 25},
          {44100, false, 1.0, 2 * second, 25, 50}}) {
        TimelineStrip played = strip(0, 4 * second);
        played.settings.reverse = reverse;
        played.settings.speed = speed;
        played.settings.converter = speed == 1.0 ? Converter::none : Converter::linear;
        played.skip = skip;
        TimelineSketch sketch = sketchTimeline(timeline({played, played}), {}, 100);
        const auto left = std::make_shared<LoudAtTheEnd>(rate, false);
        const Media media{{left, std::make_shared<LoudAtTheEnd>(rate, true)}, rate};
        int opened = 0;
        readPeaks(
            sketch, [&](auto) { return ++opened, media; }, [](double) {});
        const auto& peaks = sketch.tracks[0].strips[0].peaks;
        const auto first = static_cast<double>(std::ranges::find(peaks, 0.5F) - peaks.begin());
        const auto loud = static_cast<double>(std::ranges::count(peaks, 0.5F));
        EXPECT_NEAR(first, loudFrom, 1.0) << rate << " Hz, speed " << speed << ", reverse " << reverse;
        EXPECT_NEAR(first + loud, loudTo, 1.0) << rate << " Hz, speed " << speed << ", reverse " << reverse;
        EXPECT_EQ(sketch.tracks[0].strips[1].peaks, peaks);
        EXPECT_EQ(opened, 1);
        EXPECT_LE(left->samplesRead, left->length());
    }
}

TEST(TimelineFigure, ShowsShortDipsOfAutomation) {
    TimelineStrip dipped = strip(0, second + 500);
    dipped.settings.automation = AutomationWalk{Automation({{12000, 1.0F}, {12060, 0.0F}, {12120, 1.0F}}),
                                                DynamicLevelDirection::reverse};
    const auto levels = sketchTimeline(timeline({dipped}), {}, 400).tracks[0].strips[0].levels;
    // 12,060 samples before the end of the range, in a column of 480 samples.
    EXPECT_EQ(levels[75].lowest, 0.0F);
    EXPECT_EQ(levels[77].lowest, 1.0F);
}

TEST(TimelineFigure, ShowsNothingBehindTheEndOfARange) {
    TimelineStrip longer = strip(second, 2 * second);
    longer.settings.to = second;
    EXPECT_EQ(sketchTimeline(timeline({longer}), {}, 9).tracks[0].strips[0].sounds.to, 2 * second);
}

TEST(TimelineFigure, IsDrawnAsItsPictureShows) {
    TimelineStrip faded = strip(0, second);
    faded.settings.fade = {.fadeInSamples = 12000, .fadeOutSamples = 24000};
    faded.gainDb = -6.0;
    TimelineStrip reversed = strip(2 * second, 2 * second, "another/a");
    reversed.name.clear();
    reversed.settings.reverse = true;
    reversed.settings.from = 2 * second;
    reversed.settings.to = 4 * second;
    TimelineStrip refused = strip(3 * second, second);
    refused.settings.speed = 2.0;
    TimelineStrip disabled = strip(0, 4 * second);
    disabled.silence = "disabled";
    Timeline shown = timeline({faded, reversed});
    shown.tracks[0].name = "T\xFFrack";
    shown.tracks.push_back({"a name that is too long", {strip(second, second, "b"), refused}});
    shown.tracks.push_back({"", {disabled, strip(second, 9), strip(2 * second, second / 20)}});
    shown.name = "Film";
    shown.timeReference = 3600 * second;
    // At one place there are more than the picture has rows.
    for (const char* name : {"one", "two", "three", "four", "five"})
        shown.markers.push_back({name, second});
    shown.markers.insert(shown.markers.end(),
                         {{"end", 4 * second}, {"beyond", 4 * second + 1}, {"before", -1}});
    MixReport report;
    report.strips.resize(1);
    report.strips[0].strip = 1;
    report.strips[0].silent = {{0, 5 * second / 2}};
    report.strips[0].overload.spans = {{3 * second, 5 * second}};
    report.channels = {{0, 0.5F, 0, {}}, {1, 1.5F, 0, {{second, 2 * second}}}};
    plot::Figure figure = drawTimeline(shown, report, nullptr, &openMedium, [](double) {});
    EXPECT_EQ(figure.subtitle,
              "7 strips on 3 tracks, 0:04.000 at 48000 Hz, 2 channels; time 0 is 1:00:00.000 on the "
              "timeline's clock");
    // With columns wide enough to be read.
    // From 1 s on as loud as the report says, in unequal portions; the last second is not mixed.
    OutputCourse course({second, 3 * second}, usualLayout(2), 48000, OutputCourse::Loudness::leftOut);
    std::vector<float> loud(static_cast<std::size_t>(second / 2), 1.5F);
    std::vector<float> soft(loud.size(), -0.5F);
    for (const std::size_t part : {1U, 23999U, 24000U})
        course.add({{std::span(soft).first(part), std::span(loud).first(part)}});
    for (std::span<float> part : {std::span(loud), std::span(soft)})
        course.add({{soft, part}});
    TimelineSketch sketch = sketchTimeline(shown, report, 20, &course);
    readPeaks(sketch, &openMedium, [](double) {});
    sketch.tracksLeftOut = 3;
    figure.drawing = [&](const plot::Pen& pen, const plot::Rectangle& area) {
        paintTimeline(pen, sketch, TimelineLayout(sketch, area.top));
    };
    expectPicture("timeline", [&] { plot::drawFigure(figure, plot::PictureKind::svg); });
}

TEST(TimelineFigure, SurvivesAbsurdNamesAndThousandsOfStrips) {
    constexpr std::int64_t far = std::int64_t{1} << 60;
    Timeline shown = timeline({strip(-5, 10), strip(far, far), strip(0, far), strip(0, 0)});
    for (std::int64_t n = 0; n < 1700; ++n)
        for (const char* media : {"a", "another", "\xFF\xC0\xAF\xED\xA0\x80\xEF\xBF\xBE\n\xF4"})
            shown.tracks[0].strips.push_back(strip(38 * n, 4 * n + 1, media));
    shown.name = std::string(1 << 20, '\xE2');
    shown.markers = {{shown.name, 0}, {shown.name, -far}, {"end", 4 * second}};
    shown.tracks.resize(800);
    shown.timeReference = 1;
    std::vector<double> shares;
    const plot::Figure figure =
        drawTimeline(shown, {}, nullptr, &openMedium, [&](double share) { shares.push_back(share); });
    EXPECT_TRUE(figure.subtitle.ends_with("; time 0 is 0:00.000 on the timeline's clock"));
    EXPECT_TRUE(plot::drawFigure(figure, plot::PictureKind::png).starts_with("\x89PNG"));
    EXPECT_TRUE(std::ranges::is_sorted(shares) && shares.back() == 1.0);
}

} // namespace
} // namespace audlmd::test

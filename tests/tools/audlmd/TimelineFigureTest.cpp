// The picture of a timeline: by what the sketch holds, by where boxes lie, and by pixels.

#include "tools/audlmd/mix/picture/TimelineFigure.hpp"

#include "tools/audlmd/mix/picture/TimelineLayout.hpp"

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

TEST(TimelineFigure, StacksStripsThatOverlapAndShowsShortDipsOfAutomation) {
    TimelineStrip dipped = strip(0, second + 500);
    dipped.settings.automation = AutomationWalk{Automation({{12000, 1.0F}, {12060, 0.0F}, {12120, 1.0F}}),
                                                DynamicLevelDirection::reverse};
    dipped.settings.fade.fadeInSamples = 4800;
    const TimelineSketch sketch =
        sketchTimeline(timeline({strip(second, 2 * second), strip(3 * second, second), dipped}), {}, 400);
    const auto& strips = sketch.tracks[0].strips;
    const TimelineLayout layout(sketch, 0.0);
    EXPECT_GT(layout.box(0, strips[0]).right(), layout.box(0, strips[1]).left);
    EXPECT_LE(layout.box(0, strips[0]).bottom(), layout.box(0, strips[1]).top);
    EXPECT_EQ(layout.box(0, strips[2]).height, layout.lane(0).height);
    // 12,060 samples before the end of the range, in a column of 480 samples.
    EXPECT_EQ(strips[0].levels[75].lowest, 0.0F);
    EXPECT_EQ(strips[0].levels[77].lowest, 1.0F);
    EXPECT_EQ(strips[0].fade[0], 0.0F);
    EXPECT_LT(strips[0].fade[9], strips[0].fade[10]);
    EXPECT_EQ(strips[0].fade[10], 1.0F);
}

TEST(TimelineFigure, IsRedWhereTheReportSaysAndWhereMediaAreMissing) {
    Timeline shown = timeline({strip(0, second), strip(2 * second, 2 * second)});
    shown.tracks.push_back({"", {strip(second, second, "b")}});
    // A clip that is switched off is there, but nothing is wrong with it.
    shown.tracks.push_back({"", {strip(0, 4 * second)}});
    shown.tracks[2].strips[0].silence = "disabled";
    MixReport report;
    report.strips.resize(1);
    report.strips[0].strip = 1;
    report.strips[0].silent = {{0, 5 * second / 2}};
    report.channels.resize(1);
    report.channels[0].spans = {{second, 2 * second}};
    const plot::Figure figure = drawTimeline(shown, report, &openMedium, [](double) {});
    const auto height = static_cast<int>(figure.chartHeight);
    cairo_surface_t* const image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1200, height);
    cairo_t* const context = cairo_create(image);
    cairo_set_source_rgb(context, 1.0, 1.0, 1.0);
    cairo_paint(context);
    figure.drawing(plot::Pen(context), {0.0, 0.0, 1200.0, figure.chartHeight});
    const auto* const pixels = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(image));
    const TimelineLayout layout(sketchTimeline(shown, report, 100), 0.0);
    EXPECT_EQ(sketchTimeline(shown, report, 100).tracks[2].strips.size(), 1U);
    for (double time = 0.05; time < 4.0; time += 0.1) {
        const double x = layout.x(time * second);
        // Three quarters down, below the texts.
        const auto red = [&](const plot::Rectangle& area) {
            const int row = static_cast<int>(area.top + 0.75 * area.height);
            const std::uint32_t pixel = pixels[1200 * row + static_cast<int>(x)];
            return (pixel >> 16 & 255) > (pixel & 255) + 20;
        };
        EXPECT_EQ(red(layout.lane(0)), time > 2.0 && time < 2.5) << time;
        EXPECT_EQ(red(layout.lane(1)), time > 1.0 && time < 2.0) << time;
        EXPECT_FALSE(red(layout.lane(2))) << time;
        EXPECT_EQ(red(layout.output()), time > 1.0 && time < 2.0) << time;
    }
    cairo_destroy(context);
    cairo_surface_destroy(image);
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
    std::vector<double> shares;
    const plot::Figure figure =
        drawTimeline(shown, {}, &openMedium, [&](double share) { shares.push_back(share); });
    EXPECT_TRUE(plot::drawFigure(figure, plot::PictureKind::png).starts_with("\x89PNG"));
    EXPECT_TRUE(std::ranges::is_sorted(shares) && shares.back() == 1.0);
}

} // namespace
} // namespace audlmd::test

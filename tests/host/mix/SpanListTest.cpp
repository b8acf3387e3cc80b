#include "host/mix/Reporting.hpp"
#include "host/mix/StripSchedule.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>

namespace audlmd::test {
namespace {

using testing::ElementsAre;

TEST(SpanList, JoinsWhatTouchesAndSortsWhatComesLate) {
    SpanList<TimelineClock> list(10);
    list.add({.from = 100, .to = 200});
    list.add({.from = 200, .to = 250});
    list.add({.from = 400, .to = 500});
    list.add({.from = 390, .to = 410});
    list.add({.from = 240, .to = 300});
    list.add({.from = 0, .to = 10});
    EXPECT_THAT(list.spans(),
                ElementsAre(TimelineSpan{.from = 0, .to = 10}, TimelineSpan{.from = 100, .to = 300},
                            TimelineSpan{.from = 390, .to = 500}));
}

TEST(StripReports, NameTheSlowestStrip) {
    StripReports reports;
    for (std::size_t strip = 0; const double seconds : {1.0, 3.0, 2.0})
        reports.add({.strip = strip++}, {}, seconds);
    MixReport more;
    more.slowest = {{.strip = 7}, 2.5};
    reports.add(more);
    EXPECT_EQ(reports.slowest().strip, 1U);
}

TEST(SpanList, JoinsTheClosestNeighboursWhereThereAreTooMany) {
    SpanList<TimelineClock> list(4);
    for (std::int64_t group = 0; group < 3; ++group)
        for (std::int64_t place = 0; place < 50; ++place)
            list.add({.from = group * 100'000 + place * 20, .to = group * 100'000 + place * 20 + 5});
    EXPECT_LE(list.spans().size(), 4U);
    EXPECT_EQ(list.spans().front().from, 0);
    EXPECT_EQ(list.spans().back().to, 200'985);
    EXPECT_THAT(list.spans(), testing::Each(testing::Truly(
                                  [](const TimelineSpan& span) { return span.to - span.from <= 1000; })))
        << "groups far apart stay apart";
}

TEST(StripReports, AddUpWhatHappenedToAStrip) {
    constexpr StripKey key{.track = 1, .strip = 2};
    StripReport first, second, third;
    first.underrunSamples = 3;
    first.underrunEpisodes = 1;
    first.overload = {.samples = 2, .peak = 1.5F, .firstAt = 70, .spans = {{.from = 70, .to = 80}}};
    second.failure = "first";
    second.silent = {{.from = 5, .to = 6}};
    second.overload = {.samples = 5, .peak = 1.25F, .firstAt = 10, .spans = {{.from = 10, .to = 20}}};
    third.failure = "second";
    StripReports reports;
    for (const StripReport& report : {first, second, third})
        reports.add(key, report, 0.0);
    reports.add({.track = 0, .strip = 9}, {}, 0.0); // nothing to tell
    reports.addSilence(key, {.from = 6, .to = 16}, "");
    reports.addSilence(key, {.from = 20, .to = 30}, "");
    reports.addSilence(key, {.from = 40, .to = 50}, "third");
    ASSERT_EQ(reports.strips().size(), 1U);
    const StripReport sum = reports.strips()[0];
    EXPECT_EQ(static_cast<const StripKey&>(sum), key);
    EXPECT_EQ(sum.failure, "first");
    EXPECT_EQ(sum.underrunSamples, 23U);
    EXPECT_EQ(sum.underrunEpisodes, 2U);
    EXPECT_THAT(sum.silent, ElementsAre(TimelineSpan{.from = 5, .to = 16}, TimelineSpan{.from = 20, .to = 30},
                                        TimelineSpan{.from = 40, .to = 50}));
    EXPECT_EQ(sum.overload.samples, 7U);
    EXPECT_EQ(sum.overload.peak, 1.5F);
    EXPECT_EQ(sum.overload.firstAt, 70);
    EXPECT_THAT(sum.overload.spans,
                ElementsAre(TimelineSpan{.from = 10, .to = 20}, TimelineSpan{.from = 70, .to = 80}));
}

TEST(OverloadMeter, CountsWhatIsHeardBeyondFullScale) {
    OverloadMeter meter(4);
    meter.measure(std::vector{1.0F, -1.0F}, 1.0F, 0);
    EXPECT_EQ(meter.overload().samples, 0U);
    EXPECT_EQ(meter.overload().peak, 1.0F);
    meter.measure(std::vector{0.5F, -2.0F, 0.5F, 3.0F, 1.25F}, 0.75F, 100);
    meter.measure(std::vector{1.5F}, 1.0F, 300);
    const Overload overload = meter.overload();
    EXPECT_EQ(overload.samples, 3U);
    EXPECT_EQ(overload.peak, 2.25F);
    EXPECT_EQ(overload.firstAt, 101);
    EXPECT_THAT(overload.spans,
                ElementsAre(TimelineSpan{.from = 101, .to = 104}, TimelineSpan{.from = 300, .to = 301}));
}

TEST(StripSchedule, HoldsOpenWhatAWindowTouches) {
    std::mt19937 random(3);
    std::vector<TimelineSpan> strips;
    for (int i = 0; i < 60; ++i) {
        const auto from = static_cast<std::int64_t>(random() % 300);
        strips.push_back({.from = from, .to = from + static_cast<std::int64_t>(random() % 20)});
    }
    StripSchedule schedule(strips);
    std::set<std::size_t> open;
    std::int64_t at = 0;
    for (int i = 0; i < 2000; ++i) {
        at = random() % 8 == 0 ? static_cast<std::int64_t>(random() % 320) - 10
                               : at + static_cast<std::int64_t>(random() % 6);
        const auto length = static_cast<std::int64_t>(random() % 20);
        const StripSchedule::Change change = schedule.moveTo({.from = at, .to = at + length});
        for (const std::size_t strip : change.closed)
            EXPECT_EQ(open.erase(strip), 1U);
        for (const std::size_t strip : change.opened)
            EXPECT_TRUE(open.insert(strip).second);
        for (std::size_t strip = 0; strip < strips.size(); ++strip)
            ASSERT_EQ(open.contains(strip), strips[strip].from < strips[strip].to &&
                                                strips[strip].from < at + length && strips[strip].to > at)
                << "window " << at << " of " << length;
        EXPECT_GE(schedule.mostOpen(length), open.size());
    }
    const StripSchedule few(
        {{.from = 0, .to = 10}, {.from = 10, .to = 20}, {.from = 5, .to = 8}, {.from = 9, .to = 9}});
    EXPECT_EQ(few.mostOpen(2), 2U);
    EXPECT_EQ(few.mostOpen(3), 3U);
}

} // namespace
} // namespace audlmd::test

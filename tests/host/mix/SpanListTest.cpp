#include "host/mix/Reporting.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace audlmd::test {
namespace {

using testing::ElementsAre;

TEST(SpanList, JoinsWhatTouchesAndSortsWhatComesLate) {
    SpanList<TimelineClock> list(10);
    list.add({.from = 100, .to = 200});
    list.add({.from = 200, .to = 250});
    list.add({.from = 400, .to = 500});
    list.add({.from = 0, .to = 10});
    list.add({.from = 240, .to = 300});
    EXPECT_THAT(list.spans(),
                ElementsAre(TimelineSpan{.from = 0, .to = 10}, TimelineSpan{.from = 100, .to = 300},
                            TimelineSpan{.from = 400, .to = 500}));
}

TEST(StripReports, NameTheSlowestStrip) {
    StripReports reports;
    for (const auto& [strip, seconds] : {std::pair{4U, 1.0}, {5U, 3.0}, {6U, 2.0}})
        reports.add(StripKey{.strip = strip}, {}, seconds);
    EXPECT_EQ(reports.slowest().strip, 5U);
    MixReport more;
    for (const auto& [strip, seconds, slowest] : {std::tuple{7U, 2.5, 5U}, {8U, 3.5, 8U}}) {
        more.slowest = {{.strip = strip}, seconds};
        reports.add(more);
        EXPECT_EQ(reports.slowest().strip, slowest);
    }
    EXPECT_TRUE(reports.strips().empty());
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

} // namespace
} // namespace audlmd::test

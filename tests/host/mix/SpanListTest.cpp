#include "host/mix/Reporting.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

} // namespace
} // namespace audlmd::test

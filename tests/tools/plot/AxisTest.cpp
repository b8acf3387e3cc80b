#include "tools/plot/Axis.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace audlmd::test {
namespace {

using plot::Axis;
using plot::Scale;

TEST(Axis, PutsRoundTicksInsideItsRange) {
    struct Case {
        Axis axis;
        int count;
        std::string labels;
    };
    for (const auto& [axis, count, labels] :
         std::vector<Case>{{{"", 0.0, 1.0}, 5, "0.0 0.2 0.4 0.6 0.8 1.0"},
                           {{"", 0.07, 3.5}, 3, "2"},
                           {{"", -0.012, 0.011}, 4, "−0.01 0.00 0.01"},
                           {{"", -70.0, 13.0, Scale::decibels}, 12, "−60 −48 −36 −24 −12 0 12"},
                           {{"", -2.0, 1.0, Scale::decibels}, 3, "−2 −1 0 1"},
                           {{"", -200.0, 0.0, Scale::decibels}, 5, "−200 −160 −120 −80 −40 0"},
                           {{"", 0.0, 120.0, Scale::time}, 4, "0 50 100"},
                           {{"", 0.0, 150.0, Scale::time}, 5, "0:00 0:30 1:00 1:30 2:00 2:30"},
                           {{"", 0.0, 20000.0, Scale::time}, 4, "0:00 120:00 240:00"},
                           {{"", 0.0, 2.2, Scale::clock}, 4, "0:00 0:01 0:02"},
                           {{"", 59.4, 60.6, Scale::clock}, 3, "0:59.5 1:00.0 1:00.5"},
                           {{"", 0.0, 10800.0, Scale::clock}, 4, "0:00 1:00:00 2:00:00 3:00:00"},
                           {{"", 3500.0, 36900.0, Scale::clock}, 2, "5:00:00 10:00:00"},
                           {{"", 3480.0, 3720.0, Scale::clock}, 4, "58:00 59:00 1:00:00 1:01:00 1:02:00"},
                           {{"", 20.0, 2000.0, Scale::logarithmic}, 1, "20 50 100 200 500 1k 2k"}}) {
        std::string found;
        for (const plot::Tick& tick : axis.ticks(count))
            if (!tick.label.empty())
                found += (found.empty() ? "" : " ") + tick.label;
        EXPECT_EQ(found, labels);
    }
    EXPECT_EQ(plot::clockText(3599.9996, 0.001), "1:00:00.000");
}

} // namespace
} // namespace audlmd::test

#include "standalone/mix/Timeline.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace audlmd::test {
namespace {

TEST(DefaultRouting, GoesOneToOneAndFromOneChannelToTheFirstTwo) {
    using Rows = std::vector<std::vector<float>>;
    EXPECT_EQ(defaultRouting(1, 1).rows, (Rows{{1}}));
    EXPECT_EQ(defaultRouting(1, 2).rows, (Rows{{1}, {1}}));
    EXPECT_EQ(defaultRouting(1, 3).rows, (Rows{{1}, {1}, {0}}));
    EXPECT_EQ(defaultRouting(2, 2).rows, (Rows{{1, 0}, {0, 1}}));
    EXPECT_EQ(defaultRouting(2, 4).rows, (Rows{{1, 0}, {0, 1}, {0, 0}, {0, 0}}));
    EXPECT_THROW(defaultRouting(3, 2), std::invalid_argument);
    EXPECT_THROW(defaultRouting(1, 0), std::invalid_argument);
}

} // namespace
} // namespace audlmd::test

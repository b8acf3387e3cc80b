#include "ole/Orv/Despatcher.hpp"

#include <gtest/gtest.h>

namespace audlmd::test {

TEST(Despatcher, GrowsToTheLargestCodeAndKeepsTheFirstFunction) {
    using Table = Orv::ModeMetaHelpers2::Despatcher<void (*)(int&), struct Tag>;
    const auto first = [](int&) {};
    const auto second = [](int& x) { ++x; };
    Table table;
    EXPECT_EQ(table.find(24), nullptr);
    table.registerFunction(1751, first);
    EXPECT_EQ(table.size(), 1752U);
    table.registerFunction(7, second);
    EXPECT_EQ(table.size(), 1752U);
    EXPECT_EQ(table.find(24), nullptr);
    EXPECT_EQ(table.find(1752), nullptr);
    EXPECT_THROW(table.registerFunction(1751, second), Orv::Exception::RuntimeError);
    EXPECT_EQ(table.find(1751), first);
    EXPECT_EQ(table.find(7), second);
}

} // namespace audlmd::test

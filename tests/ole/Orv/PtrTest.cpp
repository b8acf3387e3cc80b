#include "ole/Orv/Ptr.hpp"

#include "ole/Orv/Despatcher.hpp"

#include <gtest/gtest.h>

#include <utility>

namespace audlmd::test {
namespace {

struct Counted {
    explicit Counted(bool& isGone) : gone(isGone) {}
    ~Counted() { gone = true; }

    std::int32_t referenceCount = 0;
    bool& gone;
};
using CountedPtr = Orv::Ptr<Counted, Orv::DtorTraits, Orv::InternalRefCountTraits>;

TEST(Ptr, HoldsOneObjectAndTheLastHolderDestroysIt) {
    bool firstIsGone = false, secondIsGone = false;
    CountedPtr first(new Counted(firstIsGone));
    CountedPtr none;
    EXPECT_TRUE(first);
    EXPECT_FALSE(none);
    {
        CountedPtr second(new Counted(secondIsGone));
        second = first;
        EXPECT_TRUE(secondIsGone);
        EXPECT_EQ(&*second, &*first);
        EXPECT_EQ(first->referenceCount, 2);
    }
    EXPECT_FALSE(std::exchange(firstIsGone, false));
    first = none;
    EXPECT_TRUE(firstIsGone);
}

TEST(Despatcher, FindsNothingBehindItsTable) {
    struct Tag;
    Orv::ModeMetaHelpers2::Despatcher<void (*)(), Tag> table;
    EXPECT_EQ(table.find(0), nullptr);
    table.registerFunction(1, [] {});
    EXPECT_EQ(table.find(0), nullptr);
    EXPECT_NE(table.find(1), nullptr);
    EXPECT_EQ(table.find(table.size()), nullptr);
}

} // namespace
} // namespace audlmd::test

#include "host/play/BlockRing.hpp"

#include <gtest/gtest.h>

namespace audlmd::test {
namespace {

TEST(BlockRing, HandsOverWhatIsPublished) {
    BlockRing ring(3, 1);
    for (std::uint64_t generation = 1; generation <= 3; ++generation) {
        ring.writable()->generation = generation;
        ring.push();
    }
    EXPECT_EQ(ring.writable(), nullptr);
    EXPECT_EQ(ring.readable(), nullptr);
    ring.publish();
    EXPECT_EQ(ring.readable()->generation, 1U);
    ring.pop();
    EXPECT_EQ(ring.readable()->generation, 2U);
    EXPECT_NE(ring.writable(), nullptr);
}

} // namespace
} // namespace audlmd::test

#include "host/mix/StripOpener.hpp"

#include "tests/host/cache/NoMemory.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace audlmd::test {
namespace {

TEST(StripOpener, TellsOfAFailureWithoutMemoryForTheReason) {
    StripOpener opener([](std::size_t) -> std::unique_ptr<OpenStrip> {
        const std::runtime_error failure("a text that is too long for a string without memory of its own");
        failNextAllocation();
        throw failure;
    });
    opener.open(7);
    EXPECT_EQ(opener.wait(7)->failure, "out of memory");
}

} // namespace
} // namespace audlmd::test

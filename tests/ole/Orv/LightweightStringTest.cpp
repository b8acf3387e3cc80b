#include "ole/Orv/LightweightString.hpp"

#include "tests/scripted_host/ScriptedHost.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string_view>
#include <tuple>

namespace audlmd::test {
namespace {

TEST(LightweightString, StandsBehindTheCountAndTheLengthThatItsCopiesShare) {
    struct Body {
        std::int32_t count;
        std::size_t length;
        char16_t text[3];
    };
    const std::int64_t blocksBefore = heapBlocksInUse();
    {
        LightweightString<char16_t> string(u"abc");
        const Body* body = nullptr;
        std::memcpy(&body, &string, sizeof body);
        EXPECT_EQ(std::tuple(body->count, body->length, std::u16string_view(body->text, 3)),
                  std::tuple(1, 3U, std::u16string_view(u"abc")));
        {
            LightweightString<char16_t> copy(string), other(u"other");
            other = copy;
            EXPECT_EQ(body->count, 3);
            EXPECT_EQ(other.view().data(), body->text);
        }
        EXPECT_EQ(body->count, 1);
    }
    EXPECT_EQ(heapBlocksInUse(), blocksBefore);
    EXPECT_EQ(LightweightString<char>().view(), "");
}

TEST(StdAllocator, FreesWhatAnyOtherTookAndRefusesWhatNoNumberOfBytesHolds) {
    EXPECT_TRUE(StdAllocator<int>() == StdAllocator<int>());
    EXPECT_THROW(StdAllocator<int>().allocate(SIZE_MAX / sizeof(int) + 1), std::bad_array_new_length);
}

} // namespace
} // namespace audlmd::test

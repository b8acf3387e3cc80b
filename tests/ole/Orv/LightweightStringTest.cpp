#include "ole/Orv/LightweightString.hpp"

#include <gtest/gtest.h>

#include <cstring>

namespace audlmd::test {
namespace {

TEST(LightweightString, StandsBehindTheCountAndTheLengthThatItsCopiesShare) {
    struct Body {
        std::int32_t count;
        std::size_t length;
        char16_t text[3];
    };
    LightweightString<char16_t> string(u"abc"), other(u"other");
    const Body* body = nullptr;
    std::memcpy(&body, &string, sizeof body);
    EXPECT_EQ(std::u16string_view(body->text, body->length), u"abc");
    EXPECT_EQ(string.view(), u"abc");
    EXPECT_EQ(LightweightString<char16_t>().view(), u"");
    EXPECT_EQ(LightweightString<char16_t>(u"").view().data(), nullptr);
    {
        const LightweightString<char16_t> copy(string);
        other = copy;
        EXPECT_EQ(body->count, 3);
    }
    EXPECT_EQ(body->count, 2);
}

TEST(StdAllocator, RefusesWhatNoNumberOfBytesHolds) {
    EXPECT_TRUE(StdAllocator<int>() == StdAllocator<int>());
    EXPECT_THROW(StdAllocator<int>().allocate(SIZE_MAX / sizeof(int) + 1), std::bad_array_new_length);
}

} // namespace
} // namespace audlmd::test

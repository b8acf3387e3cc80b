#include "contract/LoadServices.hpp"
#include "host/services/Event.hpp"
#include "host/services/Identities.hpp"
#include "host/services/ImageFormats.hpp"
#include "ole/Orv/Exception.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace audlmd::test {
namespace {

TEST(Event, TimesOutUntilItIsSignalledAndStaysSo) {
    const EventPtr event(new Event);
    EXPECT_FALSE(event->wait(5));
    event->signal();
    EXPECT_TRUE(event->wait(iThreadEvent::noTimeLimit));
    EXPECT_TRUE(event->wait(0));
}

TEST(OperatingSystem, NotesTheThreadAndTheCallsThatLedToAnException) {
    const Orv::Exception::RuntimeError error("", "", 0);
    ASSERT_GE(error.notes().size(), 3U);
    EXPECT_THAT(std::string(error.notes().front().view()), testing::StartsWith("thread "));
    EXPECT_THAT(std::string(error.notes().back().view()), testing::HasSubstr(" + 0x"));
}

TEST(Identities, AreReadAndWrittenAsText) {
    const std::string text = "f81d4fae-7dec-11d0-a765-00a0c91e6bf6";
    EXPECT_EQ(toString(parseUuid(text)), text);
    EXPECT_EQ(parseUuid("F81D4FAE-7DEC-11D0-A765-00A0C91E6BF6"), parseUuid(text));
    for (const char* wrong :
         {"f81d4fae-7dec-11d0-a765-00a0c91e6bf", "g81d4fae-7dec-11d0-a765-00a0c91e6bf6",
          "f81d4fae07dec-11d0-a765-00a0c91e6bf6", "f81d4fae-7dec-11d0-a765-00a0c91e6bf6 "})
        EXPECT_THROW(parseUuid(wrong), std::invalid_argument) << wrong;
    EXPECT_NE(makeUuid(), makeUuid());
    EXPECT_THAT(toString(makeUuid()), testing::MatchesRegex("[^-]+-[^-]+-4[^-]+-[89ab][^-]+-[^-]+"));
}

TEST(ImageFormats, AreAnnouncedForAsLongAsTheirUnitsAreLoaded) {
    const std::size_t others = announcedImageFormats();
    {
        const Orv::Image::FormatUID first(4711);
        const Orv::Image::FormatUID second(4711);
        EXPECT_EQ(announcementsOfImageFormat(4711), 2U);
        EXPECT_EQ(announcedImageFormats(), others + 1);
    }
    EXPECT_EQ(announcedImageFormats(), others);
}

} // namespace
} // namespace audlmd::test

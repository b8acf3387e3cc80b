#include "host/services/Event.hpp"
#include "host/services/Identities.hpp"
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

TEST(Identities, AreRandomAndWrittenAsText) {
    const Orv::UUID uuid{
        {0xF8, 0x1D, 0x4F, 0xAE, 0x7D, 0xEC, 0x11, 0xD0, 0xA7, 0x65, 0x00, 0xA0, 0xC9, 0x1E, 0x6B, 0xF6}};
    EXPECT_EQ(toString(uuid), "f81d4fae-7dec-11d0-a765-00a0c91e6bf6");
    EXPECT_NE(makeUuid(), makeUuid());
    EXPECT_THAT(toString(makeUuid()), testing::MatchesRegex("[^-]+-[^-]+-4[^-]+-[89ab][^-]+-[^-]+"));
}

} // namespace
} // namespace audlmd::test

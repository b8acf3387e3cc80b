#include "host/services/Event.hpp"
#include "host/services/Identities.hpp"
#include "host/services/Threads.hpp"
#include "ole/Orv/Exception.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace audlmd::test {
namespace {

TEST(Event, TimesOutUntilItIsSignalledAndStaysSo) {
    const EventPtr event(new Event);
    EXPECT_FALSE(event->wait(5));
    const auto signaller = namedThread("signals", [&event](const std::stop_token&) { event->signal(); });
    EXPECT_TRUE(event->wait(60'000));
    EXPECT_TRUE(event->wait(iThreadEvent::noTimeLimit));
    EXPECT_TRUE(event->wait(0));
}

/// Makes an exception when it is written to.
struct Thrower : std::streambuf {
    int overflow(int written) override {
        const Orv::Exception::RuntimeError error("", "", 0);
        for (const auto& note : error.notes())
            notes.emplace_back(note.view());
        return written;
    }
    std::vector<std::string> notes;
};

TEST(OperatingSystem, NotesTheThreadAndTheCallsThatLedToAnException) {
    Thrower thrower;
    namedThread("throws", [&thrower](const std::stop_token&) { std::ostream(&thrower).put('x'); }).join();
    // The test's own functions have no names that the program exports; who called them has.
    EXPECT_THAT(thrower.notes, testing::Contains(testing::StartsWith("std::ostream::put(char) + 0x")));
    ASSERT_GE(thrower.notes.size(), 2U);
    EXPECT_THAT(thrower.notes[0], testing::MatchesRegex("thread [0-9]+ \\(throws\\)"));
    EXPECT_THAT(thrower.notes[1], testing::HasSubstr(" + 0x"));
}

TEST(OperatingSystem, TellsNoStorageFromNoMemory) {
    void* const storage = OS().heap().allocate(0);
    EXPECT_NE(storage, nullptr);
    OS().heap().release(storage);
}

TEST(Identities, AreRandomAndWrittenAsText) {
    const Orv::UUID uuid{
        {0xF8, 0x1D, 0x4F, 0xAE, 0x7D, 0xEC, 0x11, 0xD0, 0xA7, 0x65, 0x00, 0xA0, 0xC9, 0x1E, 0x6B, 0xF6}};
    EXPECT_EQ(toString(uuid), "f81d4fae-7dec-11d0-a765-00a0c91e6bf6");
    const Orv::UUID first = makeUuid();
    std::array<int, 16> changing{};
    for (int n = 0; n < 40; ++n) {
        const Orv::UUID other = makeUuid();
        for (std::size_t byte = 0; byte < changing.size(); ++byte)
            changing[byte] |= first.bytes[byte] ^ other.bytes[byte];
    }
    EXPECT_THAT(changing, testing::Each(testing::Ne(0)));
    EXPECT_THAT(toString(makeUuid()), testing::MatchesRegex("[^-]+-[^-]+-4[^-]+-[89ab][^-]+-[^-]+"));
}

} // namespace
} // namespace audlmd::test

#include "host/LoadServices.hpp"
#include "standalone/services/Configuration.hpp"
#include "standalone/services/Event.hpp"
#include "standalone/services/Identities.hpp"
#include "standalone/services/ImageFormats.hpp"
#include "standalone/services/RenderFunctions.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace audlmd::test {
namespace {

using testing::HasSubstr;

TEST(Event, TimesOutUntilItIsSignalledAndStaysSo) {
    const EventPtr event(new Event);
    EXPECT_FALSE(event->wait(5));
    event->signal();
    EXPECT_TRUE(event->wait(iThreadEvent::noTimeLimit));
    EXPECT_TRUE(event->wait(0));
}

TEST(Configuration, PrefersTheEnvironmentToTheFileToTheDefault) {
    const auto path = std::filesystem::path(testing::TempDir()) / "audlmd-test.conf";
    std::ofstream(path) << "# numbers\n\n Speed.Limit = 2.5 # fast\nSpeed.Limit=3\n"
                           "no setting\nBroken = 4,5\nHuge = inf\n";
    testing::internal::CaptureStderr();
    const Configuration configuration(path);
    std::filesystem::remove(path);
    EXPECT_EQ(configuration.number("Other", 1.25), 1.25);
    EXPECT_EQ(configuration.number("Speed.Limit", 1.0), 3.0);
    setenv("AUDLMD_Speed_Limit", " +4e0 ", 1);
    EXPECT_EQ(configuration.number("Speed.Limit", 1.0), 4.0);
    setenv("AUDLMD_Speed_Limit", "fast", 1);
    for (const char* key : {"Speed.Limit", "Broken", "Huge", "Speed.Limit", "Broken"})
        EXPECT_EQ(configuration.number(key, 1.0), 1.0) << key;
    unsetenv("AUDLMD_Speed_Limit");

    const std::string reported = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(reported.begin(), reported.end(), '\n'), 4) << reported;
    for (const char* part : {"audlmd-test.conf:5: ", "environment variable AUDLMD_Speed_Limit: 'fast'",
                             "audlmd-test.conf:6: Broken: '4,5'"})
        EXPECT_THAT(reported, HasSubstr(part));
}

void renderNothing(Aud::Render::IteratorCreationParams&, Aud::SampleS24*&, unsigned int) {}

TEST(RenderFunctions, AreFoundByOutputTypeAndCodeAndMissedWithAReason) {
    auto& table = Aud::LoopModesDespatcherInstance<Aud::SampleS24*>::get();
    table = {};
    table.registerFunction(1751, &renderNothing);
    EXPECT_EQ(findRenderFunction<Aud::SampleS24*>(1751), &renderNothing);
    EXPECT_EQ(findRenderFunction<Aud::SampleS16*>(1751), nullptr);
    for (const unsigned long code : {0UL, 24UL, 1752UL, ~0UL})
        EXPECT_EQ(findRenderFunction<Aud::SampleS24*>(code), nullptr);
    EXPECT_THROW(renderFunction<Aud::SampleS24*>(0), NoSuchMode);
    EXPECT_THAT(whyNoSuchMode(0), HasSubstr("valid, but no library"));
    EXPECT_THAT(whyNoSuchMode(96), HasSubstr("srcStage (bits 5 and 6) is 3"));
    EXPECT_THAT(whyNoSuchMode(2048), HasSubstr("the largest is 1751"));
}

TEST(OperatingSystem, NotesTheThreadAndTheCallsThatLedToAnException) {
    auto& table = Aud::LoopModesDespatcherInstance<Aud::SampleS24*>::get();
    try {
        for (int i = 0; i < 2; ++i)
            table.registerFunction(3, &renderNothing);
        FAIL();
    } catch (const Orv::Exception::RuntimeError& error) {
        ASSERT_GE(error.notes().size(), 3U);
        EXPECT_THAT(std::string(error.notes().front().view()), testing::StartsWith("thread "));
        EXPECT_THAT(std::string(error.notes().back().view()), HasSubstr(" + 0x"));
    }
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

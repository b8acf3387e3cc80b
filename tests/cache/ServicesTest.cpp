#include "host/ImageFormat.hpp"
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
#include <future>
#include <set>
#include <string>

namespace audlmd::test {
namespace {

using testing::HasSubstr;

TEST(Event, BlocksUntilItIsSignalledAndStaysSo) {
    const EventPtr event(new Event);
    EXPECT_FALSE(event->wait(5));
    auto waiting = std::async(std::launch::async, [held = ThreadEventPtr(&*event)] {
        return held->wait(iThreadEvent::noTimeLimit);
    });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    event->signal();
    EXPECT_TRUE(waiting.get());
    EXPECT_TRUE(event->wait(0));
    EXPECT_EQ(event->referenceCount, 1);
}

TEST(Configuration, PrefersTheEnvironmentToTheFileToTheDefault) {
    const auto path = std::filesystem::path(testing::TempDir()) / "audlmd-test.conf";
    std::ofstream(path)
        << "# settings\n\n Speed = 2.5 # fast\nSpeed=3\nno setting\nBroken = 4,5\nHuge = inf\n";
    testing::internal::CaptureStderr();
    const Configuration configuration(path);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("audlmd-test.conf:5: "));
    std::filesystem::remove(path);

    EXPECT_EQ(configuration.number("Speed", 1.0), 3.0);
    EXPECT_EQ(configuration.number("Other", 1.25), 1.25);
    setenv("AUDLMD_Speed", " +4e0 ", 1);
    EXPECT_EQ(configuration.number("Speed", 1.0), 4.0);
    EXPECT_EQ(Configuration::environmentName("a.b-C9"), "AUDLMD_a_b_C9");

    setenv("AUDLMD_Speed", "fast", 1);
    testing::internal::CaptureStderr();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(configuration.number("Speed", 1.0), 1.0);
        EXPECT_EQ(configuration.number("Broken", 7.0), 7.0);
        EXPECT_EQ(configuration.number("Huge", 8.0), 8.0);
    }
    const std::string reported = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(reported.begin(), reported.end(), '\n'), 3) << reported;
    EXPECT_THAT(reported, HasSubstr("environment variable AUDLMD_Speed: 'fast'"));
    EXPECT_THAT(reported, HasSubstr("audlmd-test.conf:6: Broken: '4,5'"));
    unsetenv("AUDLMD_Speed");
}

TEST(Configuration, LooksForTheUsersFileInTheCustomaryPlaces) {
    setenv("HOME", "/home/user", 1);
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("AUDLMD_CONFIG");
    EXPECT_EQ(Configuration::userFile(), "/home/user/.config/audlmd.conf");
    setenv("XDG_CONFIG_HOME", "/settings", 1);
    EXPECT_EQ(Configuration::userFile(), "/settings/audlmd.conf");
    setenv("AUDLMD_CONFIG", "/my.conf", 1);
    EXPECT_EQ(Configuration::userFile(), "/my.conf");
    unsetenv("AUDLMD_CONFIG");
}

void renderNothing(Aud::Render::IteratorCreationParams&, Aud::SampleS24*&, unsigned int) {}

TEST(RenderFunctions, AreFoundByOutputTypeAndCodeAndMissedWithAReason) {
    auto& table = Aud::LoopModesDespatcherInstance<Aud::SampleS24*>::get();
    table.registerFunction(1751, &renderNothing);
    EXPECT_EQ(table.size(), 1752U);
    EXPECT_EQ(findRenderFunction<Aud::SampleS24*>(1751), &renderNothing);
    EXPECT_EQ(renderFunction<Aud::SampleS24*>(1751), &renderNothing);
    EXPECT_EQ(findRenderFunction<Aud::SampleS16*>(1751), nullptr);
    for (const unsigned long code : {0UL, 24UL, 1752UL, ~0UL})
        EXPECT_EQ(findRenderFunction<Aud::SampleS24*>(code), nullptr);
    EXPECT_THROW(renderFunction<Aud::SampleS24*>(0), NoSuchMode);

    EXPECT_THAT(whyNoSuchMode(0), HasSubstr("valid, but no library"));
    EXPECT_THAT(whyNoSuchMode(24), HasSubstr("envelopeStage (bits 1 to 4) is 12, at most 11"));
    EXPECT_THAT(whyNoSuchMode(96), HasSubstr("srcStage (bits 5 and 6) is 3"));
    EXPECT_THAT(whyNoSuchMode(768), HasSubstr("levelStage (bits 8 and 9) is 3"));
    EXPECT_THAT(whyNoSuchMode(2048), HasSubstr("the largest is 1751"));
}

TEST(RenderFunctions, HaveATableOfTheirOwnForEachOutputType) {
    const std::set<const void*> tables = []<class... Out>(std::tuple<Out...>*) {
        return std::set<const void*>{&Aud::LoopModesDespatcherInstance<Out>::get()...};
    }(static_cast<Aud::Render::OutputTypes*>(nullptr));
    EXPECT_EQ(tables.size(), 14U);
}

TEST(OperatingSystem, NotesTheThreadAndTheCallsThatLedToAnException) {
    try {
        auto& table = Aud::LoopModesDespatcherInstance<Aud::SampleU8*>::get();
        const auto function = [](Aud::Render::IteratorCreationParams&, Aud::SampleU8*&, unsigned int) {};
        table.registerFunction(3, function);
        table.registerFunction(3, function);
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
    EXPECT_EQ(parseUuid(text).bytes[4], 0x7D);
    for (const char* wrong :
         {"", "f81d4fae", "f81d4fae-7dec-11d0-a765-00a0c91e6bf", "g81d4fae-7dec-11d0-a765-00a0c91e6bf6",
          "f81d4fae07dec-11d0-a765-00a0c91e6bf6", "f81d4fae-7dec-11d0-a765-00a0c91e6bf6 "})
        EXPECT_THROW(parseUuid(wrong), std::invalid_argument) << wrong;
    const std::string made = toString(makeUuid());
    EXPECT_THAT(made, testing::MatchesRegex("[0-9a-f]+-[0-9a-f]+-4[0-9a-f]+-[89ab][0-9a-f]+-[0-9a-f]+"));
    EXPECT_NE(made, toString(makeUuid()));
    EXPECT_EQ(ce_handle(Cookie{parseUuid(text), 3, 1}).get_strip_cookie(), (Cookie{parseUuid(text), 3, 1}));
}

TEST(ImageFormats, AreAnnouncedForAsLongAsTheirUnitsAreLoaded) {
    const std::size_t before = announcedImageFormats();
    {
        const Orv::Image::FormatUID first(4711);
        const Orv::Image::FormatUID second(4711);
        EXPECT_EQ(announcementsOfImageFormat(4711), 2U);
        EXPECT_EQ(announcedImageFormats(), before + 1);
    }
    EXPECT_EQ(announcementsOfImageFormat(4711), 0U);
    EXPECT_EQ(announcedImageFormats(), before);
}

} // namespace
} // namespace audlmd::test

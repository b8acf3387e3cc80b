#include "host/words/Numbers.hpp"
#include "host/words/StripWords.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <vector>

namespace audlmd::test {
namespace {

using namespace words;

TEST(Words, TellTimesInEveryNotation) {
    for (const auto& [text, seconds] :
         std::vector<std::pair<const char*, double>>{{"12.5", 12.5},
                                                     {"3s", 3.0},
                                                     {"250ms", 0.25},
                                                     {"1:02.5", 62.5},
                                                     {"100:59.5", 6059.5},
                                                     {"1:59:59.999", 7199.999},
                                                     {"1:00:00:12@25", 3600.48},
                                                     {"0:00:59:24@25", 59.96},
                                                     {"0:01:00:00@23.976", 60.06},
                                                     {"0:01:00:00@24000/1001", 60.06},
                                                     {"0:01:00;02@29.97", 1800 * 1.001 / 30},
                                                     {"0:09:59;29@29.97", (17'982 - 1) * 1.001 / 30},
                                                     {"0:10:00;00@29.97", 17'982 * 1.001 / 30},
                                                     {"0:01:00;04@59.94", 3600 * 1.001 / 60},
                                                     {"0:00:00:999@1000", 0.999}}) {
        const std::optional<WrittenTime> time = timeIn(text);
        ASSERT_TRUE(time) << text;
        EXPECT_NEAR(time->seconds, seconds, 1e-9) << text;
        EXPECT_FALSE(time->samples) << text;
    }
    EXPECT_EQ(timeIn("480000smp").value().samples, 480'000);
    for (const char* none : {"",
                             "s",
                             "ms",
                             "smp",
                             "-1",
                             "+1",
                             "1e3",
                             "inf",
                             " 1",
                             "1.5smp",
                             "1:60",
                             "1:60:00",
                             "1:1:1:1",
                             "1.5:00",
                             "x:00",
                             "1:0x",
                             "0:00:00:25@25",
                             "0:00:00:00@0",
                             "0:00:00:00@1001",
                             "0:00:00:00@1e9",
                             "0:00:00:00@29.5",
                             "0:00:00:00@30001/1001",
                             "0:00:00:00@x/1001",
                             "0:00:00:00@0/1001",
                             "00:00:00@25",
                             "0:00:00.5:00@25",
                             "0:00:00:0x@25",
                             "0:00:60:00@25",
                             "999999999:00:00:00@25",
                             "0:00:00;00@25",
                             "0:00:00;00@30",
                             "0:00:00;00@23.976",
                             "0:01:00;01@29.97",
                             "0:01:00;03@59.94",
                             "5@25"})
        EXPECT_FALSE(timeIn(none)) << none;
    EXPECT_EQ(secondsIn("-1.5e1s"), -15.0);
    for (const char* none : {"+1s", "1", "infs", "xs"})
        EXPECT_FALSE(secondsIn(none)) << none;
    EXPECT_EQ(clock(48'000 * 3661 + 24, 48'000), "1:01:01.001");
    EXPECT_EQ(clock(-48, 48'000), "-0:00:00.001");
    EXPECT_EQ(runningClock(48'000 * 3661 + 9599, 48'000), "1:01:01.1");
}

TEST(Words, TellLevelsAndBands) {
    EXPECT_EQ(levelIn("0 dB"), levelIn("0"));
    EXPECT_EQ(levelIn("-inf"), 0.0F);
    EXPECT_THROW(levelIn("10.1"), std::invalid_argument);
    EXPECT_EQ(levelIn("+10DB"), 1.5F);
    for (const auto& [text, shown] : {std::pair("peak:1.5 kHz:-3dB", "peak:1500:-3:0.707107"),
                                      {"lowshelf:2k:+3:2", "lowshelf:2000:3:2"},
                                      {"highpass:80Hz", "highpass:80:0.707107"},
                                      {"lowpass:80:2", "lowpass:80:2"}})
        EXPECT_EQ(bandText(bandIn(text)), shown);
    for (const char* none : {"fuzz:1:1", "peak:1k", "peak:1k:1:1:1", "lowpass", "lowpass:1:1:1",
                             "peak:1k:loud", "peak:k:1", "peak:1xHz:1", "peak:nodB:1"})
        EXPECT_THROW(bandIn(none), std::invalid_argument) << none;
}

/// Each lies one beside another that is shown.
TEST(Words, HideBytesThatAreNoCharacters) {
    for (const auto& [text, shown] : std::vector<std::pair<std::string, std::string>>{
             {"\xC2\xA0\xC3(", "\xC2\xA0?("},
             {"\xE0\xA0\x80\xE0\x9F\xBF", "\xE0\xA0\x80???"},
             {"\xED\x9F\xBF\xEE\x80\x80\xED\xBF\xBF", "\xED\x9F\xBF\xEE\x80\x80???"},
             {"\xF0\x90\x80\x80\xF0\x8F\xBF\xBF", "\xF0\x90\x80\x80????"},
             {"\xF4\x8F\xBF\xBF\xF4\x90\x80\x80", "\xF4\x8F\xBF\xBF????"},
             {"\x1F ~\x7F", "? ~?"},
             {"\xE2\x80\xA7\xE2\x80\xA8\xE2\x80\xAE\xE2\x80\xAF", "\xE2\x80\xA7??\xE2\x80\xAF"},
             {"\xE2\x81\xA5\xE2\x81\xA6\xE2\x81\xA9\xE2\x81\xAA", "\xE2\x81\xA5??\xE2\x81\xAA"},
             {"\xE2\x80\x8D\xE2\x80\x8E\xE2\x80\x8F\xE2\x80\x90", "\xE2\x80\x8D??\xE2\x80\x90"}})
        EXPECT_EQ(printable(text), shown);
}

} // namespace
} // namespace audlmd::test

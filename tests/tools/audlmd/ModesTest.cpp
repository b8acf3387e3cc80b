// `audlmd modes`, `audlmd --version` and --help.

#include "tests/tools/audlmd/CommandFixture.hpp"

#include <algorithm>

namespace audlmd::test {
namespace {

class Modes : public CommandFixture {};

TEST_F(Modes, AreListedWithTheirChainsAndDecodedInEitherNotation) {
    const std::string list = output("modes");
    EXPECT_EQ(std::ranges::count(list, '\n'), 864);
    for (const char* line :
         {"   0  0x000  NullIterator<NullIterator<NullIterator<SampleCache::ReverseIterator>>>\n",
          "1751  0x6d7  FilteringSRCIterator<FixedLevelApplyingIterator<FixedLevelApplyingIterator<"
          "EnvelopeApplyingIterator<MultiBandBiquadApplyingIterator<SampleCache::ForwardIterator>, "
          "EnvelopeTraits::RampHoldRamp>>>>\n"})
        EXPECT_NE(list.find(line), std::string::npos) << line;
    const std::string mode = output("modes 1603");
    for (const char* part :
         {"mode code 1603 (0x643)", "levelStage             2", "srcStage               2",
          "envelopeStage          1", "the same chain as code 1602", "for 14 of 14 output types"})
        EXPECT_NE(mode.find(part), std::string::npos) << part << "\nin\n" << mode;
    EXPECT_EQ(output("modes 0x643"), mode);
}

TEST_F(Modes, SayWhyACodeIsNotValid) {
    expectRefused("modes 24", "envelopeStage");
    expectRefused("modes 0x300", "levelStage");
    for (const std::string code : {"96", "1752", "99999999999999999999", "-1", "0x", "seven"})
        expectRefused("modes " + code, code);
}

TEST_F(Modes, StandBesideTheVersionAndTheHelp) {
    EXPECT_EQ(output("--version"), AUDLMD_VERSION "\n");
    EXPECT_NE(output("render --help").find("--automation-reverse"), std::string::npos);
}

} // namespace
} // namespace audlmd::test

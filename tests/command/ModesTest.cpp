// `audlmd modes`, `audlmd --version` and --help.

#include "tests/command/CommandFixture.hpp"

#include <algorithm>

namespace audlmd::test {
namespace {

class Modes : public CommandFixture {};

TEST_F(Modes, AreListedWithTheirChains) {
    const Outcome outcome = run({"modes"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(std::ranges::count(outcome.output, '\n'), 864);
    for (const char* line :
         {"   0  0x000  NullIterator<NullIterator<NullIterator<SampleCache::ReverseIterator>>>\n",
          "  72  0x048  "
          "FilteringSRCIterator<NullIterator<FixedLevelApplyingIterator<EnvelopeApplyingIterator<"
          "NullIterator<SampleCache::ReverseIterator>, EnvelopeTraits::SimpleRamp<2>>>>>\n",
          " 293  0x125  LinearSRCIterator<DynamicLevelControl::ForwardsDynamicLevelApplyingIterator<"
          "EnvelopeApplyingIterator<NullIterator<SampleCache::ReverseIterator>, "
          "EnvelopeTraits::SimpleRamp<2>>>>\n",
          "1751  0x6d7  FilteringSRCIterator<FixedLevelApplyingIterator<FixedLevelApplyingIterator<"
          "EnvelopeApplyingIterator<MultiBandBiquadApplyingIterator<SampleCache::ForwardIterator>, "
          "EnvelopeTraits::RampHoldRamp>>>>\n"})
        EXPECT_NE(outcome.output.find(line), std::string::npos) << line;
}

TEST_F(Modes, AreDecodedInEitherNotation) {
    const Outcome outcome = run({"modes", "1603"});
    EXPECT_EQ(outcome.status, 0);
    for (const char* part :
         {"mode code 1603 (0x643)", "levelStage             2", "srcStage               2",
          "envelopeStage          1", "the same chain as code 1602", "for 14 of 14 output types"})
        EXPECT_NE(outcome.output.find(part), std::string::npos) << part << "\nin\n" << outcome.output;
    EXPECT_EQ(run({"modes", "0x643"}).output, outcome.output);
}

TEST_F(Modes, SayWhyACodeIsNotValid) {
    for (const char* code : {"24", "96", "0x300", "1752", "99999999999999999999", "-1", "0x", "seven"}) {
        const Outcome outcome = run({"modes", code});
        EXPECT_NE(outcome.status, 0) << code;
        EXPECT_EQ(outcome.output, "");
        EXPECT_TRUE(outcome.errors.starts_with("audlmd: ")) << outcome.errors;
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    }
    EXPECT_NE(run({"modes", "24"}).errors.find("envelopeStage"), std::string::npos);
    EXPECT_NE(run({"modes", "0x300"}).errors.find("levelStage"), std::string::npos);
}

TEST_F(Modes, StandBesideTheVersionAndTheHelp) {
    EXPECT_EQ(run({"--version"}).output, AUDLMD_VERSION "\n");
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--help"}, {"render", "--help"}, {"modes", "--help"}}) {
        const Outcome help = run(arguments);
        EXPECT_EQ(help.status, 0);
        EXPECT_NE(help.output.find("audlmd"), std::string::npos);
        EXPECT_EQ(help.errors, "");
    }
    EXPECT_NE(run({"render", "--help"}).output.find("--automation-reverse"), std::string::npos);
}

} // namespace
} // namespace audlmd::test

// `audlmd selftest`, here and on processors that are emulated.

#include "tools/audlmd/selftest/SelfTest.hpp"

#include "host/signal/VectorWidth.hpp"
#include "tests/tools/audlmd/CommandFixture.hpp"
#include "tools/audlmd/CommandError.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>

namespace audlmd::test {
namespace {

using testing::HasSubstr;

class SelfTest : public CommandFixture {};

TEST_F(SelfTest, FindsTheBytesOfTheReleaseAtEveryWidthOfVectors) {
    for (const int bits : {0, 128, 256}) {
        setenv("AUDLMD_VectorBits", std::to_string(bits).c_str(), 1);
        const std::string told = output("selftest");
        EXPECT_THAT(told,
                    HasSubstr(", vectors of " + std::to_string(std::min(bits, vectorBits())) + " bits\n"));
        EXPECT_THAT(told, HasSubstr("all 18 jobs make the bytes of the release\n"));
        for (const command::SelfTestJob& job : command::selfTestJobs())
            EXPECT_THAT(told, HasSubstr("\n" + job.name + " "));
    }
    unsetenv("AUDLMD_VectorBits");
}

TEST_F(SelfTest, FailsWhereOneJobMakesOtherBytes) {
    testing::internal::CaptureStdout();
    try {
        command::runSelfTest({{"a", 1, [] { return 1U; }}, {"b", 1, [] { return 0x2AU; }}}, false);
        ADD_FAILURE() << "no failure";
    } catch (const command::CommandError& error) {
        EXPECT_EQ(error.status(), command::ExitStatus::failed);
        EXPECT_THAT(error.what(), HasSubstr("1 job of 2 made other bytes"));
    }
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                HasSubstr("0000000000000001  000000000000002a  DIFFERENT\n"));
}

TEST_F(SelfTest, FindsThemOnProcessorsWithoutAvxAndWithIt) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__SANITIZE_UNDEFINED__)
    GTEST_SKIP() << "what watches memory cannot be emulated";
#endif
    if (std::system("command -v qemu-x86_64 > /dev/null") != 0)
        GTEST_SKIP() << "qemu-user is not installed";
    for (const auto& [processor, level] :
         std::map<std::string, std::string>{{"Nehalem", "processor x86-64-v2, vectors of 0 bits\n"},
                                            {"Haswell", "processor x86-64-v3, vectors of 256 bits\n"}}) {
        const std::string line =
            "qemu-x86_64 -cpu " + processor + " " AUDLMD_COMMAND " selftest 2> /dev/null > ";
        EXPECT_EQ(std::system((line + in("told").string()).c_str()), 0) << readBytes(in("told"));
        EXPECT_THAT(readBytes(in("told")), HasSubstr(level));
    }
}

} // namespace
} // namespace audlmd::test

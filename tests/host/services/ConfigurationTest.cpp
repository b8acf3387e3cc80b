#include "host/services/Configuration.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace audlmd::test {
namespace {

using testing::HasSubstr;

TEST(Configuration, PrefersTheEnvironmentToTheFileToTheDefault) {
    const auto path = std::filesystem::path(testing::TempDir()) / (std::to_string(getpid()) + "-test.conf");
    std::ofstream(path) << "# numbers\n\n Speed.Limit = 2.5 # fast\nSpeed.Limit=3\n"
                           "no setting\nBroken = 4,5\nHuge = inf\n= 5\n";
    testing::internal::CaptureStderr();
    const Configuration configuration(path);
    std::filesystem::remove(path);
    // A pipe that nobody writes into would never end.
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(Configuration(path).number("Speed.Limit", 1.25), 1.25);
    std::filesystem::remove(path);
    for (const std::filesystem::path& none :
         {path, std::filesystem::path(), std::filesystem::path("/dev/null")})
        EXPECT_EQ(Configuration(none).number("Speed.Limit", 1.25), 1.25);
    EXPECT_EQ(configuration.number("Other", 1.25), 1.25);
    EXPECT_EQ(configuration.number("Speed.Limit", 1.0), 3.0);
    setenv("AUDLMD_Speed_Limit", " +4e0 ", 1);
    EXPECT_EQ(configuration.number("Speed.Limit", 1.0), 4.0);
    setenv("AUDLMD_Speed_Limit", "fast", 1);
    for (const char* key : {"Speed.Limit", "Broken", "Huge", "Speed.Limit", "Broken"})
        EXPECT_EQ(configuration.number(key, 1.0), 1.0) << key;
    unsetenv("AUDLMD_Speed_Limit");

    const std::string reported = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(reported.begin(), reported.end(), '\n'), 6) << reported;
    for (const char* part :
         {"-test.conf:5: ", "-test.conf:8: 'key = value' is expected", "-test.conf: not a regular file",
          "environment variable AUDLMD_Speed_Limit: 'fast'", "-test.conf:6: Broken: '4,5'"})
        EXPECT_THAT(reported, HasSubstr(part));
    EXPECT_EQ(Configuration::environmentName("/09:@AZ[`az{"), "AUDLMD__09__AZ__az_");
}

} // namespace
} // namespace audlmd::test

#include "loop_modes/ModeCode.hpp"

#include "loop_modes/RegistrationOrder.hpp"
#include "model/Model.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace audlmd::test {
namespace {

using namespace Aud::Render;

TEST(ModeCode, IsValidWhereNoTernaryDigitIsThree) {
    unsigned int valid = 0;
    for (unsigned int code = 0; code < 4096; ++code) {
        EXPECT_EQ(isValidModeCode(code), model::isValid(code)) << code;
        valid += isValidModeCode(code);
    }
    EXPECT_EQ(valid, 864U);
    EXPECT_EQ(largestModeCode, 1751U);
    EXPECT_FALSE(isValidModeCode(static_cast<unsigned long>(-1)));
}

TEST(ModeCode, DecodesToFieldsThatEncodeToIt) {
    const ModeFields fields{.direction = Direction::forward,
                            .levelStage = LevelStage::fixed,
                            .filterStage = FilterStage::none,
                            .srcStage = ConversionStage::filtering,
                            .envelopeStage = 1,
                            .dynamicLevelDirection = DynamicLevelDirection::forwards};
    EXPECT_EQ(decodeModeCode(1603), fields);
    for (unsigned int code = 0; code < 2048; ++code)
        EXPECT_EQ(encodeModeCode(decodeModeCode(code)), code);
}

TEST(ModeCode, IsRegisteredInTheOrderOfTheModel) {
    EXPECT_TRUE(std::equal(registrationOrder.begin(), registrationOrder.end(),
                           model::registrationOrder().begin(), model::registrationOrder().end()));
}

} // namespace
} // namespace audlmd::test

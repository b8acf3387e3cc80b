#include "host/services/RenderFunctions.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace audlmd::test {
namespace {

using testing::HasSubstr;

void renderNothing(Aud::Render::IteratorCreationParams&, Aud::SampleS24*&, unsigned int) {}

TEST(RenderFunctions, AreFoundByOutputTypeAndCodeAndMissedWithAReason) {
    auto& table = Aud::LoopModesDespatcherInstance<Aud::SampleS24*>::get();
    table = {};
    table.registerFunction(1751, &renderNothing);
    table.registerFunction(7, &renderNothing);
    EXPECT_EQ(table.size(), 1752U);
    EXPECT_THROW(table.registerFunction(1751, &renderNothing), Orv::Exception::RuntimeError);
    EXPECT_EQ(findRenderFunction<Aud::SampleS24*>(1751), &renderNothing);
    EXPECT_EQ(findRenderFunction<Aud::SampleS16*>(1751), nullptr);
    for (const unsigned long code : {0UL, 24UL, 1752UL, ~0UL})
        EXPECT_EQ(findRenderFunction<Aud::SampleS24*>(code), nullptr);
    EXPECT_EQ(renderFunction<Aud::SampleS24*>(1751), &renderNothing);
    EXPECT_THROW(renderFunction<Aud::SampleS24*>(0), NoSuchMode);
    EXPECT_THAT(whyNoSuchMode(0), HasSubstr("valid, but no library"));
    EXPECT_THAT(whyNoSuchMode(24), HasSubstr("envelopeStage (bits 1 to 4) is 12, at most 11"));
    EXPECT_THAT(whyNoSuchMode(96), HasSubstr("srcStage (bits 5 and 6) is 3, at most 2"));
    EXPECT_THAT(whyNoSuchMode(768), HasSubstr("levelStage (bits 8 and 9) is 3, at most 2"));
    EXPECT_THAT(whyNoSuchMode(2048), HasSubstr("the largest is 1751"));
}

} // namespace
} // namespace audlmd::test

#include "host/inlined/InlinedRenderFunctions.hpp"
#include "tests/host/signal/TestStrip.hpp"

#include <gmock/gmock.h>

#include <array>

namespace audlmd::test {
namespace {

using namespace Aud::Render;

/// The modes that this program's CMakeLists.txt selects.
bool isSelected(unsigned long code) {
    const ModeFields fields = decodeModeCode(code);
    const EnvelopeKind envelope = envelopeStages[fields.envelopeStage].envelope;
    return fields.direction == Direction::forward &&
           (envelope == EnvelopeKind::none || envelope == EnvelopeKind::rampHold) &&
           fields.levelStage == LevelStage::dynamic &&
           fields.dynamicLevelDirection == DynamicLevelDirection::reverse &&
           fields.srcStage != ConversionStage::linear;
}

TEST(SomeInlinedModes, AreThoseThatWereSelected) {
    for (unsigned long code = 0; code < 3000; ++code)
        EXPECT_EQ(inlinedRenderFunction(code) != nullptr, isValidModeCode(code) && isSelected(code)) << code;
}

TEST(SomeInlinedModes, RenderWhatIsBuiltInAndRefuseTheRest) {
    TestStrip strip({0.25F, -3.0F, 0.5F, 1e30F});
    StripSettings settings = strip.settings();
    settings.automation = {Automation({{0, 1.0F}}), DynamicLevelDirection::reverse};
    const auto render = [&strip](const StripSettings& chosen) {
        StripPlayer player(strip.cache(), chosen, &inlinedRenderFunction);
        std::array<float, 5> samples{};
        EXPECT_EQ(player.renderFloats(samples), 4U);
        return samples;
    };
    EXPECT_THAT(render(settings), testing::ElementsAre(0.25F, -3.0F, 0.5F, 1e30F, 0.0F));
    settings.fade.fadeInSamples = 2;
    EXPECT_THAT(render(settings), testing::ElementsAre(0.0F, -1.5F, 0.5F, 1e30F, 0.0F));
    settings.converter = Converter::filtering;
    EXPECT_NE(render(settings)[3], 0.0F);
    settings.converter = Converter::linear;
    EXPECT_THROW(render(settings), NoSuchMode);
    settings.converter = Converter::none;
    settings.reverse = true;
    EXPECT_THROW(render(settings), NoSuchMode);
}

} // namespace
} // namespace audlmd::test

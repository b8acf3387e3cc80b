#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/inlined/SpanLoop.hpp"
#include "tests/host/signal/TestStrip.hpp"

#include <gmock/gmock.h>

#include <array>
#include <span>
#include <vector>

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

template <class Shape>
void expectFadesAsBySamples(const EnvelopeParameters& params) {
    Shape shape(params);
    std::vector<float> samples(50, 0.75F);
    std::vector<float> expected = samples;
    fade(shape, std::span(samples).first(13));
    fade(shape, std::span(samples).subspan(13));
    for (Shape bySample(params); float& sample : expected) {
        sample = bySample.gain() * sample;
        bySample.advance();
    }
    EXPECT_EQ(samples, expected) << params.type << ' ' << params.elapsed;
}

TEST(SpanLoop, FadesBlocksToTheGainsOfEachSampleWhateverAHoldStandsAt) {
    for (const std::uint32_t elapsed : {0U, 3U, 17U, 30U}) {
        EnvelopeParameters params{.elapsed = elapsed,
                                  .startUValue = 0.25F,
                                  .levelUValue = 0.0F,
                                  .type = eRampHold,
                                  .oneRamp = {0x1p-6F, 17, 1, {}}};
        expectFadesAsBySamples<EnvelopeTraits::RampHold>(params);
        params.type = eHoldRamp;
        expectFadesAsBySamples<EnvelopeTraits::HoldRamp>(params);
        params.type = eRampHoldRamp;
        params.twoRamps = {0x1p-6F, -0x1p-7F, 9, 15, 1, 2};
        expectFadesAsBySamples<EnvelopeTraits::RampHoldRamp>(params);
    }
}

} // namespace
} // namespace audlmd::test

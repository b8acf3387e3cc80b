// Every chain, through the player: compiled into this program and converted by the block, against the tables
// of the loaded library.

#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/signal/Unclipped.hpp"
#include "tests/host/signal/EveryCombination.hpp"
#include "tests/host/signal/TestStrip.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <set>
#include <vector>

namespace audlmd::test {
namespace {

/// Loud enough that some samples clip in each mode, with silence, infinities and NaNs among them.
std::vector<float> loudMaterial() {
    std::vector<float> samples = noise(2600);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] *= i % 700 < 350 ? 20.0F : 1.0F;
    std::fill_n(samples.begin() + 1200, 100, 0.0F);
    samples[900] = std::numeric_limits<float>::infinity();
    samples[1900] = -samples[900];
    samples[2100] = std::numeric_limits<float>::quiet_NaN();
    return samples;
}

std::vector<float> renderUnclipped(TestStrip& strip, const StripSettings& settings) {
    StripPlayer player(strip.cache(), settings, &inlinedRenderFunction);
    std::vector<float> samples(player.outputLength() + 1);
    EXPECT_EQ(player.renderFloats(samples), player.outputLength());
    samples.pop_back();
    return samples;
}

template <class Out>
void expectEqualBytes(TestStrip& strip, const StripSettings& settings, const std::vector<float>& unclipped) {
    StripPlayer player(strip.cache(), settings);
    // No container takes more than four bytes. Sums add to what is there.
    std::vector<unsigned char> converted(4 * unclipped.size(), 0x31);
    std::vector<unsigned char> expected = converted;
    const auto at = [](std::vector<unsigned char>& bytes) {
        if constexpr (std::is_pointer_v<Out>)
            return reinterpret_cast<Out>(bytes.data());
        else
            return Out(reinterpret_cast<typename Out::Format*>(bytes.data()));
    };
    Out block = at(converted);
    convertBlock(unclipped.data(), unclipped.size(), block);
    Out out = at(expected);
    ASSERT_EQ(player.render(out, unclipped.size()), unclipped.size());
    ASSERT_EQ(converted, expected) << __PRETTY_FUNCTION__;
}

TEST(InlinedRenderFunctions, RenderTheBytesOfTheTablesInEveryChainAndOutputType) {
    for (const std::vector<float>& material : {noise(2600), loudMaterial()}) {
        TestStrip strip(material);
        StripSettings plain = strip.settings();
        plain.from = -100;
        plain.to = 2700;
        std::set<UnclippedRenderFunction> functions;
        forEveryCombination(plain, [&](const StripSettings& settings) {
            functions.insert(inlinedRenderFunction(StripPlan(settings).modeCode));
            const std::vector<float> unclipped = renderUnclipped(strip, settings);
            [&]<class... Out>(std::tuple<Out...>*) {
                (expectEqualBytes<Out>(strip, settings, unclipped), ...);
            }(static_cast<Aud::Render::OutputTypes*>(nullptr));
        });
        EXPECT_EQ(functions.size(), 576U) << "all chains there are, each with a function of its own";
    }
}

TEST(InlinedRenderFunctions, AreThereForTheCodesThatAreValid) {
    for (unsigned long code = 0; code < 3000; ++code) {
        const UnclippedRenderFunction found = inlinedRenderFunction(code);
        ASSERT_EQ(found != nullptr, Aud::Render::isValidModeCode(code)) << code;
        ASSERT_TRUE(!Aud::Render::isTwinOfEvenCode(code) || found == inlinedRenderFunction(code - 1)) << code;
    }
}

} // namespace
} // namespace audlmd::test

#include "tests/host/signal/EveryCombination.hpp"
#include "tests/host/signal/TestStrip.hpp"

#include <gmock/gmock.h>
#include <libresample.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <dlfcn.h>
#include <numbers>
#include <random>
#include <set>
#include <string>
#include <vector>

static int openResamplers = 0;

// Found before libresample's own.
void* resample_open(int quality, double least, double most) {
    ++openResamplers;
    return reinterpret_cast<decltype(&resample_open)>(dlsym(RTLD_NEXT, "resample_open"))(quality, least,
                                                                                         most);
}
void resample_close(void* handle) {
    --openResamplers;
    reinterpret_cast<decltype(&resample_close)>(dlsym(RTLD_NEXT, "resample_close"))(handle);
}

namespace audlmd::test {
namespace {

/// Takes itself out of the cache when segment 4 is read.
struct VanishingSource final : SampleSource {
    explicit VanishingSource(MaterialCache& from) : cache(from) {}
    std::int64_t length() const override { return 2600; }
    void read(std::int64_t position, std::span<float>) override {
        if (position == 4 * 509)
            cache.remove(Cookie{});
    }
    MaterialCache& cache;
};

TEST(StripPlayer, RendersTheSameBytesInBlocksOfAnySize) {
    TestStrip strip(noise(2600));
    StripSettings plain = strip.settings();
    plain.from = -100;
    plain.to = 2700;
    std::set<unsigned long> modes;
    forEveryCombination(plain, [&](const StripSettings& settings) {
        StripPlayer whole(strip.cache(), settings);
        modes.insert(whole.modeCode());
        const std::vector<float> expected = TestStrip::render(whole);
        ASSERT_EQ(expected.size(), whole.outputLength());
        for (const std::uint64_t block : {1U, 7U, 64U, 1000U})
            ASSERT_EQ(strip.render(settings, block), expected) << block;
    });
    EXPECT_EQ(modes.size(), 576U) << "all chains there are";
}

TEST(StripPlayer, FollowsAFadeWhereTheResamplerEndsABlockOneSampleEarly) {
    TestStrip strip(noise(6753));
    StripSettings settings = strip.settings();
    settings.converter = Converter::filtering;
    settings.speed = 0.564503186793885;
    settings.fade.fadeInSamples = 4072;
    StripPlayer player(strip.cache(), settings);
    player.seek(1359);
    const std::vector<float> whole = TestStrip::render(player);
    player.seek(1359);
    std::vector<float> inParts(1927);
    player.render(inParts);
    const std::vector<float> rest = TestStrip::render(player, 256);
    inParts.insert(inParts.end(), rest.begin(), rest.end());
    EXPECT_EQ(inParts, whole);
}

// The resampler reads on behind the range, where the fade runs below silence up to the next whole block.
TEST(StripPlayer, FollowsAFadeOutThatEndsInsideABlock) {
    TestStrip strip(noise(700));
    for (const std::uint64_t fadeOut : {1U, 3U, 42U, 117U}) {
        StripSettings settings = strip.settings();
        settings.to = 573;
        settings.converter = Converter::filtering;
        settings.speed = 3.2764681965746321;
        settings.fade = {.fadeInSamples = 456, .fadeOutSamples = fadeOut};
        for (const std::uint64_t block : {1U, 43U})
            EXPECT_EQ(strip.render(settings, block), strip.render(settings)) << fadeOut << ' ' << block;
    }
}

TEST(StripPlayer, FilteringIsAlignedFromItsFirstSampleToItsLast) {
    constexpr std::int64_t length = 20000;
    constexpr double radians = 0.02 * std::numbers::pi;
    std::vector<float> samples;
    for (std::int64_t n = 0; n < length; ++n)
        samples.push_back(static_cast<float>(0.5 * std::cos(radians * static_cast<double>(n))));
    TestStrip strip(samples);
    for (const bool reverse : {false, true})
        for (const double speed : {0.1, 0.5, 0.77, 1.0, 1.5, 2.2, 6.0}) {
            StripSettings settings = strip.settings();
            // Whole periods, so that either direction begins with a crest.
            settings.from = 1000;
            settings.to = length - 999;
            settings.converter = Converter::filtering;
            settings.speed = speed;
            settings.reverse = reverse;
            const std::vector<float> out = strip.render(settings);
            EXPECT_EQ(out.size(), std::ceil((length - 1999.0) / speed));
            // At the edge itself the filter has put out half of it, and half of its centre.
            EXPECT_GT(out.front(), 0.25) << speed;
            for (std::size_t n = 0; n < out.size(); ++n) {
                const double into = static_cast<double>(n) * speed;
                if (into > 60.0) {
                    ASSERT_NEAR(out[n], 0.5 * std::cos(radians * into), 2e-3) << speed << ", output " << n;
                }
            }
        }
}

TEST(StripPlayer, ContinuesAfterAJumpAsIfItHadPlayedThere) {
    TestStrip strip(noise(2800));
    forEveryCombination(strip.settings(), [&](const StripSettings& settings) {
        StripPlayer player(strip.cache(), settings);
        const std::vector<float> whole = TestStrip::render(player);
        const auto middle = whole.size() / 3;
        player.seek(middle);
        const std::vector<float> rest = TestStrip::render(player, 50);
        ASSERT_EQ(rest.size(), whole.size() - middle);
        // A filter begins anew.
        if (settings.equaliser.empty() && settings.converter != Converter::filtering) {
            ASSERT_TRUE(std::equal(rest.rbegin(), rest.rend(), whole.rbegin()));
        }
        player.seek(0);
        ASSERT_EQ(TestStrip::render(player, 99), whole);
    });
}

TEST(StripPlayer, RendersIntoNumbers) {
    TestStrip strip({0.25F, -0.5F});
    std::array<std::int16_t, 3> words{};
    EXPECT_EQ(StripPlayer(strip.cache(), strip.settings()).render(words), 2U);
    EXPECT_THAT(words, testing::ElementsAre(8192, -16384, 0));
    std::array<std::int32_t, 3> doubleWords{};
    EXPECT_EQ(StripPlayer(strip.cache(), strip.settings()).render(doubleWords), 2U);
    EXPECT_THAT(doubleWords, testing::ElementsAre(536870911, -1073741824, 0));
}

TEST(StripPlayer, JumpsBackToWhereAFailedCallBegan) {
    const std::vector<float> samples = noise(2600);
    TestStrip strip(samples);
    for (const Converter converter : {Converter::none, Converter::linear, Converter::filtering}) {
        StripSettings settings = strip.settings();
        settings.converter = converter;
        settings.fade = {1500, 1000};
        settings.equaliser = {{BandKind::peak, 3000.0, 6.0}};
        settings.automation = {automation, DynamicLevelDirection::forwards};
        MaterialCache cache({.segmentLength = 509});
        cache.add(settings.cookie, std::make_shared<VanishingSource>(cache));
        StripPlayer player(cache, settings);
        EXPECT_THROW(TestStrip::render(player), UnknownMaterial);
        EXPECT_EQ(player.position(), 0U);
        cache.add(settings.cookie, std::make_shared<MemorySource>(samples));
        EXPECT_EQ(TestStrip::render(player, 200), strip.render(settings)) << static_cast<int>(converter);
        EXPECT_EQ(openResamplers, converter == Converter::filtering ? 1 : 0);
    }
    EXPECT_EQ(openResamplers, 0) << "closed with the player";
}

TEST(StripPlayer, ExplainsWhatTheNextCallReads) {
    TestStrip strip(noise(2600));
    StripSettings settings = strip.settings();
    settings.fade.fadeInSamples = 1000;
    settings.converter = Converter::filtering;
    settings.speed = 6.0;
    StripPlayer player(strip.cache(), settings);
    const auto expect = [&player](const char* start, const char* opened, bool envelope) {
        std::string text;
        for (const auto& [name, value] : player.recordNumbers())
            text += name + " " + value + "\n";
        using testing::HasSubstr;
        EXPECT_THAT(text, AllOf(HasSubstr(start), HasSubstr(opened), HasSubstr("speed 6\n")));
        EXPECT_EQ(text.find("envelope.length 1000") != text.npos, envelope) << text;
    };
    expect("forwardFilteringStartPosition 0\n", "opened 0", true);
    player.seek(200);
    expect("StartPosition 1200\n", "opened 0", false);
    std::array<std::int16_t, 1> out{};
    player.render(out);
    expect("StartPosition 1328\n", "opened 1", false);
}

} // namespace
} // namespace audlmd::test

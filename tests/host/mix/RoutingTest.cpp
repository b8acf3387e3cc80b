#include "host/mix/Routing.hpp"

#include "host/mix/Media.hpp"

#include <gmock/gmock.h>

#include <map>

namespace audlmd::test {
namespace {

using testing::ElementsAre;
using testing::FloatEq;
using testing::HasSubstr;

ChannelLayout named(const std::string& name) {
    return layoutNamed(name).value();
}

/// Each gain to within the last bits of a float.
void expectRows(const Routing& routing, const std::vector<std::vector<float>>& rows,
                const std::string& what) {
    ASSERT_EQ(routing.rows.size(), rows.size()) << what;
    for (std::size_t row = 0; row < rows.size(); ++row)
        EXPECT_THAT(routing.rows[row], testing::Pointwise(FloatEq(), rows[row])) << what << ", row " << row;
}

TEST(DefaultRouting, FoldsDownByTheSpeakers) {
    constexpr float m3 = 0.70710678F;
    constexpr float m9 = 0.35355339F;
    const ChannelLayout unknown[] = {
        {}, unknownLayout(1), unknownLayout(2), unknownLayout(3), unknownLayout(4)};
    const std::tuple<ChannelLayout, ChannelLayout, std::vector<std::vector<float>>> table[] = {
        {named("5.1"), named("stereo"), {{1, 0, m3, 0, m3, 0}, {0, 1, m3, 0, 0, m3}}},
        {named("5.1film"), named("stereo"), {{1, m3, 0, m3, 0, 0}, {0, m3, 1, 0, m3, 0}}},
        {named("5.1"), named("mono"), {{0.5, 0.5, m3, 0, m9, m9}}},
        {named("stereo"), named("mono"), {{0.5, 0.5}}},
        {named("mono"), named("5.1film"), {{1}, {0}, {1}, {0}, {0}, {0}}},
        {named("7.1"),
         named("quad"),
         {{1, 0, m3, 0, 0, 0, 0, 0},
          {0, 1, m3, 0, 0, 0, 0, 0},
          {0, 0, 0, 0, m3, 0, m3, 0},
          {0, 0, 0, 0, 0, m3, 0, m3}}},
        {named("6.1"), named("stereo"), {{1, 0, m3, 0, 0.5, m3, 0}, {0, 1, m3, 0, 0.5, 0, m3}}},
        {{Speaker::left, Speaker::right, Speaker::sideLeft, Speaker::sideRight},
         named("quad"),
         {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}},
        {{Speaker::left, Speaker::right, Speaker::topRearCentre}, named("stereo"), {{1, 0, m9}, {0, 1, m9}}},
        // Where nobody says anything and there is room, the numbers count.
        {unknown[1], unknown[3], {{1}, {1}, {0}}},
        {unknown[3], unknown[4], {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}}},
        {unknown[4], named("5.0"), {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}},
        {unknown[3], unknown[2], {{1, 0, m3}, {0, 1, m3}}}};
    for (const auto& [from, to, rows] : table)
        expectRows(defaultRouting(from, to), rows, nameOf(from) + " to " + nameOf(to));
    EXPECT_THAT(
        [] { defaultRouting(unknownLayout(9), named("stereo")); },
        testing::ThrowsMessage<std::invalid_argument>(HasSubstr("9 channels, more than the output's 2")));
    EXPECT_EQ(defaultRouting(named("stereo"), unknownLayout(9)).rows[8], std::vector<float>(2));
    EXPECT_EQ(foldDownText(named("7.1film"), unknownLayout(2)),
              "7.1film is folded down to stereo, without LFE");
}

TEST(Panned, LowersOneSideOnly) {
    const Routing stereo = defaultRouting(usualLayout(1), usualLayout(2));
    const auto gains = [&](double pan) {
        const Routing routing = panned(stereo, pan, usualLayout(2));
        return std::pair(routing.rows[0][0], routing.rows[1][0]);
    };
    EXPECT_EQ(gains(-50.0), std::pair(1.0F, 1.0F / 3.0F));
    EXPECT_EQ(gains(100.0), std::pair(0.0F, 1.0F));
    EXPECT_EQ(gains(0.0), std::pair(1.0F, 1.0F));
    const Routing wide = panned(defaultRouting(usualLayout(6), unknownLayout(6)), 60.0, unknownLayout(6));
    for (std::size_t speaker = 0; speaker < 6; ++speaker)
        EXPECT_EQ(wide.rows[speaker][speaker], speaker == 0 ? 0.25F : 1.0F) << speaker;
    EXPECT_EQ(panned({{{1.0F}}}, -100.0, usualLayout(1)).rows[0][0], 1.0F);
    EXPECT_THROW(panned(stereo, 100.5, usualLayout(2)), std::invalid_argument);
}

TEST(DefaultRouting, GivesTheSameAtOnceAndInSteps) {
    const std::string chain[] = {"7.1film", "7.1smpte", "7.1", "5.1", "5.1film", "stereo", "mono"};
    for (std::size_t from = 0; from < std::size(chain); ++from)
        for (std::size_t by = from; by < std::size(chain); ++by)
            for (std::size_t to = by; to < std::size(chain); ++to)
                expectRows(combined(defaultRouting(named(chain[from]), named(chain[by])),
                                    defaultRouting(named(chain[by]), named(chain[to]))),
                           defaultRouting(named(chain[from]), named(chain[to])).rows,
                           chain[from] + " by " + chain[by] + " to " + chain[to]);
}

TEST(FoldedDownMedia, AreSumsThatAreRoundedOnce) {
    Media media;
    for (const float sample : {1.0F, 0x1p-24F, 0x1p-24F})
        media.channels.push_back(std::make_shared<MemorySource>(std::vector<float>{9.0F, sample}));
    const Media folded = foldedDown(media, {.routing = {{{1, 1, 1}, {0, 0, 0}, {0, 1, 0}}}, .layout = {}});
    std::vector<float> sample(1);
    for (const float expected : {1.0F + 0x1p-23F, 0.0F, 0x1p-24F}) {
        folded.channels[expected > 0.5F ? 0 : expected > 0.0F ? 2 : 1]->read(1, sample);
        EXPECT_THAT(sample, ElementsAre(expected));
    }
    EXPECT_EQ(folded.channels[1]->length(), 2);
    EXPECT_EQ(folded.channels[2], media.channels[1]);
}

} // namespace
} // namespace audlmd::test

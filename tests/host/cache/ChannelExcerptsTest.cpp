#include "host/cache/ChannelExcerpts.hpp"

#include <gtest/gtest.h>

#include <array>
#include <utility>
#include <vector>

namespace audlmd::test {
namespace {

using Layout = ChannelExcerpts::Layout;

/// Two channels: frame i of channel c is i + 5000 c.
struct CountedExcerpts {
    CountedExcerpts(Layout theLayout, const ChannelExcerpts::Limits& limits)
        : layout(theLayout),
          excerpts(2, layout, limits, [this](std::int64_t position, std::span<float> samples) {
              ++made;
              const std::size_t frames = samples.size() / 2;
              for (std::size_t i = 0; i < samples.size(); ++i) {
                  const auto [frame, channel] =
                      layout == Layout::planar ? std::pair(i % frames, i / frames) : std::pair(i / 2, i % 2);
                  samples[i] = static_cast<float>(position) + static_cast<float>(frame + 5000 * channel);
              }
          }) {}

    /// How many excerpts a read takes to be made.
    unsigned int read(std::size_t channel, std::int64_t position, std::size_t frames) {
        const unsigned int before = made;
        std::vector<float> samples(frames);
        excerpts.read(channel, position, samples);
        for (std::size_t i = 0; i < frames; ++i)
            EXPECT_EQ(samples[i], static_cast<float>(position) + static_cast<float>(i + 5000 * channel));
        return made - before;
    }

    const Layout layout;
    ChannelExcerpts excerpts;
    unsigned int made = 0;
};

TEST(ChannelExcerpts, AreKeptWithinTheLimitsUntilEachChannelHasReadThem) {
    // How many of 100 frames are kept: as many as the samples allow, but not less than the other limit.
    const std::pair<ChannelExcerpts::Limits, std::int64_t> rows[] = {{{.samples = 8199, .excerpts = 2}, 40},
                                                                     {{.samples = 8200, .excerpts = 2}, 41},
                                                                     {{.samples = 0, .excerpts = 8}, 8}};
    for (const auto& [limits, kept] : rows) {
        CountedExcerpts counted(Layout::interleaved, limits);
        for (std::int64_t i = 0; i < 60; ++i)
            EXPECT_EQ(counted.read(0, i, 100), 1U);
        EXPECT_EQ(counted.read(1, 59 - kept, 100), 1U) << "displaces the oldest";
        for (std::int64_t i = 60 - kept + 1; i < 60; ++i)
            EXPECT_EQ(counted.read(1, i, 100), 0U) << i << " of " << kept;
        EXPECT_EQ(counted.read(0, 1000, 100), 1U) << "displaces the first that both have read";
        EXPECT_EQ(counted.read(0, 59 - kept, 100), 0U);
        EXPECT_EQ(counted.read(0, 61 - kept, 100), 1U);
    }
}

TEST(ChannelExcerpts, AreTakenApartWhereAllChannelsAreWanted) {
    for (const Layout layout : {Layout::interleaved, Layout::planar})
        for (const std::size_t frames : {1U, 3U, 20001U}) {
            CountedExcerpts counted(layout, {.samples = 0, .excerpts = 1});
            std::vector<float> channels[] = {std::vector<float>(frames), std::vector<float>(frames)};
            const FrameSource::Stretch stretches[] = {{1, 0.5F, channels[1]}, {0, 1.0F, channels[0]}};
            counted.excerpts.read(7, stretches);
            for (std::size_t i = 0; i < frames; ++i)
                for (std::size_t channel = 0; channel < 2; ++channel)
                    ASSERT_EQ(channels[channel][i],
                              static_cast<float>(7 + i + 5000 * channel) / (channel == 1 ? 2 : 1));
            EXPECT_EQ(counted.read(0, 7, frames), layout == Layout::interleaved ? 1U : 0U) << "not kept";
        }
}

TEST(ChannelExcerpts, GiveOneChannelTwice) {
    CountedExcerpts counted(Layout::interleaved, {.samples = 0, .excerpts = 1});
    std::vector<float> left(50);
    std::vector<float> right(50);
    const FrameSource::Stretch stretches[] = {{1, 1.0F, left}, {1, 1.0F, right}};
    counted.excerpts.read(7, stretches);
    EXPECT_EQ(left, right);
    EXPECT_EQ(right.back(), 7.0F + 49.0F + 5000.0F);
}

TEST(ChannelExcerpts, AreReusedOnlyWhereTheyHoldAllFrames) {
    // The first frame, how many, and how many excerpts are made for them beside the frames 1000 to 1099.
    const std::array<std::array<unsigned int, 3>, 6> rows{
        {{1000, 100, 0}, {1001, 99, 0}, {1000, 99, 0}, {999, 100, 1}, {1001, 100, 1}, {1000, 101, 1}}};
    for (const Layout layout : {Layout::interleaved, Layout::planar})
        for (const auto& [position, count, made] : rows) {
            CountedExcerpts counted(layout, {.samples = 1000, .excerpts = 2});
            counted.read(0, 1000, 100);
            EXPECT_EQ(counted.read(1, position, count), made) << position << ", " << count;
        }
}

} // namespace
} // namespace audlmd::test

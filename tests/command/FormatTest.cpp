// The bytes that `audlmd render` puts into files, against the formats' definitions written out here once
// more.

#include "tests/command/CommandFixture.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <map>
#include <sndfile.h>

namespace audlmd::test {
namespace {

struct Format {
    std::string name;
    std::size_t bytes;
    /// Steps of the integer per unit; 0 for those that are converted otherwise.
    float scale;
};

const std::vector<Format> formats{{"f32", 4, 0.0F},     {"s8", 1, 128.0F},      {"u8", 1, 0.0F},
                                  {"s16", 2, 32768.0F}, {"s24", 3, 8388608.0F}, {"s24in32", 4, 8388608.0F},
                                  {"s32", 4, 0.0F}};

/// The container as an integer, for a float the number of its bits.
std::int64_t stored(const Format& format, float x) {
    if (format.name == "f32")
        return std::bit_cast<std::int32_t>(x > 8388607.0F / 8388608.0F ? 8388607.0F / 8388608.0F
                                           : x < -1.0F                 ? -1.0F
                                                                       : x);
    if (format.name == "u8") {
        const float y = x + 1.0F;
        return y > 2.0F ? 255 : y < 0.0F ? 0 : static_cast<std::int64_t>(y * 127.5F);
    }
    if (format.name == "s32")
        return x > 1.0F    ? 2147483647
               : x < -1.0F ? -2147483648LL
                           : static_cast<std::int64_t>(static_cast<double>(x) * 2147483647.5 - 0.5);
    return x > (format.scale - 1.0F) / format.scale ? static_cast<std::int64_t>(format.scale) - 1
           : x < -1.0F                              ? -static_cast<std::int64_t>(format.scale)
                                                    : static_cast<std::int64_t>(x * format.scale);
}

float loaded(const Format& format, std::int64_t value) {
    if (format.name == "f32")
        return std::bit_cast<float>(static_cast<std::int32_t>(value));
    if (format.name == "u8")
        return static_cast<float>(value - 128) / 128.0F;
    if (format.name == "s32")
        return static_cast<float>((static_cast<double>(value) + 0.5) / 2147483647.5);
    return static_cast<float>(value) / format.scale;
}

std::string containers(const Format& format, const std::vector<std::int64_t>& values) {
    std::string bytes;
    for (const std::int64_t value : values)
        bytes.append(reinterpret_cast<const char*>(&value), format.bytes);
    return bytes;
}

std::vector<float> interleavedFrom(const Channels& channels) {
    std::vector<float> samples;
    for (std::size_t n = 0; n < channels.front().size(); ++n)
        for (const std::vector<float>& channel : channels)
            samples.push_back(channel[n]);
    return samples;
}

/// Full scale and beyond, the smallest steps, and whatever lies between.
Channels testSound() {
    Channels sound = noise(2, 20000);
    std::vector<float>& first = sound.front();
    const float limits[] = {0.0F,    1.0F,     -1.0F,      1.5F,       -1.5F,    0.5F,      -0.5F,
                            0.9922F, 0.99997F, 0.9999999F, 1.0000001F, 0x1p-31F, -0x1p-23F, -0.00002F};
    std::ranges::copy(limits, first.begin());
    for (std::size_t n = std::size(limits); n < first.size(); n += 3)
        first[n] /= 3.0F;
    return sound;
}

std::vector<std::int64_t> storedFrom(const Format& format, const std::vector<float>& samples) {
    std::vector<std::int64_t> values;
    for (const float sample : samples)
        values.push_back(stored(format, sample));
    return values;
}

class Formats : public CommandFixture, public testing::WithParamInterface<Format> {};

TEST_P(Formats, StoreWhatTheyAreDefinedToStore) {
    const Channels sound = testSound();
    writeSound(in("a.wav"), sound);
    render({"a.wav", "-o", "out.raw", "--format", GetParam().name});
    EXPECT_TRUE(readBytes(in("out.raw")) ==
                containers(GetParam(), storedFrom(GetParam(), interleavedFrom(sound))));
}

TEST_P(Formats, AreSummedInPlaceOfAnExistingFile) {
    const Format& format = GetParam();
    const Channels sound = testSound();
    writeSound(in("a.wav"), sound);
    std::vector<std::int64_t> values = storedFrom(format, interleavedFrom(noise(2, 20000, 7)));
    const std::string existing = containers(format, values);
    writeBytes(in("existing.raw"), existing);
    const std::vector<float> added = interleavedFrom(sound);
    for (std::size_t n = 0; n < values.size(); ++n)
        values[n] = stored(format, loaded(format, values[n]) + added[n]);
    render(
        {"a.wav", "-o", "out.raw", "--mix-into", "existing.raw", "--format", format.name, "--block", "999"});
    EXPECT_TRUE(readBytes(in("out.raw")) == containers(format, values));
    EXPECT_TRUE(readBytes(in("existing.raw")) == existing);
}

TEST_P(Formats, GoUnchangedIntoEveryContainerThatHoldsThem) {
    const Format& format = GetParam();
    const Channels sound = testSound();
    writeSound(in("a.wav"), sound);
    // As libsndfile reads them: integers in the high bits.
    std::vector<int> expected;
    for (const std::int64_t value : storedFrom(format, interleavedFrom(sound)))
        expected.push_back(
            static_cast<int>(static_cast<std::uint32_t>(format.name == "u8" ? value - 128 : value)
                             << (32 - 8 * format.bytes)));
    int holding = 0;
    for (const char* extension : {"wav", "w64", "rf64", "aiff", "au", "caf", "flac"}) {
        const std::string name = std::string("out.") + extension;
        const Outcome outcome = run({"render", "a.wav", "-o", name, "--format", format.name});
        if (outcome.status != 0) {
            EXPECT_NE(outcome.errors.find("does not hold " + format.name), std::string::npos)
                << outcome.errors;
            continue;
        }
        ++holding;
        if (format.name == "f32")
            EXPECT_TRUE(std::ranges::equal(interleavedFrom(readSound(in(name))),
                                           storedFrom(format, interleavedFrom(sound)), {},
                                           [](float x) { return std::bit_cast<std::int32_t>(x); }))
                << extension;
        else
            EXPECT_TRUE(readInts(in(name)) == expected) << extension;
        // The other way round: from the container into the sum.
        render({"a.wav", "-o", "mix.raw", "--mix-into", name});
        render({"a.wav", "-o", "plain.raw", "--format", format.name});
        render({"a.wav", "-o", "rawmix.raw", "--mix-into", "plain.raw", "--format", format.name});
        EXPECT_TRUE(readBytes(in("mix.raw")) == readBytes(in("rawmix.raw"))) << extension;
    }
    EXPECT_EQ(holding,
              (std::map<std::string, int>{
                   {"f32", 6}, {"s8", 4}, {"u8", 4}, {"s16", 7}, {"s24", 7}, {"s24in32", 0}, {"s32", 6}})
                  .at(format.name));
}

INSTANTIATE_TEST_SUITE_P(All, Formats, testing::ValuesIn(formats),
                         [](const auto& instance) { return instance.param.name; });

class Files : public CommandFixture {};

TEST_F(Files, GetTheFullestFormatOfTheirContainer) {
    writeSound(in("a.wav"), testSound());
    for (const auto& [name, type] :
         std::map<std::string, int>{{"out.WAV", SF_FORMAT_FLOAT}, {"out.flac", SF_FORMAT_PCM_24}}) {
        render({"a.wav", "-o", name});
        SF_INFO info{};
        sf_close(sf_open(in(name).c_str(), SFM_READ, &info));
        EXPECT_EQ(info.format & SF_FORMAT_SUBMASK, type) << name;
        EXPECT_EQ(info.samplerate, 48000);
    }
}

TEST_F(Files, GoToStandardOutputWithoutAHeader) {
    writeSound(in("a.wav"), testSound());
    const Outcome outcome = run({"render", "a.wav", "-o", "-", "--format", "s16"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.errors.starts_with("rendered ")) << outcome.errors;
    render({"a.wav", "-o", "out.raw", "--format", "s16"});
    EXPECT_TRUE(outcome.output == readBytes(in("out.raw")));
}

TEST_F(Files, KeepTheirLinkAndTheirPermissions) {
    writeSound(in("a.wav"), testSound());
    writeBytes(in("real.wav"), "before");
    std::filesystem::permissions(in("real.wav"), std::filesystem::perms(0640));
    std::filesystem::create_symlink("real.wav", in("link.wav"));
    render({"a.wav", "-o", "link.wav"});
    EXPECT_TRUE(std::filesystem::is_symlink(in("link.wav")));
    EXPECT_EQ(std::filesystem::status(in("real.wav")).permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(readSound(in("real.wav")).size(), 2U);
}

} // namespace
} // namespace audlmd::test

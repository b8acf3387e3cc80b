// `audlmd join`.

#include "tests/tools/audlmd/CommandFixture.hpp"

#include <sndfile.hh>

namespace audlmd::test {
namespace {

class Join : public CommandFixture {
protected:
    Join() {
        writeSound(in("a.wav"), noise(2, 9600), 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        writeSound(in("b.wav"), noise(2, 5000, 2), 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    }

    int formatOf(const std::string& name) const {
        return SndfileHandle(in(name).string()).format() & SF_FORMAT_SUBMASK;
    }
};

TEST_F(Join, PutsFilesBehindEachOtherAndChangesNoBit) {
    output("join a.wav b.wav a.wav -o joined.flac");
    EXPECT_EQ(formatOf("joined.flac"), SF_FORMAT_PCM_16);
    Channels expected = readSound(in("a.wav"));
    for (const std::string name : {"b.wav", "a.wav"})
        for (std::size_t channel = 0; channel < 2; ++channel) {
            const std::vector<float> more = readSound(in(name))[channel];
            expected[channel].insert(expected[channel].end(), more.begin(), more.end());
        }
    EXPECT_TRUE(readSound(in("joined.flac")) == expected);

    // At the first rate, on the most channels, and as floats where something is converted.
    writeSound(in("c.wav"), noise(1, 4410), 44100, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    output("join c.wav b.wav -o joined.wav");
    EXPECT_EQ(formatOf("joined.wav"), SF_FORMAT_FLOAT);
    const Channels converted = readSound(in("joined.wav"));
    ASSERT_EQ(converted.size(), 2U);
    EXPECT_EQ(converted[0].size(), 4410U + 4594U);
    EXPECT_EQ(converted[0][4000], converted[1][4000]);
}

TEST_F(Join, Crossfades) {
    for (const std::string name : {"c.wav", "d.wav"})
        writeSound(in(name), {std::vector<float>(9600, 0.5F)});
    for (const auto& [curve, middle] : {std::pair{"", 0.70710678F}, {":linear", 0.5F}}) {
        output(std::string("join c.wav d.wav -o joined.wav --crossfade 50ms") + curve);
        const std::vector<float> joined = readSound(in("joined.wav"))[0];
        ASSERT_EQ(joined.size(), 16800U) << curve;
        EXPECT_EQ(joined[7199], 0.5F) << curve;
        EXPECT_NEAR(joined[8400], middle, 1e-3) << curve;
        EXPECT_EQ(joined[9600], 0.5F) << curve;
    }
}

TEST_F(Join, RefusesWhatLeavesAGap) {
    writeSound(in("empty.wav"), {{}, {}});
    expectRefused("join a.wav -o joined.wav", "INPUT");
    expectRefused("join a.wav b.wav", "name the file to write with -o");
    expectRefused("join a.wav b.wav -o a.wav", "name another file");
    expectRefused("join a.wav empty.wav -o joined.wav", "'empty.wav' holds no samples", 3);
    expectRefused("join a.wav none.wav -o joined.wav", "none.wav", 3);
    expectRefused("join a.wav b.wav a.wav -o joined.wav --crossfade 60ms",
                  "'b.wav' is too short to be crossfaded for 60ms");
}

} // namespace
} // namespace audlmd::test

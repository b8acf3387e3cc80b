#include "tests/tools/audlmd/PlayFixture.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace audlmd::test {

PlayFixture::PlayFixture() {
    // In a folder, because the fixture reads all files.
    std::filesystem::create_directory(in("sound"));
    listener_.emplace(in("sound/device"));
    writeBytes(in("asoundrc"), "pcm.!default { type file slave.pcm { type null } file \"" +
                                   in("sound/device").string() + "\" format raw }\n");
    setenv("ALSA_CONFIG_PATH", in("asoundrc").c_str(), 1);
}

PlayFixture::~PlayFixture() {
    unsetenv("ALSA_CONFIG_PATH");
}

std::vector<float> PlayFixture::heard(const std::string& line) {
    const std::string inTime =
        "late: 0 samples in 0 episodes; starved: 0 frames in 0 episodes; device: 0 underruns\n";
    for (;;) {
        listener_->forget();
        // The latency is for machines that do something else as well.
        const Outcome outcome = run("play --latency 1000 " + line);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        std::vector<float> heard = listener_->heardToTheEnd();
        if (outcome.output.ends_with(inTime) || ++lateRuns_ > 1) {
            EXPECT_THAT(outcome.output, testing::EndsWith(inTime)) << lateRuns_ << " runs were late";
            return heard;
        }
    }
}

void PlayFixture::expectPlaysWhatRenderWrites(const std::string& options) {
    output("render a.wav -o a.raw --format f32 " + options);
    const std::string bytes = readBytes(in("a.raw"));
    std::vector<float> rendered(bytes.size() / sizeof(float));
    std::memcpy(rendered.data(), bytes.data(), bytes.size());
    for (float& sample : rendered)
        sample = std::clamp(sample, -1.0F, 1.0F);
    EXPECT_TRUE(holds(heard("a.wav " + options), rendered)) << options;
}

bool holds(const std::vector<float>& heard, const std::vector<float>& sound) {
    const auto faded = static_cast<std::ptrdiff_t>(2 * 240);
    const auto isHeard = [](float sample) { return sample != 0.0F; };
    const auto first = std::ranges::find_if(heard, isHeard);
    const auto found = std::search(first, heard.end(), sound.begin() + faded, sound.end());
    return sound.size() > 4800 && found != heard.end() && found - first <= faded &&
           std::none_of(found + std::ssize(sound), heard.end(), isHeard);
}

} // namespace audlmd::test

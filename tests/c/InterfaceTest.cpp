#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sndfile.hh>

#include <array>
#include <audlmd.h>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace audlmd::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

using Sound = std::unique_ptr<audlmd_sound, decltype(&audlmd_free)>;
using Words = std::vector<const char*>;

Sound owned(audlmd_sound* sound) {
    return {sound, &audlmd_free};
}

Sound soundOf(const std::vector<float>& interleaved, int channels = 1, int rate = 48000) {
    const auto frames = static_cast<std::int64_t>(interleaved.size()) / channels;
    return owned(audlmd_from_samples(interleaved.data(), frames, channels, rate));
}

Sound stripOf(const Sound& sound, Words options) {
    options.push_back(nullptr);
    Sound strip = owned(audlmd_strip(sound.get(), options.data()));
    EXPECT_NE(strip, nullptr) << audlmd_error();
    return strip;
}

template <class Sample = float>
std::vector<Sample> read(const Sound& sound, std::int64_t from = 0, std::int64_t frames = 1 << 20,
                         int format = AUDLMD_F32) {
    const auto width = static_cast<std::size_t>(audlmd_channels(sound.get()));
    std::vector<Sample> samples(static_cast<std::size_t>(std::min(frames, audlmd_frames(sound.get()))) *
                                width);
    const std::int64_t count = audlmd_read(sound.get(), from, frames, format, samples.data());
    EXPECT_GE(count, 0) << audlmd_error();
    samples.resize(static_cast<std::size_t>(count) * width);
    return samples;
}

std::vector<float> ramp(std::size_t samples) {
    std::vector<float> values;
    for (std::size_t n = 0; n < samples; ++n)
        values.push_back(static_cast<float>(n) / 0x1p20F - 0.25F);
    return values;
}

nlohmann::json taken(char* text) {
    const std::unique_ptr<char, decltype(&audlmd_free_text)> owner(text, &audlmd_free_text);
    return nlohmann::json::parse(text);
}

TEST(CInterface, ReadsSamplesInEveryFormatFromAnyPlace) {
    const Sound sound = soundOf({-1.0F, 1.0F, 0.0F, 0.5F, -2.0F, 0x1.8p-15F}, 2);
    EXPECT_THAT(read(sound, 1), ElementsAre(0.0F, 0.5F, -2.0F, 0x1.8p-15F));
    EXPECT_THAT(read<std::int16_t>(sound, 0, 9, AUDLMD_S16), ElementsAre(-32768, 32767, 0, 16384, -32768, 2));
    EXPECT_THAT(read<std::int32_t>(sound, 0, 1, AUDLMD_S32), ElementsAre(INT32_MIN, INT32_MAX));
    std::array<unsigned char, 6> bytes{};
    EXPECT_EQ(audlmd_read(sound.get(), 1, 1, AUDLMD_S24, bytes.data()), 1);
    EXPECT_THAT(bytes, ElementsAre(0, 0, 0, 0, 0, 0x40));
    EXPECT_EQ(audlmd_read(sound.get(), 3, 1, AUDLMD_F32, bytes.data()), 0);
    EXPECT_EQ(audlmd_read(sound.get(), INT64_MAX, INT64_MAX, AUDLMD_F32, bytes.data()), 0);
    const Sound silence = soundOf(std::vector<float>(1000));
    const auto dithered = read<std::int16_t>(silence, 0, 1000, AUDLMD_S16 | AUDLMD_DITHERED);
    EXPECT_THAT(dithered, testing::Contains(1));
    EXPECT_EQ(std::vector(dithered.begin() + 400, dithered.end()),
              read<std::int16_t>(silence, 400, 1000, AUDLMD_S16 | AUDLMD_DITHERED));
}

TEST(CInterface, PlaysStripsOfAllSoundsWithTheBytesOfTheWhole) {
    std::vector<float> samples = ramp(30'000);
    Sound sound = soundOf(samples);
    const Sound reverse = stripOf(sound, {"from", "1000", "reverse", "true"});
    EXPECT_TRUE(read(reverse) == std::vector(samples.rbegin(), samples.rend() - 1000));
    const Sound again = stripOf(reverse, {"reverse", "true", "to", "0.25s", "name", "7"});
    EXPECT_TRUE(read(again) == std::vector(samples.end() - 12'000, samples.end()));
    const Sound busy = stripOf(sound, {"speed", "1.3", "gain", "-3", "equaliser", "[\"peak:1k:6\"]", "fadeIn",
                                       R"({"length": 900, "curve": "log"})", "automation",
                                       R"({"points": [[0, 0], [9000, -6]]})"});
    sound.reset();
    const std::vector<float> whole = read(busy);
    EXPECT_EQ(std::ssize(whole), 23'077);
    EXPECT_TRUE(read(busy, 20'000) == std::vector(whole.begin() + 20'000, whole.end()));
    EXPECT_TRUE(read(busy, 7, 100) == std::vector(whole.begin() + 7, whole.begin() + 107));
    const Sound slower = stripOf(again, {"sampleRate", "96000"});
    EXPECT_EQ(audlmd_frames(slower.get()), 24'000);
    const Sound mono = stripOf(soundOf({0.5F, 0.25F}, 2), {"channels", "mono"});
    EXPECT_THAT(read(mono), ElementsAre(0.375F));
}

TEST(CInterface, MixesTimelinesThatAreBuiltByCalls) {
    const Words options{"sampleRate", "48000", "channels", "1", "name", "built", nullptr};
    const std::unique_ptr<audlmd_timeline, decltype(&audlmd_timeline_free)> timeline(
        audlmd_timeline_new(options.data()), &audlmd_timeline_free);
    ASSERT_NE(timeline, nullptr) << audlmd_error();
    const auto add = [&](const char* track, const Sound& sound, Words words) {
        words.push_back(nullptr);
        return audlmd_timeline_add(timeline.get(), track, sound.get(), words.data());
    };
    EXPECT_EQ(add("a", soundOf({0.25F, 0.5F}), {"at", "1"}), 0) << audlmd_error();
    EXPECT_EQ(add("b", soundOf({2.0F}), {"at", "2", "name", "loud"}), 0) << audlmd_error();
    EXPECT_EQ(add("a", soundOf({1.0F}), {"at", "-1"}), -1);
    EXPECT_THAT(audlmd_error(), HasSubstr("\"at\" must be"));
    EXPECT_EQ(add("a", soundOf({0.125F}), {"at", "3"}), 0) << audlmd_error();
    const Sound mix = owned(audlmd_mix(timeline.get(), nullptr));
    ASSERT_NE(mix, nullptr) << audlmd_error();
    EXPECT_THAT(read(mix), ElementsAre(0.0F, 0.25F, 2.5F, 0.125F));
    const nlohmann::json report = taken(audlmd_report(mix.get()));
    EXPECT_EQ(report["channels"][0]["samples"], 1);
    EXPECT_EQ(report["clips"][0]["clip"], "loud");
    const nlohmann::json text = taken(audlmd_timeline_text(mix.get()));
    EXPECT_EQ(text["name"], "built");
    EXPECT_EQ(text["tracks"][0]["strips"].size(), 2U);
}

TEST(CInterface, OpensFilesAndTimelines) {
    std::string name = (std::filesystem::temp_directory_path() / "audlmd-c-XXXXXX").string();
    const std::filesystem::path folder = mkdtemp(name.data());
    const std::vector<float> samples = ramp(5000);
    SndfileHandle((folder / "a.wav").string(), SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 1, 44100)
        .write(samples.data(), std::ssize(samples));
    std::ofstream(folder / "t.json")
        << R"({"audlmd": 1, "sampleRate": 44100, "tracks": [{"strips": [{"media": "a.wav", "at": 10},
              {"media": "gone.wav", "at": 0, "to": 7}]}]})";
    const Sound file = owned(audlmd_open((folder / "a.wav").c_str(), nullptr));
    ASSERT_NE(file, nullptr) << audlmd_error();
    EXPECT_EQ(audlmd_sample_rate(file.get()), 44100);
    EXPECT_TRUE(read(file) == samples);
    const Words options{"films", "false", "threads", "1", "channels", "1", nullptr};
    const Sound mix = owned(audlmd_open((folder / "t.json").c_str(), options.data()));
    ASSERT_NE(mix, nullptr) << audlmd_error();
    EXPECT_EQ(audlmd_frames(mix.get()), 5010);
    EXPECT_TRUE(read(mix, 10) == samples);
    EXPECT_THAT(read(mix, 0, 10), Each(0.0F));
    EXPECT_THAT(taken(audlmd_report(mix.get()))["clips"][0]["failure"].get<std::string>(),
                HasSubstr("gone.wav"));
    // A bundle, of which a medium is looked for.
    std::filesystem::create_directory(folder / "b");
    std::ofstream(folder / "b" / "content.otio")
        << R"({"audlmd": 1, "channels": 1, "sampleRate": 44100, "tracks": [{"strips": [{"media": "/old/a.wav"}]}]})";
    const Words found{"media", folder.c_str(), nullptr};
    const Sound bundle = owned(audlmd_open((folder / "b").c_str(), found.data()));
    ASSERT_NE(bundle, nullptr) << audlmd_error();
    EXPECT_TRUE(read(bundle) == samples);
    std::filesystem::remove_all(folder);
}

TEST(CInterface, RefusesInOneLineForEachThread) {
    const Sound sound = soundOf({0.0F, 0.0F});
    const auto refused = [](const void* made, const std::string& part) {
        EXPECT_EQ(made, nullptr);
        EXPECT_THAT(audlmd_error(), HasSubstr(part));
    };
    const auto strip = [&](Words words) {
        words.push_back(nullptr);
        return audlmd_strip(sound.get(), words.data());
    };
    refused(strip({"gian", "-3"}), "\"gian\"");
    refused(strip({"gain"}), "option 'gain' has no value");
    refused(strip({"gain", "1", "gain", "2"}), "option 'gain' stands twice");
    refused(strip({"gain", "99"}), "gain");
    refused(strip({"media", "a"}), "option 'media'");
    refused(strip({"channels", "0"}), "option 'channels': '0' is not a number from 1 to 64, nor one of ");
    refused(strip({"sampleRate", "fast"}), "option 'sampleRate': 'fast' is not a whole number from");
    refused(audlmd_open("/gone.wav", nullptr), "/gone.wav");
    const Words unknown{"streem", "2", nullptr};
    refused(audlmd_open("/gone.wav", unknown.data()), "there is no option 'streem'; there are ");
    const Words tracks{"tracks", "[]", nullptr};
    refused(audlmd_timeline_new(tracks.data()), "audlmd_timeline_add");
    refused(audlmd_from_samples(nullptr, 0, 0, 48000), "1 to 1024 channels");
    refused(audlmd_from_samples(nullptr, 0, 1, 1), "sample rate 1 ");
    refused(audlmd_report(sound.get()), "only a mix and a strip");
    float sample = 0.0F;
    EXPECT_EQ(audlmd_read(sound.get(), -1, 1, AUDLMD_F32, &sample), -1);
    EXPECT_EQ(audlmd_read(sound.get(), 0, 1, 7, &sample), -1);
    const std::string here = audlmd_error();
    std::thread([] { EXPECT_STREQ(audlmd_error(), ""); }).join();
    EXPECT_EQ(audlmd_error(), here);
}

TEST(CInterface, PlaysLive) {
    const std::vector<float> samples = ramp(20'000);
    const Words options{"fade", "0.001", nullptr};
    for (const Sound& sound : {soundOf(samples), stripOf(soundOf(samples), {"fadeIn", R"({"length": 1})"})}) {
        const std::unique_ptr<audlmd_player, decltype(&audlmd_player_free)> player(
            audlmd_player_new(sound.get(), options.data()), &audlmd_player_free);
        ASSERT_NE(player, nullptr) << audlmd_error();
        EXPECT_EQ(audlmd_player_set_speed(player.get(), 0.0), -1);
        EXPECT_EQ(audlmd_player_set_gain(player.get(), 11.0), -1);
        EXPECT_EQ(audlmd_player_set_loop(player.get(), 5, 4), -1);
        EXPECT_EQ(audlmd_player_take_peak(player.get(), 1), -1.0F);
        EXPECT_EQ(audlmd_player_seek(player.get(), 10'000), 0);
        EXPECT_EQ(audlmd_player_play(player.get()), 0);
        std::vector<float> block(480);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (audlmd_player_position(player.get()) < 15'000 && std::chrono::steady_clock::now() < end) {
            audlmd_player_fill(player.get(), block.data(), std::ssize(block));
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        EXPECT_EQ(audlmd_player_is_playing(player.get()), 1);
        // Every sample of the ramp says where it lies.
        const auto position = static_cast<std::size_t>((block.front() + 0.25F) * 0x1p20F);
        EXPECT_GE(position, 14'000U);
        EXPECT_TRUE(std::equal(block.begin(), block.end(), samples.begin() + std::ptrdiff_t(position)));
        EXPECT_GT(audlmd_player_take_peak(player.get(), 0), 0.2F);
        EXPECT_EQ(taken(audlmd_player_report(player.get()))["sound"]["failure"], "");
        EXPECT_EQ(audlmd_player_stop(player.get()), 0);
    }
}

} // namespace
} // namespace audlmd::test

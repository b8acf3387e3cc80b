#include "standalone/cache/SoundFile.hpp"
#include "tests/cache/TestMaterial.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.hh>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace audlmd::test {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

constexpr int fullScale = 1 << 17;

/// Files of a few channels: frame i of channel c holds (i + 500 c) / 131072.
class SoundFiles : public testing::Test {
protected:
    static constexpr std::int64_t frames = 100000;

    SoundFiles() { std::filesystem::create_directories(folder_); }
    ~SoundFiles() override { std::filesystem::remove_all(folder_); }

    static float sampleAt(std::int64_t frame, int channel) {
        return static_cast<float>(frame + std::int64_t{500} * channel) / fullScale;
    }

    std::filesystem::path write(const std::string& name, int format, int channels = 2) const {
        std::vector<float> samples;
        for (int frame = 0; frame < frames; ++frame)
            for (int channel = 0; channel < channels; ++channel)
                samples.push_back(sampleAt(frame, channel));
        SndfileHandle file((folder_ / name).string(), SFM_WRITE, format, channels, 48000);
        EXPECT_EQ(file.writef(samples.data(), frames), frames);
        return folder_ / name;
    }

    static auto opening(const std::filesystem::path& path) {
        return [path] { SoundFile file(path); };
    }

    const std::filesystem::path folder_ =
        std::filesystem::path(testing::TempDir()) / ("audlmd-sound-files-" + std::to_string(getpid()));
};

TEST_F(SoundFiles, DecodeOnceForAllChannelsInEitherDirection) {
    for (const int channels : {1, 2, 5}) {
        const auto file =
            std::make_shared<SoundFile>(write("a.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, channels));
        MaterialCache cache({.segmentLength = 2048});
        for (int channel = 0; channel < channels; ++channel)
            cache.add(cookieOf(static_cast<std::uint16_t>(channel)),
                      std::make_shared<SoundFileSource>(file, channel));
        std::vector<std::jthread> threads;
        threads.reserve(static_cast<std::size_t>(channels));
        for (int channel = 0; channel < channels; ++channel)
            threads.emplace_back([&cache, channel] {
                const Cookie cookie = cookieOf(static_cast<std::uint16_t>(channel));
                auto reader = forwardReader(cache, cookie, 0);
                for (std::int64_t i = 0; i < frames; ++i, ++reader)
                    ASSERT_EQ(*reader, sampleAt(i, channel)) << i;
                auto backwards = reverseReader(cache, cookie, frames);
                for (std::int64_t i = frames; i-- > 0; ++backwards)
                    ASSERT_EQ(*backwards, sampleAt(i, channel)) << i;
            });
        threads.clear();
        EXPECT_EQ(file->decodedStretches(), static_cast<unsigned int>((frames + 2047) / 2048));
    }
}

TEST_F(SoundFiles, ThatCannotBeOpenedAreNamedWithTheReason) {
    const auto text = folder_ / "notes.txt";
    std::ofstream(text) << "no audio in here";
    EXPECT_THAT(opening(folder_ / "none.wav"),
                ThrowsMessage<SoundFileError>(HasSubstr("none.wav: System error : No such file")));
    EXPECT_THAT(opening(text), ThrowsMessage<SoundFileError>(HasSubstr("notes.txt: ")));
    EXPECT_THAT(opening(folder_), ThrowsMessage<SoundFileError>(HasSubstr("not a regular file")));
    const auto file = std::make_shared<SoundFile>(write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16));
    EXPECT_THROW(SoundFileSource(file, 2), std::out_of_range);
}

TEST_F(SoundFiles, ThatAreTruncatedAreRefused) {
    for (const int container : {SF_FORMAT_WAV, SF_FORMAT_AIFF, SF_FORMAT_AU, SF_FORMAT_W64, SF_FORMAT_RF64}) {
        const auto path = write("whole", container | SF_FORMAT_PCM_16);
        EXPECT_EQ(SoundFile(path).frames(), frames) << container;
        std::filesystem::resize_file(path, std::filesystem::file_size(path) * 6 / 10);
        EXPECT_THAT(opening(path), ThrowsMessage<SoundFileError>(HasSubstr("truncated"))) << container;
    }
}

TEST_F(SoundFiles, OfUnknownLengthEndWhereTheirSamplesEnd) {
    const auto path = write("streamed.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    for (const int sizeField : {4, 40})
        file.seekp(sizeField).write("\xFF\xFF\xFF\xFF", 4);
    file.close();
    EXPECT_EQ(SoundFile(path).frames(), frames);
}

TEST_F(SoundFiles, WhoseDataEndsEarlyFailFromThereOnOnly) {
    const auto path = write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 1);
    std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
    MaterialCache cache({.segmentLength = 1000});
    cache.add(cookieOf(0), std::make_shared<SoundFileSource>(std::make_shared<SoundFile>(path), 0));
    EXPECT_EQ(*forwardReader(cache, cookieOf(0), frames - 1), 0.0F);
    auto reader = forwardReader(cache, cookieOf(0), 0);
    EXPECT_NEAR(take(reader, 1000).back(), sampleAt(999, 0), 1e-4);
    const MaterialStatistics statistics = cache.statistics(cookieOf(0));
    EXPECT_GE(statistics.failedSegments, 1U);
    EXPECT_THAT(statistics.firstFailure, HasSubstr("a.flac: cannot"));
}

TEST_F(SoundFiles, GiveTheSameSamplesInAnyOrder) {
    for (const int format : {SF_FORMAT_OGG | SF_FORMAT_VORBIS, SF_FORMAT_OGG | SF_FORMAT_OPUS,
                             SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, SF_FORMAT_FLAC | SF_FORMAT_PCM_24}) {
        const auto path = write("lossy", format, 1);
        std::vector<float> forwards(frames);
        SoundFile(path).read(0, 0, forwards);
        SoundFile file(path);
        for (const std::int64_t position : {98000, 60000, 70001, 0, 77777}) {
            std::vector<float> part(1000);
            file.read(0, position, part);
            const bool isMpeg = (format & SF_FORMAT_TYPEMASK) == SF_FORMAT_MPEG;
            for (std::size_t i = 0; i < part.size(); ++i)
                ASSERT_NEAR(part[i], forwards[static_cast<std::size_t>(position) + i], isMpeg ? 3e-7 : 0.0)
                    << std::hex << format << " at " << position;
        }
    }
}

} // namespace
} // namespace audlmd::test

#include "host/cache/SoundFile.hpp"

#include "tests/host/cache/TestMaterial.hpp"

#include <sndfile.hh>

#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

/// So many calls of read() succeed, then one fails. Negative: none fails.
int readsLeft = -1;
std::atomic<std::size_t> bytesRead{0};

} // namespace

/// Found before that of the C library.
extern "C" ssize_t read(int descriptor, void* bytes, std::size_t count) {
    if (readsLeft >= 0 && readsLeft-- == 0) {
        errno = EIO;
        return -1;
    }
    bytesRead += count;
    return syscall(SYS_read, descriptor, bytes, count);
}

namespace audlmd::test {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

/// Files of a few channels: frame i of channel c holds (i + 500 c) / 131072.
class SoundFiles : public testing::Test {
protected:
    static constexpr std::int64_t frames = 100000;

    SoundFiles() { std::filesystem::create_directories(folder_); }
    ~SoundFiles() override { std::filesystem::remove_all(folder_); }

    static float sampleAt(std::int64_t frame, int channel) {
        return static_cast<float>(frame + std::int64_t{500} * channel) / 131072;
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
    const std::uint16_t channels = 5;
    const auto file = std::make_shared<SoundFile>(write("a.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, channels));
    MaterialCache cache({.segmentLength = 2048});
    bytesRead = 0;
    std::vector<std::jthread> threads;
    for (std::uint16_t channel = 0; channel < channels; ++channel) {
        cache.add(cookieOf(channel), std::make_shared<SoundFileSource>(file, channel));
        threads.emplace_back([&cache, channel] {
            std::vector<float> expected;
            for (std::int64_t frame = 0; frame < frames; ++frame)
                expected.push_back(sampleAt(frame, channel));
            EXPECT_EQ(read(cache, 0, frames, {.channel = channel}), expected);
            std::ranges::reverse(expected);
            EXPECT_EQ(read(cache, frames, frames, {.channel = channel, .reverse = true}), expected);
        });
    }
    threads.clear();
    EXPECT_LT(bytesRead, 1.5 * channels * frames * sizeof(float));
}

TEST_F(SoundFiles, SayWhatTheirChannelsAreOrThatNobodyKnows) {
    const ChannelLayout six = usualLayout(6);
    ChannelLayout sides = six;
    std::ranges::replace(sides, Speaker::rearLeft, Speaker::sideLeft);
    std::ranges::replace(sides, Speaker::rearRight, Speaker::sideRight);
    const ChannelLayout film = *layoutNamed("5.1film");
    const auto written = [&](const std::string& name, int type, const ChannelLayout& map,
                             std::size_t channels) {
        SndfileHandle file((folder_ / name).string(), SFM_WRITE, type | SF_FORMAT_PCM_16,
                           static_cast<int>(channels), 48000);
        std::vector<int> numbers = mapOf(map);
        file.command(SFC_SET_CHANNEL_MAP_INFO, numbers.data(), static_cast<int>(4 * numbers.size()));
        const std::vector<short> samples(10 * channels);
        file.writef(samples.data(), 10);
        return folder_ / name;
    };
    const std::tuple<std::string, int, ChannelLayout, ChannelLayout> table[] = {
        {"a.wav", SF_FORMAT_WAVEX, six, six},
        {"b.wav", SF_FORMAT_WAVEX, sides, sides},
        {"plain.wav", SF_FORMAT_WAV, six, unknownLayout(6)},
        {"a.rf64", SF_FORMAT_RF64, sides, sides},
        {"a.w64", SF_FORMAT_W64, six, unknownLayout(6)},
        {"a.aiff", SF_FORMAT_AIFF, film, film},
        {"a.caf", SF_FORMAT_CAF, film, film},
        {"a.flac", SF_FORMAT_FLAC, film, six},
        {"mono.caf", SF_FORMAT_CAF, {Speaker::centre}, unknownLayout(1)},
    };
    for (const auto& [name, type, map, found] : table)
        EXPECT_EQ(SoundFile(written(name, type, map, map.size())).layout(), found) << name;
    // As in Vorbis, of which libvorbisenc loses memory with six channels.
    SndfileHandle opus((folder_ / "a.ogg").string(), SFM_WRITE, SF_FORMAT_OGG | SF_FORMAT_OPUS, 6, 48000);
    opus.write(std::vector<float>(6 * 960).data(), 6 * 960);
    opus = {};
    EXPECT_EQ(SoundFile(folder_ / "a.ogg").layout(), film);

    // Headers for which libsndfile would read a map beyond its end: of other channels, or twice, or too
    // early.
    const auto edited = [&](const std::string& name, const auto& edit) {
        std::ifstream file(folder_ / name, std::ios::binary);
        std::string bytes{std::istreambuf_iterator<char>(file), {}};
        edit(bytes);
        std::ofstream(folder_ / ("x" + name), std::ios::binary) << bytes;
        return SoundFile(folder_ / ("x" + name)).layout();
    };
    const std::string stereoTag("\0\145\0\2", 4);
    EXPECT_EQ(edited("a.caf", [&](std::string& b) { b.replace(b.find("chan") + 12, 4, stereoTag); }),
              unknownLayout(6));
    EXPECT_EQ(edited("a.aiff",
                     [](std::string& b) {
                         const std::string map = b.substr(b.find("CHAN"), 20);
                         b.erase(b.find("CHAN"), 20).insert(12, map);
                     }),
              unknownLayout(6));
    EXPECT_EQ(edited("a.rf64",
                     [](std::string& b) {
                         std::string format = b.substr(b.find("fmt "), 48);
                         format.replace(10, 1, "\3").replace(20, 1, "\6").replace(28, 4, 4, '\0');
                         b.insert(b.find("data"), format);
                         b[b.find("ds64") + 24] = 20; // Frames: half the channels, twice the length.
                     }),
              unknownLayout(3));
}

TEST_F(SoundFiles, ThatVanishAfterAFailureStillGiveWhatWasDecoded) {
    const auto path = write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
    std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
    SoundFile file(path);
    std::vector<float> samples(1000);
    file.read(0, 0, samples);
    EXPECT_THROW(file.read(0, frames - 1000, samples), SoundFileError);
    std::filesystem::rename(write("mono.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 1), path);
    EXPECT_THAT([&] { file.read(0, 1, samples); },
                ThrowsMessage<SoundFileError>(HasSubstr("another file has taken its place")));
    std::filesystem::remove(path);
    EXPECT_THROW(file.read(0, 1, samples), SoundFileError);
    file.read(1, 0, samples);
    EXPECT_NEAR(samples.back(), sampleAt(999, 1), 1e-6);
}

TEST_F(SoundFiles, ThatCannotBeOpenedAreNamedWithTheReason) {
    EXPECT_THAT(opening(folder_ / "none.wav"),
                ThrowsMessage<SoundFileError>(HasSubstr("none.wav': No such file")));
    EXPECT_THAT(opening(folder_), ThrowsMessage<SoundFileError>(HasSubstr("not a regular file")));
    const auto file = std::make_shared<SoundFile>(write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16));
    for (const int channel : {-1, 2})
        EXPECT_THROW(SoundFileSource(file, channel), std::out_of_range);
    EXPECT_THAT(opening(write("a.au", SF_FORMAT_AU | SF_FORMAT_G721_32, 1)),
                ThrowsMessage<SoundFileError>(HasSubstr("does not allow reading from any position")));
}

TEST_F(SoundFiles, OfWhichAPartCannotBeReadAreRefused) {
    const auto path = write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    int reads = 0;
    for (bool isOpen = false; !isOpen; ++reads) {
        readsLeft = reads;
        try {
            EXPECT_EQ(SoundFile(path).frames(), frames);
            isOpen = true;
            EXPECT_GE(readsLeft, 0) << "read " << reads << " has failed";
        } catch (const SoundFileError& error) {
            EXPECT_EQ(reads == 0, std::string(error.what()).ends_with("Input/output error")) << error.what();
        }
    }
    readsLeft = -1;
    EXPECT_GT(reads, 7);
    // A read of the samples tells how far it came.
    SoundFile file(path);
    std::vector<float> samples(70000);
    bytesRead = 0;
    readsLeft = 5;
    EXPECT_THAT([&] { file.read(1, 30000, samples); },
                ThrowsMessage<SoundFileError>(testing::Truly([](const std::string& told) {
                    return told.find("at frame " + std::to_string(30000 + bytesRead / 4) + " of 100000: ") !=
                           told.npos;
                })));
    readsLeft = -1;
    std::filesystem::resize_file(path, 44 + 4 * 99000);
    EXPECT_THAT([&] { file.read(0, 98000, samples); },
                ThrowsMessage<SoundFileError>(HasSubstr("at frame 99000 of 100000: the file ends there")));
}

TEST_F(SoundFiles, ThatAreTruncatedAreRefusedUnlessTheirLengthIsLeftOpen) {
    for (const int container : {SF_FORMAT_WAV, SF_FORMAT_AIFF, SF_FORMAT_AU, SF_FORMAT_W64, SF_FORMAT_RF64}) {
        const auto path = write("whole", container | SF_FORMAT_PCM_16);
        EXPECT_EQ(SoundFile(path).frames(), frames) << container;
        std::filesystem::resize_file(path, std::filesystem::file_size(path) * 6 / 10);
        EXPECT_THAT(opening(path), ThrowsMessage<SoundFileError>(HasSubstr("truncated"))) << container;
    }
    // Programs that do not know the length yet write the largest number, or that less the length of a header.
    const auto streamed = write("streamed.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    for (const auto& [size, isOpen] : std::vector<std::pair<std::uint32_t, bool>>{{0xFFFFFFFF, true},
                                                                                  {0xFFFFF000, true},
                                                                                  {0xFFFFEFFF, false},
                                                                                  {0x80000000, false},
                                                                                  {0x7FFFFFFF, true},
                                                                                  {0x7FFFF000, true},
                                                                                  {0x7FFFEFFF, false}}) {
        std::array<char, 4> bytes{};
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(size >> (8 * i) & 0xFF);
        for (const int sizeField : {4, 40})
            std::fstream(streamed, std::ios::in | std::ios::out).seekp(sizeField).write(bytes.data(), 4);
        if (isOpen)
            EXPECT_EQ(SoundFile(streamed).frames(), frames) << size;
        else
            EXPECT_THAT(opening(streamed), ThrowsMessage<SoundFileError>(HasSubstr("truncated"))) << size;
    }
}

TEST_F(SoundFiles, ThatAreTruncatedGiveWhatIsThere) {
    for (const int format : {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_RF64 | SF_FORMAT_PCM_24,
                             SF_FORMAT_FLAC | SF_FORMAT_PCM_16, SF_FORMAT_OGG | SF_FORMAT_VORBIS}) {
        const auto path = write("whole", format);
        SoundFile whole(path, Truncated::taken);
        EXPECT_FALSE(whole.isTruncated()) << format;
        EXPECT_EQ(whole.frames(), frames) << format;
        const auto cut = folder_ / "cut";
        std::filesystem::copy_file(path, cut, std::filesystem::copy_options::overwrite_existing);
        // Of an Ogg file all of a page is needed.
        std::filesystem::resize_file(cut, std::filesystem::file_size(cut) * 9 / 10);
        SoundFile part(cut, Truncated::taken);
        EXPECT_TRUE(part.isTruncated()) << format;
        ASSERT_GT(part.frames(), frames / 3) << format;
        ASSERT_LT(part.frames(), frames) << format;
        // From the end, where decoders that jump look for more.
        for (const std::int64_t position : {part.frames() - 10, std::int64_t{0}}) {
            std::vector<float> there(10);
            std::vector<float> expected(10);
            part.read(1, position, there);
            whole.read(1, position, expected);
            EXPECT_EQ(there, expected) << format << ", frame " << position;
        }
    }
}

TEST_F(SoundFiles, WhoseDataEndsEarlyFailFromThereOnOnly) {
    const auto path = write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 1);
    std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
    MaterialCache cache({.segmentLength = 1000});
    cache.add(cookieOf(0), std::make_shared<SoundFileSource>(std::make_shared<SoundFile>(path), 0));
    EXPECT_EQ(*forwardReader(cache, frames - 1), 0.0F);
    EXPECT_NEAR(read(cache, 0, 1000).back(), sampleAt(999, 0), 1e-4);
    EXPECT_THAT(cache.statistics(cookieOf(0)).firstFailure, HasSubstr("a.flac': cannot go to frame 99000: "));
}

TEST_F(SoundFiles, GiveTheSameSamplesInAnyOrder) {
    for (const int format : {SF_FORMAT_OGG | SF_FORMAT_VORBIS, SF_FORMAT_OGG | SF_FORMAT_OPUS,
                             SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, SF_FORMAT_FLAC | SF_FORMAT_PCM_24}) {
        const auto path = write("lossy", format, 1);
        std::vector<float> forwards(frames);
        SoundFile(path).read(0, 0, forwards);
        SoundFile file(path);
        const float error = (format & SF_FORMAT_TYPEMASK) == SF_FORMAT_MPEG ? 3e-7F : 0.0F;
        for (const std::size_t position : {98000U, 60000U, 70001U, 0U, 77777U}) {
            std::vector<float> part(1000);
            file.read(0, static_cast<std::int64_t>(position), part);
            const auto expected = std::span(forwards).subspan(position, part.size());
            EXPECT_THAT(part, testing::Pointwise(testing::FloatNear(error), expected)) << format;
        }
    }
}

} // namespace
} // namespace audlmd::test

#include "host/media/DecodedCache.hpp"

#include "host/cache/SoundFile.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace audlmd::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;
using Path = std::filesystem::path;
using namespace std::literals;

std::string bytesOf(const Path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const Path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

/// All samples, the channels side by side, as bytes.
std::string samplesOf(const Path& path) {
    SoundFile file(path);
    const auto channels = static_cast<std::size_t>(file.channels());
    std::vector<float> all(static_cast<std::size_t>(file.frames()) * channels);
    std::vector<float> channel(static_cast<std::size_t>(file.frames()));
    for (std::size_t c = 0; c < channels; ++c) {
        file.read(static_cast<int>(c), 0, channel);
        for (std::size_t n = 0; n < channel.size(); ++n)
            all[n * channels + c] = channel[n];
    }
    std::string bytes(all.size() * sizeof(float), '\0');
    std::memcpy(bytes.data(), all.data(), bytes.size());
    return bytes;
}

/// With programs of the test's own in front of PATH.
class Decoding : public testing::Test {
protected:
    Decoding() {
        std::filesystem::create_directories(in("bin"));
        setenv("PATH", (in("bin").string() + ":" + path_).c_str(), 1);
        setenv("FOLDER", folder_.c_str(), 1);
    }
    ~Decoding() override {
        setenv("PATH", path_.c_str(), 1);
        std::filesystem::remove_all(folder_);
    }

    Path in(const std::string& name) const { return folder_ / name; }

    void writeProgram(const std::string& name, const std::string& script) const {
        write(in("bin/" + name), "#!/bin/sh\ncd \"$FOLDER\"\n" + script + "\n");
        std::filesystem::permissions(in("bin/" + name), std::filesystem::perms::owner_all);
    }

    /// An ffprobe that knows of two streams, and an ffmpeg that counts its calls and prints what the file
    /// `printed` holds: half a second of a channel at 8 kHz.
    void writePrograms() const {
        writeProgram(
            "ffprobe",
            R"(echo '{"streams": [{"codec_type": "video"}, {"codec_type": "audio", "duration": "0.5"}, {"codec_type": "audio"}]}')");
        writeProgram("ffmpeg", "echo >> count; cat printed");
        std::string header = "RIFF....WAVEfmt "
                             "\x28...\xFE\xFF\x01.\x40\x1F......\x04.\x20.\x16.\x20.\x04" +
                             std::string(19, '.') + "data";
        std::ranges::replace(header, '.', '\0');
        std::string samples;
        for (int n = 0; n < 4000; ++n)
            samples += std::string("\0\0", 2) + static_cast<char>(n % 128) + '\x3E';
        write(in("printed"), header + "\xFF\xFF\xFF\xFF" + samples);
        for (const std::string name : {"a.mov", "b.mov", "c.mov"})
            write(in(name), "....ftypqt " + name);
    }

    std::ptrdiff_t calls() const { return std::ranges::count(bytesOf(in("count")), '\n'); }

    std::unique_ptr<DecodedCache> cache(std::uintmax_t limit = 1U << 30,
                                        std::chrono::milliseconds patience = 60s) const {
        DecodedCacheOptions options;
        options.folder = in("cache");
        options.limit = limit;
        options.patience = patience;
        return std::make_unique<DecodedCache>(options);
    }

    /// All but the file that is locked.
    std::vector<std::string> cached() const {
        std::vector<std::string> names;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(in("cache"), none))
            if (entry.path().filename() != "lock")
                names.push_back(entry.path().filename());
        return names;
    }

private:
    const std::string path_ = std::getenv("PATH");
    const Path folder_ = Path(testing::TempDir()) / ("audlmd-decoding-" + std::to_string(getpid()));
};

TEST_F(Decoding, FailsInOneLineAndLeavesNothing) {
    writePrograms();
    for (const auto& [program, script, said] : std::vector<std::tuple<std::string, std::string, std::string>>{
             {"ffmpeg", "exit 0", "ffmpeg ended half-way"},
             {"ffmpeg", "head -c 9001 printed", "ffmpeg ended half-way"},
             {"ffmpeg", "head -c 9000 printed; echo '[x] bad data' >&2; exit 1",
              "ended with status 1: bad data"},
             {"ffmpeg", "head -c 9000 printed; kill -9 $$", "ffmpeg ended with signal 9"},
             {"ffmpeg", "head -c 9000 printed; sleep 60 & wait", "has decoded nothing for 0.3 s"},
             {"ffmpeg", "while :; do echo bad >&2; done", "has decoded nothing for 0.3 s"},
             {"ffmpeg", "exec >&- 2>&-; sleep 60", "has decoded nothing for 0.3 s"},
             {"ffmpeg", "cat printed printed | tail -c +100", "ffmpeg prints no WAV"},
             {"ffmpeg", "echo >> a.mov; cat printed", "it has changed while it was decoded"},
             {"ffprobe", "sleep 60", "has told nothing for 0.3 s"},
             {"ffprobe", "echo 'file:/a: b: unknown\n' >&2; exit 1",
              "(Format not recognised.) nor ffmpeg (unknown)"},
             {"ffprobe", "echo '{\"streams\": 3'", "cannot be understood"},
             {"ffprobe", "echo '{\"streams\": 3}'", "cannot be understood"},
             {"ffprobe", "echo '{\"streams\": [{\"codec_type\": \"video\"}]}'", "there is no sound in it"},
             {"ffprobe", R"(echo '{"streams": [{}], "format": {"format_name": "hls"}}')",
              "a list of other files"}}) {
        writePrograms();
        writeProgram(program, script);
        const auto begun = std::chrono::steady_clock::now();
        EXPECT_THAT([&] { cache(1U << 30, 300ms)->playable(in("a.mov")); },
                    ThrowsMessage<SoundFileError>(HasSubstr(said)))
            << script;
        EXPECT_LT(std::chrono::steady_clock::now() - begun, 20s);
        EXPECT_THAT(cached(), IsEmpty()) << script;
    }
    writePrograms();
    EXPECT_THAT([&] { cache()->playable(in("a.mov"), 2); },
                ThrowsMessage<SoundFileError>(HasSubstr("no sound stream 3, it has 2")));
    setenv("PATH", in("cache").c_str(), 1);
    EXPECT_THAT([&] { cache()->playable(in("a.mov")); },
                ThrowsMessage<SoundFileError>(HasSubstr("not installed")));
}

TEST_F(Decoding, FailsWhereTheFolderCannotTakeTheSamples) {
    writePrograms();
    // As on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    for (const rlim_t most : {rlim_t{50}, rlim_t{8000}, rlim_t{16100}}) {
        const rlimit limit{most, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_THAT(
            [&] { cache()->playable(in("a.mov")); },
            ThrowsMessage<std::system_error>(HasSubstr("a.mov': what is decoded of it cannot be kept in ")))
            << most;
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_THAT(cached(), IsEmpty()) << most;
    }
    write(in("cache2"), "");
    EXPECT_THROW(DecodedCache({.folder = in("cache2/x")}).playable(in("a.mov")), std::system_error);
}

TEST_F(Decoding, HappensOnceUntilTheMediumChangesOrTheFileIsDamaged) {
    writePrograms();
    writeProgram("ffmpeg", "echo >> count; head -c 14068 printed; echo '[x @ 0] bad\n' >&2");
    const Path file = cache()->playable(in("a.mov")).path;
    EXPECT_TRUE(samplesOf(file) == bytesOf(in("printed")).substr(68, 14000));
    EXPECT_EQ(SoundFile(file).sampleRate(), 8000);
    const auto note = [&](int stream = 0) { return cache()->playable(in("a.mov"), stream).note; };
    EXPECT_EQ(note(), "its sound ends after 0.438 s of the 0.500 s that it states; ffmpeg says: bad");
    EXPECT_EQ(std::filesystem::status(file.parent_path()).permissions(), std::filesystem::perms::owner_all);
    EXPECT_EQ(calls(), 1);
    const std::string whole = bytesOf(file);
    int expected = 1;
    for (const std::string& damaged : {whole.substr(0, 9000), whole.substr(0, whole.size() - 1), ""s,
                                       whole + "x", whole.substr(0, 200) + whole.substr(204)}) {
        write(file, damaged);
        EXPECT_NE(note(), "");
        EXPECT_EQ(calls(), ++expected);
        EXPECT_EQ(bytesOf(file).size(), whole.size());
    }
    note(1);
    EXPECT_EQ(calls(), ++expected);
    write(in("a.mov"), "....ftypqt another");
    note();
    EXPECT_EQ(calls(), ++expected);
    EXPECT_EQ(cached().size(), 3U);
}

TEST_F(Decoding, IsDoneByOneOfThoseWhoWantTheSame) {
    writePrograms();
    writeProgram("ffmpeg", "echo >> count; sleep 0.2; cat printed");
    std::vector<std::jthread> threads;
    for (int n = 0; n < 4; ++n)
        threads.emplace_back(
            [&] { EXPECT_EQ(samplesOf(cache()->playable(in("a.mov")).path).size(), 16000U); });
    threads.clear();
    EXPECT_EQ(calls(), 1);
}

TEST_F(Decoding, KeepsWhatIsInUseAndWhatWasUsedLast) {
    writePrograms();
    const auto media = [&] {
        std::string names;
        for (const DecodedMedium& medium : cache()->contents())
            names += medium.medium.filename().string().substr(0, 1);
        return names;
    };
    constexpr std::uintmax_t forTwo = 35'000;
    for (const std::string name : {"a.mov", "b.mov", "a.mov", "c.mov"}) {
        cache(forTwo)->playable(in(name));
        std::this_thread::sleep_for(20ms);
    }
    EXPECT_EQ(media(), "ac");
    const auto user = cache(0);
    user->playable(in("a.mov"));
    cache(0)->playable(in("b.mov"));
    EXPECT_EQ(media(), "ab");
    write(in("cache/0123456789abcdef.rf64-Ab3xyz.part"), "left by a process that was killed");
    write(in("cache/other.rf64"), "");
    EXPECT_EQ(cache()->clear(), 2U);
    EXPECT_EQ(media(), "a");
    EXPECT_TRUE(std::filesystem::exists(in("cache/other.rf64")));
}

/// Against ffmpeg itself.
class Films : public Decoding {
protected:
    void SetUp() override {
        if (std::system("ffmpeg -version > /dev/null 2>&1") != 0)
            GTEST_SKIP() << "ffmpeg is not installed";
    }

    void ffmpeg(const std::string& words) const {
        const std::string line = "cd '" + in("").string() + "' && ffmpeg -nostdin -v error -y " + words;
        ASSERT_EQ(std::system(line.c_str()), 0) << line;
    }
};

TEST_F(Films, GiveTheBytesOfFfmpegWithLengthDelayAndLayout) {
    const std::string pictures = " -f lavfi -i testsrc=d=1:s=64x48:r=25 ";
    const auto noise = [](const std::string& layout) {
        return " -f lavfi -i anoisesrc=d=1.2:r=48000:a=0.1,aformat=channel_layouts='" + layout + "' ";
    };
    const std::string both = "-map 0 -map 1 -c:v mpeg4 ";
    ffmpeg(noise("stereo") + pictures + both + "-c:a aac whole.mp4");
    for (const auto& [name, words, stream, layout] :
         std::vector<std::tuple<std::string, std::string, int, std::string>>{
             {"aac.mp4", noise("stereo") + pictures + both + "-c:a aac", 0, "stereo"},
             // With an edit list.
             {"cut.mp4", "-ss 0.3 -i whole.mp4 -c copy", 0, "stereo"},
             {"six.mov", noise("5.1(side)") + pictures + both + "-c:a pcm_s24le", 0, "5.1"},
             {"silent.mxf", noise("5.1") + pictures + "-map 1 -map 0 -c:v mpeg2video -c:a pcm_s16le", 0, ""},
             {"two.mkv", noise("mono") + noise("5.0") + pictures + "-map 0 -map 1 -map 2 -c:v mpeg4 -c:a ac3",
              1, "5.0"},
             {"-o.m4a", noise("mono") + "-c:a alac", 0, "mono"},
             {"concat:a.avi", noise("stereo") + "-c:a mp2", 0, "stereo"}}) {
        ffmpeg(words + " file:" + name);
        ffmpeg("-i file:" + name + " -map 0:a:" + std::to_string(stream) + " -f f32le right");
        // Programs are run in any folder, with names as users type them.
        const Path before = std::filesystem::current_path();
        std::filesystem::current_path(in(""));
        const PlayableFile file = cache()->playable(name, stream);
        std::filesystem::current_path(before);
        EXPECT_TRUE(samplesOf(file.path) == bytesOf(in("right"))) << name;
        EXPECT_EQ(file.note, "") << name;
        const ChannelLayout found = SoundFile(file.path).layout();
        EXPECT_EQ(isKnown(found) ? nameOf(found) : "", layout) << name;
    }
    ffmpeg("-itsoffset 0.5" + noise("stereo") + pictures + both + "-c:a aac late.mp4");
    EXPECT_THAT(cache()->playable(in("late.mp4")).note, HasSubstr("s after the rest"));
    ffmpeg("-i six.mov -c copy -timecode 01:00:00:10 timed.mov");
    EXPECT_EQ(SoundFile(cache()->playable(in("timed.mov")).path).timeReference(), 3600 * 48'000 + 10 * 1920);
    ffmpeg(pictures + "-c:v mpeg4 mute.mp4");
    EXPECT_THAT([&] { cache()->playable(in("mute.mp4")); },
                ThrowsMessage<SoundFileError>(HasSubstr("no sound in it")));
}

} // namespace
} // namespace audlmd::test

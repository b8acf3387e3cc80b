// The bytes that `audlmd render` writes, compared with a second implementation of the formats' definitions.

#include "host/cache/SoundFile.hpp"
#include "tests/tools/audlmd/CommandFixture.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/FileKind.hpp"
#include "tools/audlmd/files/OutputFile.hpp"

#include <sndfile.hh>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// So many calls of write() succeed, then one goes wrong: it fails, or says that it has written and has not.
/// Negative: none goes wrong.
int writesLeft = -1;
bool writeIsLost = false;

} // namespace

/// Found before that of the C library.
extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t count) {
    if (writesLeft >= 0 && writesLeft-- == 0) {
        errno = EIO;
        return writeIsLost ? static_cast<ssize_t>(count) : -1;
    }
    return syscall(SYS_write, descriptor, bytes, count);
}

namespace audlmd::test {
namespace {

struct Format {
    std::string name;
    std::size_t bytes;
    /// The integer for 1.0; 0 for formats that stored() and loaded() treat by name.
    float scale;
    /// How many of the seven kinds of sound file hold the format.
    int kinds;
};

const std::vector<Format> formats{
    {"f32", 4, 0.0F, 6},       {"s8", 1, 128.0F, 4},          {"u8", 1, 0.0F, 4}, {"s16", 2, 32768.0F, 7},
    {"s24", 3, 8388608.0F, 7}, {"s24in32", 4, 8388608.0F, 0}, {"s32", 4, 0.0F, 6}};

/// The container as an integer; for f32, the bits of the float. Truncated as the library does, or rounded.
std::int64_t stored(const Format& format, double sample, bool truncated) {
    auto x = static_cast<float>(sample);
    if (format.name == "f32")
        return std::bit_cast<std::int32_t>(truncated ? std::clamp(x, -1.0F, 8388607.0F / 8388608.0F) : x);
    if (std::isnan(x))
        x = 0.0F;
    if (truncated && format.name == "u8")
        return static_cast<std::int64_t>(std::clamp(x + 1.0F, 0.0F, 2.0F) * 127.5F);
    if (truncated && format.name == "s32")
        return static_cast<std::int64_t>(static_cast<double>(std::clamp(x, -1.0F, 1.0F)) * 2147483647.5 -
                                         0.5);
    if (format.name == "s32")
        return std::llrint(std::clamp(std::isnan(sample) ? 0.0 : sample * 0x1p31, -0x1p31, 0x1p31 - 1.0));
    const double scale = format.name == "u8" ? 128.0 : static_cast<double>(format.scale);
    const double steps = std::clamp(static_cast<double>(x) * scale, -scale, scale - 1.0);
    return truncated ? static_cast<std::int64_t>(steps)
                     : std::llrint(steps) + (format.name == "u8" ? 128 : 0);
}

/// What a container holds with a sample added. Only where 32 bits are rounded, more than a float.
double added(const Format& format, std::int64_t value, float sample, bool truncated) {
    if (format.name == "f32")
        return static_cast<double>(std::bit_cast<float>(static_cast<std::int32_t>(value)) + sample);
    if (format.name == "s32" && !truncated)
        return static_cast<double>(value) * 0x1p-31 + static_cast<double>(sample);
    if (format.name == "s32")
        return static_cast<double>(static_cast<float>((static_cast<double>(value) + 0.5) / 2147483647.5) +
                                   sample);
    if (format.name == "u8")
        return static_cast<double>(static_cast<float>(value - 128) / 128.0F + sample);
    return static_cast<double>(static_cast<float>(value) / format.scale + sample);
}

/// Levels at full scale and beyond, the smallest steps, and noise.
Channels testSound() {
    Channels sound = noise(2, 20000);
    std::vector<float>& first = sound.front();
    const float limits[] = {0.0F,     1.0F,       -1.0F,      1.5F,     -1.5F,     0.5F,      -0.5F, 0.9922F,
                            0.99997F, 0.9999999F, 1.0000001F, 0x1p-31F, -0x1p-23F, -0.00002F, NAN};
    std::ranges::copy(limits, first.begin());
    for (std::size_t n = std::size(limits); n < first.size(); n += 3)
        first[n] /= 3.0F;
    return sound;
}

class Files : public CommandFixture {
protected:
    Files() { writeSound(in("a.wav"), testSound()); }
};

class Formats : public Files, public testing::WithParamInterface<Format> {
protected:
    std::string bytesOf(const std::vector<std::int64_t>& integers) const {
        std::string bytes;
        for (const std::int64_t value : integers)
            bytes.append(reinterpret_cast<const char*>(&value), GetParam().bytes);
        return bytes;
    }

    /// The integers of a.wav, and of other samples with a.wav added.
    std::vector<std::int64_t> plain(bool truncated) const {
        std::vector<std::int64_t> integers;
        for (const float sample : sound_)
            integers.push_back(stored(GetParam(), static_cast<double>(sample), truncated));
        return integers;
    }
    std::vector<std::int64_t> sum(std::vector<std::int64_t> integers, bool truncated) const {
        for (std::size_t n = 0; n < integers.size(); ++n)
            integers[n] = stored(GetParam(), added(GetParam(), integers[n], sound_[n], truncated), truncated);
        return integers;
    }

    const std::vector<float> sound_ = interleaved(testSound());
    const std::string option_ = " --format " + GetParam().name;
};

TEST_P(Formats, StoreAndSumWhatTheyAreDefinedTo) {
    std::vector<std::int64_t> other;
    for (const float sample : interleaved(noise(2, 20000, 7)))
        other.push_back(stored(GetParam(), static_cast<double>(sample), false));
    writeBytes(in("existing.raw"), bytesOf(other));
    for (const bool truncated : {false, true}) {
        const std::string options = option_ + (truncated ? " --truncate" : "");
        output("render a.wav -o out.raw" + options);
        EXPECT_TRUE(readBytes(in("out.raw")) == bytesOf(plain(truncated))) << options;
        output("render a.wav -o out.raw --mix-into existing.raw --block 999" + options);
        EXPECT_TRUE(readBytes(in("out.raw")) == bytesOf(sum(other, truncated))) << options;
    }
    EXPECT_TRUE(readBytes(in("existing.raw")) == bytesOf(other));
}

/// Of 32 bits, the sum needs more than a float has.
TEST_P(Formats, GoUnchangedIntoAndOutOfEveryContainerThatHoldsThem) {
    const Format& format = GetParam();
    output("render a.wav -o plain.raw" + option_);
    output("render a.wav -o sum.raw --gain -9.5 --mix-into plain.raw" + option_);
    output("render a.wav -o twice.raw --mix-into sum.raw" + option_);
    const std::string bytes = readBytes(in("sum.raw"));
    int kinds = 0;
    for (const std::string name : {"b.wav", "b.w64", "b.rf64", "b.aiff", "b.au", "b.caf", "b.flac"}) {
        if (const Outcome outcome =
                run("render a.wav -o " + name + " --gain -9.5 --mix-into plain.raw" + option_);
            outcome.status != 0) {
            EXPECT_NE(outcome.errors.find("does not hold " + format.name), std::string::npos);
            continue;
        }
        ++kinds;
        SndfileHandle file(in(name).string());
        std::vector<int> found(sound_.size());
        if (format.name == "f32")
            // The bits of the floats.
            file.read(reinterpret_cast<float*>(found.data()), static_cast<sf_count_t>(found.size()));
        else
            // libsndfile puts each sample into the high bits of an int.
            file.read(found.data(), static_cast<sf_count_t>(found.size()));
        std::vector<int> expected;
        for (std::size_t n = 0; n < bytes.size(); n += format.bytes) {
            std::uint32_t bits = 0;
            std::memcpy(reinterpret_cast<char*>(&bits) + 4 - format.bytes, &bytes[n], format.bytes);
            expected.push_back(static_cast<int>(bits ^ (format.name == "u8" ? 0x80000000 : 0)));
        }
        EXPECT_TRUE(found == expected) << name;
        // Samples that nothing changes keep format and bytes, forwards and turned round twice.
        output("render " + name + " -o copy.raw");
        EXPECT_TRUE(readBytes(in("copy.raw")) == bytes) << name;
        output("render " + name + " -o back-" + name + " --reverse --block 777");
        output("render back-" + name + " -o copy.raw --reverse");
        EXPECT_TRUE(readBytes(in("copy.raw")) == bytes) << name;
        output("render a.wav -o mix.raw --mix-into " + name);
        EXPECT_TRUE(readBytes(in("mix.raw")) == readBytes(in("twice.raw"))) << name;
    }
    EXPECT_EQ(kinds, format.kinds);
}

INSTANTIATE_TEST_SUITE_P(All, Formats, testing::ValuesIn(formats),
                         [](const auto& instance) { return instance.param.name; });

TEST_F(Files, SayWhatTheirChannelsAreWhereTheyCan) {
    writeSound(in("six.wav"), noise(6, 10));
    const auto layoutOf = [&](const std::string& name) { return SoundFile(in(name)).layout(); };
    for (const auto& [name, says51, saysFilm] :
         std::vector<std::tuple<std::string, bool, bool>>{{"b.wav", true, false},
                                                          {"b.caf", true, true},
                                                          {"b.aiff", true, true},
                                                          {"b.w64", false, false}}) {
        for (const auto& [layout, isSaid] :
             {std::pair<std::string, bool>{"5.1film", saysFilm}, {"5.1", says51}}) {
            const std::string told =
                output("render six.wav -o " + name + " --format s16 --channels " + layout);
            EXPECT_EQ(layoutOf(name), isSaid ? *layoutNamed(layout) : unknownLayout(6)) << name << layout;
            EXPECT_EQ(
                told.starts_with("note: '" + name + "' does not say that its channels are L C R Ls Rs LFE\n"),
                layout == "5.1film" && !isSaid)
                << told;
        }
    }
    // What a file says is kept, and nothing else is said.
    output("render six.wav -o b.wav --channels 7.1");
    output("render b.wav -o c.rf64");
    EXPECT_EQ(layoutOf("c.rf64"), usualLayout(8));
    for (const std::string name : {"b.rf64", "b.flac"}) {
        output("render six.wav -o " + name + " --format s16");
        output("render " + name + " -o c.wav");
        EXPECT_EQ(layoutOf("c.wav"), usualLayout(6));
    }
    output("render six.wav -o c.wav --channels 6");
    EXPECT_EQ(layoutOf("c.wav"), unknownLayout(6));
    // A FLAC has no place for other speakers than the usual ones: that is a note.
    {
        SndfileHandle file(in("odd.wav").string(), SFM_WRITE, SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 3, 48000);
        std::vector<int> map = mapOf({Speaker::left, Speaker::right, Speaker::lowFrequency});
        file.command(SFC_SET_CHANNEL_MAP_INFO, map.data(), 12);
        const std::vector<short> samples(30);
        file.writef(samples.data(), 10);
    }
    EXPECT_TRUE(output("render odd.wav -o odd.flac --format s16")
                    .starts_with("note: 'odd.flac' does not say that its channels are L R LFE\n"));
    const std::string plain = readBytes(in("a.wav"));
    output("render a.wav -o d.wav --channels stereo");
    EXPECT_EQ(readBytes(in("d.wav")).substr(0, 44), plain.substr(0, 44));
}

std::string numbers(const std::vector<std::uint32_t>& values) {
    return {reinterpret_cast<const char*>(values.data()), 4 * values.size()};
}

/// With the sizes of the chunk and of the file.
void append(const Path& path, const std::string& identifier, const std::string& content) {
    std::string bytes =
        readBytes(path) + identifier + numbers({static_cast<std::uint32_t>(content.size())}) + content;
    bytes.resize(bytes.size() + bytes.size() % 2);
    bytes.replace(4, 4, numbers({static_cast<std::uint32_t>(bytes.size() - 8)}));
    writeBytes(path, bytes);
}

/// Markers and loops as libsndfile reads them of a file.
std::string markersAndLoops(const Path& path) {
    SndfileHandle file(path.string());
    SF_CUES cues{};
    file.command(SFC_GET_CUE, &cues, sizeof cues);
    std::string text;
    for (std::uint32_t n = 0; n < cues.cue_count; ++n)
        text += std::to_string(cues.cue_points[n].sample_offset) + " " + cues.cue_points[n].name + ", ";
    SF_INSTRUMENT sampler{};
    file.command(SFC_GET_INSTRUMENT, &sampler, sizeof sampler);
    for (int n = 0; n < sampler.loop_count; ++n)
        text += std::to_string(sampler.loops[n].start) + "-" + std::to_string(sampler.loops[n].end) + ", ";
    return text;
}

TEST_F(Files, MoveMarkersAndLoopsWithTheirSamples) {
    writeSound(in("in.wav"), noise(1, 48000), 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_U8);
    // Identifier, play order, chunk, two starts, and the sample.
    std::string cue = numbers({4});
    for (const std::uint32_t position : {30000U, 100U, 48000U, 12000U})
        cue += numbers({position, 0}) + "data" + numbers({0, 0, position});
    const auto text = [](const std::string& kind, std::uint32_t of, const std::string& words) {
        return kind + numbers({static_cast<std::uint32_t>(words.size()) + 4, of}) + words;
    };
    // An odd length, and a list behind that says too much.
    append(in("in.wav"), "cue ", cue + "x");
    append(in("in.wav"), "LIST",
           "adtl" + text("labl", 30000, std::string("verse 1", 8)) +
               text("note", 30000, std::string("hm\0", 4)) + text("labl", 100, std::string("0.25\0", 6)) +
               text("ltxt", 12000, numbers({12001}) + "rgn " + numbers({0, 0}) + std::string("solo", 4)) +
               "labl" + numbers({999, 48000}) + "end");
    append(in("in.wav"), "smpl",
           numbers({0, 0, 20833, 60, 0, 0, 0, 99, 4, 1, 0, 1000, 1999, 0, 0, 2, 0, 100, 29999, 0, 7}));
    append(in("in.wav"), "iXML", "<a>" + std::string(69998, ' '));
    for (const auto& [options, found, lost] : std::vector<std::tuple<std::string, std::string, std::string>>{
             {"b.wav", "100 0.25, 12000 solo, 30000 verse 1, 48000 end, 1000-2000, 100-30000, ", ""},
             {"b.wav --from 0.02 --to 30000smp", "11040 solo, 40-1040, ",
              "3 markers outside the range, 1 loop outside the range"},
             {"b.wav --from solo --to end", "0 solo, 18000 verse 1, 36000 end, ",
              "1 marker outside the range, 2 loops outside the range"},
             {"b.wav --from 0.25", "0 solo, 18000 verse 1, 36000 end, ",
              "1 marker outside the range, 2 loops outside the range"},
             {"b.wav --reverse --from solo", "0 end, 17999 verse 1, 23999 solo, ",
              "1 marker outside the range, loops (smpl)"},
             {"b.wav --rate 96k", "200 0.25, 24000 solo, 60000 verse 1, 96000 end, ", "loops (smpl)"},
             {"b.wav --relabel 48:24 --from solo", "0 solo, 36000 verse 1, 72000 end, ",
              "1 marker outside the range, loops (smpl)"},
             {"b.wav --speed 2", "50 0.25, 6000 solo, 15000 verse 1, 24000 end, ", "loops (smpl)"},
             {"b.aiff", "100 0.25, 12000 solo, 30000 verse 1, 48000 end, ",
              "iXML, lengths and comments of markers, loops (smpl)"},
             {"b.flac", "", "iXML, 4 markers, loops (smpl)"}}) {
        const std::string told = output("render in.wav -o " + options);
        EXPECT_EQ(markersAndLoops(in(options.substr(0, options.find(' ')))), found) << options;
        const std::string note = "' does not keep " + lost + "\n";
        EXPECT_EQ(told.find(lost.empty() ? "note" : note),
                  lost.empty() ? std::string::npos : told.find("' does"))
            << told;
    }
    // Nothing is lost through an RF64, an AIFF and a pipe; lengths stand beside the names.
    output("render in.wav -o b.wav");
    output("render b.wav -o c.rf64");
    output("render c.rf64 -o c.wav");
    EXPECT_TRUE(readBytes(in("c.wav")) == readBytes(in("b.wav")));
    EXPECT_NE(readBytes(in("c.wav")).find("ltxt" + numbers({20, 2, 12001}) + "rgn "), std::string::npos);
    EXPECT_NE(readBytes(in("c.wav")).find("iXML" + numbers({70001}) + "<a> "), std::string::npos);
    writeBytes(in("d.wav"), run("render c.rf64 -o - --kind wav").output);
    EXPECT_EQ(markersAndLoops(in("d.wav")), markersAndLoops(in("b.wav")));
    output("render c.wav -o d.flac --from solo --markers d.csv");
    EXPECT_NE(readBytes(in("d.csv"))
                  .find("\n0,0.000000,0:00:00.000,12001,\"solo\",\"\"\r\n"
                        "18000,0.375000,0:00:00.375,0,\"verse 1\",\"hm\"\r\n"),
              std::string::npos)
        << readBytes(in("d.csv"));
    output("render b.aiff -o d.wav");
    EXPECT_EQ(markersAndLoops(in("d.wav")), markersAndLoops(in("b.aiff")));
    expectRefused(
        "render b.wav -o new.wav --from vers",
        "'vers' is not a time, and no marker of 'b.wav', which has 'verse 1', 'end', '0.25', 'solo'");
    // What a chunk claims beyond the end of the file is not there.
    writeSound(in("lie.wav"), noise(1, 100));
    append(in("lie.wav"), "cue ", numbers({999, 1, 0}) + "data" + numbers({0, 0, 50}));
    std::string bytes = readBytes(in("lie.wav"));
    writeBytes(in("lie.wav"), bytes.replace(bytes.size() - 32, 4, numbers({99999})));
    output("render lie.wav -o d.wav");
    EXPECT_EQ(markersAndLoops(in("d.wav")), "50 , ");
}

TEST_F(Files, KeepTagsAndBroadcastExtensionsOrSayWhatIsLost) {
    const std::int64_t reference = 0xFFFFFFF0;
    {
        SndfileHandle file(in("in.wav").string(), SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, 48000);
        for (const auto& [tag, text] : std::map<int, const char*>{
                 {SF_STR_TITLE, "B\xC3\xA9la"}, {SF_STR_ALBUM, "odd"}, {SF_STR_GENRE, "even"}})
            file.setString(tag, text);
        SF_BROADCAST_INFO broadcast{};
        std::ranges::copy(std::string("door"), broadcast.description);
        broadcast.time_reference_low = 0xFFFFFFF0U;
        file.command(SFC_SET_BROADCAST_INFO, &broadcast, sizeof broadcast);
        std::string ixml = "<BWFXML/>";
        SF_CHUNK_INFO chunk{.id = "iXML", .id_size = 4, .datalen = 9, .data = ixml.data()};
        sf_set_chunk(file.rawHandle(), &chunk);
        const std::vector<short> samples(48000);
        file.writef(samples.data(), 48000);
    }
    // A chunk that nobody knows.
    append(in("in.wav"), "wxyz", "text");
    for (const auto& [name, lost] :
         std::map<std::string, std::string>{{"b.wav", "wxyz"},
                                            {"b.rf64", "wxyz"},
                                            {"b.caf", "bext, iXML, wxyz"},
                                            {"b.flac", "bext, iXML, wxyz"},
                                            {"b.aiff", "album, genre, bext, iXML, wxyz"},
                                            {"b.w64", "title, album, genre, bext, iXML, wxyz"}}) {
        const std::string told = output("render in.wav --from 0.5 --format s16 -o " + name);
        EXPECT_TRUE(told.starts_with("note: '" + name + "' does not keep " + lost + "\n")) << told;
        EXPECT_EQ(SoundFile(in(name)).timeReference(), lost == "wxyz" ? reference + 24000 : 0) << name;
        EXPECT_EQ(output("render in.wav --no-metadata -o " + name).find("note"), std::string::npos);
    }
    // What is read of an RF64 is what a WAV has, through any number of renders.
    output("render in.wav -o c.rf64");
    output("render c.rf64 -o c.wav --rate 96000");
    SndfileHandle file(in("c.wav").string());
    EXPECT_STREQ(file.getString(SF_STR_TITLE), "B\xC3\xA9la");
    EXPECT_STREQ(file.getString(SF_STR_ALBUM), "odd");
    EXPECT_STREQ(file.getString(SF_STR_GENRE), "even");
    EXPECT_EQ(SoundFile(in("c.wav")).timeReference(), 2 * reference);
    output("render c.rf64 -o d.wav --relabel 3:1 --from 0.125 --rate 24k");
    EXPECT_EQ(SoundFile(in("d.wav")).timeReference(), reference / 2 * 3 + 3000);
    const std::string kept = readBytes(in("c.wav"));
    EXPECT_NE(kept.find("door"), std::string::npos);
    EXPECT_NE(kept.find("<BWFXML/>"), std::string::npos);
}

TEST_F(Files, GoToStandardOutputWithoutAHeader) {
    const Outcome outcome = run("render a.wav -o - --format s16");
    EXPECT_NE(outcome.errors.find("\nrendered "), std::string::npos) << outcome.errors;
    output("render a.wav -o out.raw --format s16");
    EXPECT_TRUE(outcome.output == readBytes(in("out.raw")));
}

TEST_F(Files, ComeThroughPipesAndWithoutHeaders) {
    const auto shell = [this](const std::string& line) {
        return WEXITSTATUS(
            std::system(("cd " + in("").string() + " && a=" AUDLMD_COMMAND " && " + line).c_str()));
    };
    output("render a.wav -o b.wav --format s24");
    EXPECT_EQ(shell("cat a.wav | $a render - -o - --kind wav --format s24 --quiet | $a render - -o piped.wav "
                    "--format s24 --quiet"),
              0);
    EXPECT_EQ(readBytes(in("piped.wav")), readBytes(in("b.wav")));
    output("render a.wav -o a.raw");
    const std::string layout = " --input-format f32 --input-rate 48k --input-channels 2";
    EXPECT_EQ(shell("$a render - -o raw.wav --format s24 --quiet < a.raw" + layout), 0);
    EXPECT_EQ(readBytes(in("raw.wav")), readBytes(in("b.wav")));
    for (const auto& [format, kind] :
         {std::pair{"s24in32", ".wav --format s24"}, {"s8", ".aiff --format s8"}}) {
        const std::string named = std::string(" --quiet -o b") + kind;
        output(std::string("render a.wav -o a.raw --format ") + format);
        output("render a.wav" + named);
        const std::string whole = readBytes(in("b" + std::string(kind, std::strchr(kind, ' '))));
        EXPECT_EQ(shell("$a render - --input-rate 48k --input-channels 2 --input-format " +
                        std::string(format) + named + " < a.raw"),
                  0);
        EXPECT_EQ(readBytes(in("b" + std::string(kind, std::strchr(kind, ' ')))), whole);
    }
    output("render a.wav -o a.raw");
    // A WAV that was cut off stays one, and only a header without a length is completed.
    EXPECT_EQ(shell("head -c 50000 a.wav | $a render - -o cut.wav 2> errors"), 3);
    EXPECT_NE(readBytes(in("errors")).find("standard input: truncated"), std::string::npos);
    EXPECT_EQ(shell("head -c 50003 a.raw | $a render - -o cut.wav 2> errors" + layout), 3);
    EXPECT_NE(readBytes(in("errors")).find("not a whole number of frames"), std::string::npos);
    expectRefused("render a.raw -o new.wav --input-rate 48000", "need all three of");
}

TEST_F(Files, EndAtFourGibibytesWhereTheirHeadersDo) {
    const auto require = [](const std::string& name, std::uint64_t bytes) {
        command::requireHolds(*command::findFileKind(name), command::FormatId::s16, bytes, name);
    };
    EXPECT_NO_THROW(require("b.wav", 1ULL << 40));
    for (const std::string name : {"b.aiff", "b.au"}) {
        EXPECT_NO_THROW(require(name, (1ULL << 32) - 4098));
        EXPECT_THROW(require(name, (1ULL << 32) - 4096), command::CommandError);
    }
}

TEST_F(Files, KeepTheirLinksOwnersAndPermissions) {
    writeBytes(in("real.wav"), "before");
    // Only root may give a file away.
    const uid_t owner = geteuid() == 0 ? 1 : geteuid();
    ASSERT_EQ(chown(in("real.wav").c_str(), owner, getegid()), 0);
    std::filesystem::permissions(in("real.wav"), std::filesystem::perms(06750));
    std::filesystem::create_symlink("real.wav", in("link.wav"));
    std::filesystem::create_symlink("new.svg", in("dangling.svg"));
    output("render a.wav -o link.wav");
    output("plot curves -o dangling.svg");
    struct stat found {};
    ASSERT_EQ(lstat(in("real.wav").c_str(), &found), 0);
    EXPECT_EQ(found.st_mode, static_cast<mode_t>(S_IFREG | 0750));
    EXPECT_EQ(found.st_uid, owner);
    EXPECT_EQ(readSound(in("real.wav")).size(), 2U);
    EXPECT_TRUE(std::filesystem::is_symlink(in("link.wav")));
    EXPECT_TRUE(std::filesystem::is_symlink(in("dangling.svg")));
    EXPECT_TRUE(std::filesystem::is_regular_file(in("new.svg")));
}

TEST_F(Files, ThatArePipesAreWrittenInto) {
    writeBytes(in("film.json"), R"({"audlmd": 1, "length": 9, "tracks": []})");
    const Path pipe = in("pipe.svg");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int reader = open(pipe.c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(fcntl(reader, F_SETPIPE_SZ, 1 << 20), 1 << 20); // As much as a picture.
    for (const std::string line : {"mix film.json -o b.wav --report pipe.svg",
                                   "mix film.json --picture pipe.svg", "plot eq highpass:30 -o pipe.svg"}) {
        output(line);
        char first = 0;
        EXPECT_EQ(read(reader, &first, 1), 1) << line;
        for (char rest[4096]; read(reader, rest, sizeof rest) > 0;)
            ;
        EXPECT_TRUE(std::filesystem::is_fifo(pipe)) << line;
    }
    close(reader);
}

TEST_F(Files, AppearWholeOrNotAtAllWhicheverWriteFails) {
    command::OutputLayout layout{
        .format = command::FormatId::s16, .channels = 2, .frames = 1001, .timeReference = 7};
    layout.metadata.markers = {{1, 2, "m"}};
    const std::vector<std::byte> samples(layout.dataBytes(), std::byte{1});
    // Returns whether the file is said to be written.
    const auto write = [&](const std::string& name, int writesThatSucceed) {
        writeBytes(in(name), "before");
        writesLeft = writesThatSucceed;
        try {
            command::OutputFile file(command::OutputTarget(in(name)), layout);
            file.write(samples.data(), 1001);
            file.complete();
            file.commit();
            return true;
        } catch (const command::CommandError&) {
            return false;
        }
    };
    for (const std::string name : {"b.wav", "b.w64", "b.rf64", "b.aiff", "b.au", "b.caf", "b.flac"}) {
        int writes = 0;
        for (; !write(name, writes); ++writes)
            EXPECT_EQ(readBytes(in(name)), "before") << name << ", write " << writes;
        EXPECT_GT(writes, 2) << name;
        EXPECT_GE(writesLeft, 0) << name << " is whole, but a write has failed";
        EXPECT_EQ(SndfileHandle(in(name).string()).frames(), 1001) << name;
        // The last write completes the header, of FLAC only its checksum.
        writeIsLost = true;
        EXPECT_EQ(write(name, writes - 1), name == "b.flac") << name;
        writeIsLost = false;
        writesLeft = -1;
    }
}

} // namespace
} // namespace audlmd::test

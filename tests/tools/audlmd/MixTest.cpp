#include "host/cache/SoundFile.hpp"
#include "host/timeline/TimelineText.hpp"
#include "tests/tools/audlmd/CommandFixture.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sndfile.hh>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <sys/stat.h>

namespace audlmd::test {
namespace {

using testing::HasSubstr;

class MixCommand : public CommandFixture {
protected:
    /// A timeline of our own JSON with one track.
    void writeTimeline(const std::string& strips, const std::string& more = "") const {
        writeBytes(in("film.json"), R"({"audlmd": 1, "sampleRate": 48000, "channels": 2, )" + more +
                                        R"("tracks": [{"name": "A1", "strips": [)" + strips + "]}]}");
    }

    /// The command must fail, but leave the file. Returns its errors.
    std::string errorsOfMix(const std::string& line) const {
        const Outcome outcome = run(line);
        EXPECT_EQ(outcome.status, 4) << line;
        return outcome.output + outcome.errors;
    }
};

TEST_F(MixCommand, ListsAnOtioFileAndItsOwnJsonAlike) {
    writeSound(in("a.wav"), noise(1, 96'000));
    writeBytes(in("film.otio"), R"({"OTIO_SCHEMA": "Timeline.1", "name": "film", "tracks": {
        "OTIO_SCHEMA": "Stack.1", "children": [{"OTIO_SCHEMA": "Track.1", "name": "A1", "kind": "Audio",
        "children": [{"OTIO_SCHEMA": "Clip.1", "name": "door", "media_reference":
            {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "a.wav"}}]}]}})");
    const std::string table = output("mix film.otio --list");
    EXPECT_THAT(table, HasSubstr("door  0:00:00.000 - 0:00:02.000"));
    writeBytes(in("film.json"), output("mix film.otio --list --as json"));
    EXPECT_EQ(output("mix film.json --list"), table);
}

TEST_F(MixCommand, PlaysBundlesInPlace) {
    std::filesystem::create_directories(in("film.otiod/media"));
    writeSound(in("film.otiod/media/a b.wav"), noise(2, 9000));
    writeBytes(
        in("film.otiod/content.otio"),
        R"({"OTIO_SCHEMA": "Timeline.1", "name": "film", "tracks": {"OTIO_SCHEMA": "Stack.1", "children": [
        {"OTIO_SCHEMA": "Track.1", "kind": "Audio", "children": [{"OTIO_SCHEMA": "Clip.1", "media_reference":
            {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "media/a%20b.wav"}}]}]}})");
    writeBytes(in("zip.py"), R"(
import zipfile
sound = open('film.otiod/media/a b.wav', 'rb').read()
for name, packing in ('film.otioz', zipfile.ZIP_STORED), ('packed.otioz', zipfile.ZIP_DEFLATED):
    with zipfile.ZipFile(name, 'w') as bundle:
        bundle.write('film.otiod/content.otio', 'content.otio', zipfile.ZIP_DEFLATED)
        member = zipfile.ZipInfo('media/a b.wav')
        member.compress_type = packing
        with bundle.open(member, 'w', force_zip64=True) as media:
            media.write(sound)
)");
    ASSERT_EQ(std::system(("cd " + in("").string() + " && python3 zip.py").c_str()), 0);
    output("mix film.otiod -o folder.wav");
    output("mix film.otioz -o zip.wav --picture zip.svg");
    EXPECT_EQ(readSound(in("folder.wav")), noise(2, 9000));
    EXPECT_TRUE(readBytes(in("zip.wav")) == readBytes(in("folder.wav")));
    EXPECT_THAT(output("mix film.otioz --list"), HasSubstr("/film.otioz/media/a b.wav"));
    EXPECT_THAT(output("mix packed.otioz --list"), HasSubstr("compressed inside its archive"));
    // Whatever its directory says, an archive is read or refused in a line.
    const std::string whole = readBytes(in("film.otioz"));
    std::size_t refused = 0;
    for (std::size_t at = whole.size() - 300; at < whole.size(); ++at) {
        std::string lie = whole;
        lie[at] = static_cast<char>(~lie[at]);
        writeBytes(in("lie.otioz"), at % 5 == 0 ? lie.substr(0, at) : lie);
        try {
            timeline::readTimelineText(in("lie.otioz"));
            const SoundFile sound(in("lie.otioz/media/a b.wav"));
        } catch (const SoundFileError& error) {
            ++refused;
            EXPECT_THAT(error.what(), HasSubstr("lie.otioz"));
        }
    }
    EXPECT_GT(refused, 100U);
    EXPECT_LT(refused, 300U);
}

TEST_F(MixCommand, PlaysTheFilesOfOneRecording) {
    const Channels sound = softNoise(5000);
    writeSound(in("a.wav"), sound);
    for (std::size_t n = 0; n < 6; ++n)
        writeSound(in(std::to_string(n) + ".wav"), {sound[n]});
    writeTimeline(R"({"media": "a.wav", "layout": "5.1film"})");
    output("mix film.json -o whole.wav");
    const std::string files = R"("files": ["0.wav", "1.wav", "2.wav", "3.wav", "4.wav", "5.wav"])";
    writeTimeline("{" + files + R"(, "layout": "5.1film"})");
    output("mix film.json -o mix.wav --picture mix.svg");
    EXPECT_TRUE(readBytes(in("mix.wav")) == readBytes(in("whole.wav")));
    expectRefused("mix film.json -o 3.wav", "3.wav");
    writeTimeline("{" + files + R"(, "layout": "5.0", "at": 0})");
    EXPECT_THAT(errorsOfMix("mix film.json -o mix.wav"), HasSubstr("layout 5.0 has 5 channels"));
    writeSound(in("2.wav"), noise(1, 4999));
    expectRefused("mix film.json -o new.wav", "2.wav' has 4999 samples at 48000 Hz, '", 3);
}

TEST_F(MixCommand, TakesRateAndChannelsFromTheCommandLineWhereTheTimelineHasNone) {
    writeSound(in("a.wav"), noise(1, 48'000));
    writeBytes(in("film.otio"),
               R"({"OTIO_SCHEMA": "Timeline.1", "tracks": {"OTIO_SCHEMA": "Stack.1", "children": [
        {"OTIO_SCHEMA": "Track.1", "kind": "Audio", "children": [{"OTIO_SCHEMA": "Clip.1", "media_reference":
            {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "a.wav"}}]}]}})");
    output("mix film.otio -o mix.wav --rate 44100 --channels 1 --picture mix.svg");
    output("render a.wav -o render.wav --rate 44100");
    EXPECT_TRUE(readBytes(in("mix.wav")) == readBytes(in("render.wav")));
    EXPECT_THAT(readBytes(in("mix.svg")), HasSubstr("</svg>"));
    EXPECT_EQ(output("mix film.otio --picture alone.svg"), "");
    EXPECT_THAT(readBytes(in("alone.svg")), HasSubstr("</svg>"));
}

TEST_F(MixCommand, WritesWhatRenderWritesForOneClipThroughEitherFunctions) {
    writeSound(in("a.wav"), noise(2, 50'000));
    for (const auto& [format, converter] : {std::pair<std::string, std::string>{"f32", "filtering"},
                                            {"s16", "best"},
                                            {"s24", "best"},
                                            {"u8", "filtering"},
                                            {"s24", "filtering"}}) {
        writeTimeline(R"({"media": "a.wav", "at": 0, "from": 1000, "to": 50000, "reverse": true, "gain": 23,
            "speed": 1.1, "fadeIn": {"length": 11000, "curve": "log"}, "converter": ")" +
                      converter + "\"}");
        const std::string render = "render a.wav --from 1000smp --reverse --gain 23 --speed 1.1 --fade-in "
                                   "10000smp:log --converter " +
                                   converter + " --format " + format;
        output(render + " -o render.wav");
        const std::string bytes = readBytes(in("render.wav"));
        output(render + " -o render.wav --through-tables");
        EXPECT_TRUE(readBytes(in("render.wav")) == bytes) << format;
        for (const std::string through : {"", " --through-tables"}) {
            output("mix film.json -o mix.wav --format " + format + through);
            EXPECT_TRUE(readBytes(in("mix.wav")) == bytes) << format << through;
        }
    }
}

TEST_F(MixCommand, CutsSlicesAndPartsThatJoinToTheWhole) {
    writeSound(in("a.wav"), noise(2, 60'000));
    writeSound(in("b.wav"), noise(1, 60'000, 2), 44100);
    writeTimeline(R"({"media": "a.wav", "at": 0, "from": 0, "to": 50000, "fadeOut": {"length": 9000}},
        {"media": "a.wav", "at": 20000, "from": 0, "to": 50000, "reverse": true, "speed": 1.3},
        {"media": "b.wav", "at": 30000, "from": 0, "to": 60000, "speed": 0.9, "converter": "linear"},
        {"media": "b.wav", "at": 10000, "from": 0, "to": 60000, "speed": 0.9, "converter": "best"},
        {"media": "a.wav", "at": 35000, "from": 0, "to": 50000,
         "equaliser": [{"kind": "peak", "frequency": 500, "gain": 9}],
         "automation": {"points": [[0, 0], [20000, -20], [40000, 3]]}})");
    output("mix film.json -o whole.raw --format s24 --dither");
    const std::string whole = readBytes(in("whole.raw"));
    for (const int count : {1, 2, 3, 7}) {
        std::string joined;
        for (int slice = 1; slice <= count; ++slice) {
            output("mix film.json -o part.raw --format s24 --dither --block 1000 --threads 3 --slice " +
                   std::to_string(slice) + "/" + std::to_string(count));
            joined += readBytes(in("part.raw"));
        }
        EXPECT_TRUE(joined == whole) << count << " slices";
    }
    output("mix film.json -o part.raw --format s24 --dither --from 40000smp --to 1s --slice 2/2");
    constexpr std::size_t frame = 6;
    EXPECT_TRUE(readBytes(in("part.raw")) == whole.substr(44000 * frame, 4000 * frame));
}

/// Of what stands in a folder, in the order of names, from +0.0 on.
Channels sumOf(const Path& folder) {
    Channels sum;
    std::set<Path> stems;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        stems.insert(entry.path());
    for (const Path& path : stems) {
        const Channels stem = readSound(path);
        sum.resize(stem.size(), std::vector<float>(stem.front().size()));
        for (std::size_t channel = 0; channel < stem.size(); ++channel)
            std::ranges::transform(sum[channel], stem[channel], sum[channel].begin(), std::plus());
    }
    return sum;
}

TEST_F(MixCommand, IsTheSumOfItsStems) {
    writeSound(in("a.wav"), noise(2, 60'000));
    writeSound(in("b.wav"), noise(6, 60'000, 2), 44100);
    std::mt19937 random(5);
    for (int round = 0; round < 4; ++round) {
        nlohmann::json film{{"audlmd", 1}, {"sampleRate", 48000}, {"channels", 2}, {"length", 50'000}};
        for (const std::string name : {"voices", "a/b: \u00e9", "", "empty"}) {
            nlohmann::json strips = nlohmann::json::array();
            for (int strip = name == "empty" ? 6 : round; strip < 6; ++strip)
                strips.push_back({{"media", random() % 2 == 0 ? "a.wav" : "b.wav"},
                                  {"at", random() % 40'000},
                                  {"from", 0},
                                  {"to", 9000 + random() % 9000},
                                  {"gain", static_cast<double>(random() % 20) - 15.3}});
            film["tracks"].push_back({{"name", name}, {"strips", strips}});
        }
        writeBytes(in("film.json"), film.dump());
        const std::string slice = " --slice " + std::to_string(round % 3 + 1) + "/3";
        output("mix film.json -o alone.wav" + slice);
        EXPECT_THAT(output("mix film.json -o mix.wav --stems stems --report r.json" + slice),
                    HasSubstr("stem 'stems/04 empty.wav': silent"));
        EXPECT_TRUE(readBytes(in("mix.wav")) == readBytes(in("alone.wav")));
        EXPECT_TRUE(sumOf(in("stems")) == readSound(in("mix.wav"))) << film;
        const auto stems = nlohmann::json::parse(readBytes(in("r.json")))["stems"];
        ASSERT_EQ(stems.size(), 4U);
        EXPECT_EQ(stems[1]["output"], "stems/02 a_b_ \u00e9.wav");
        EXPECT_EQ(stems[2]["output"], "stems/03.wav");
    }
    EXPECT_EQ(SndfileHandle(in("stems/01 voices.wav").string()).getString(SF_STR_TITLE),
              std::string("voices"));
    // What is muted is silent, and the rest as it was.
    const std::string first = readBytes(in("stems/01 voices.wav"));
    EXPECT_THAT(output("mix film.json -o mix.wav --stems stems --only 1 --slice 1/3"), HasSubstr("muted: "));
    EXPECT_TRUE(readBytes(in("stems/01 voices.wav")) == first);
    EXPECT_EQ(readSound(in("mix.wav")), readSound(in("stems/01 voices.wav")));
    output("mix film.json -o muted.wav --mute 2 3 --slice 1/3");
    EXPECT_TRUE(readSound(in("muted.wav")) == readSound(in("mix.wav")));
    expectRefused("mix film.json -o mix.wav --mute voice",
                  "there is no track 'voice'; did you mean 'voices'?");
    expectRefused("mix film.json --stems stems", "name the file of the mix");
    expectRefused("mix film.json -o stems/03.wav --stems stems", "are one file");
    writeBytes(in("file"), "");
    expectRefused("mix film.json -o mix.wav --stems file", "'file' cannot be written", 5);
    expectRefused("mix film.json -o no/mix.wav --stems new", "'no/mix.wav' cannot be written", 5);
}

TEST_F(MixCommand, SaysWhichMediaAreMissingAndFindsThemAgain) {
    writeSound(in("a.wav"), noise(1, 48'000));
    writeTimeline(R"({"name": "here", "media": "a.wav", "from": 0, "to": 48000},
                     {"name": "moved", "media": "old/reel2/b.wav", "at": 48000, "from": 0, "to": 48000})");
    expectRefused("mix film.json -o mix.wav --strict", "track 'A1', clip 'moved': ", 3);
    run("mix film.json -o mix.wav --strict --report r.json");
    const auto failure = nlohmann::json::parse(readBytes(in("r.json")));
    EXPECT_EQ(failure["exitStatus"], 3);
    EXPECT_THAT(failure["failure"], HasSubstr("clip 'moved'"));
    EXPECT_THAT(errorsOfMix("mix film.json -o mix.wav --report r.json"), HasSubstr("clip 'moved'"));
    EXPECT_EQ(readSound(in("mix.wav"))[0].size(), 96'000U);
    const auto report = nlohmann::json::parse(readBytes(in("r.json")));
    EXPECT_EQ(report["clips"][0]["clip"], "moved");
    EXPECT_EQ(report["clips"][0]["silent"], nlohmann::json::parse("[[48000, 96000]]"));

    for (const std::string folder : {"archive/reel1", "archive/reel2"}) {
        std::filesystem::create_directories(in(folder));
        writeSound(in(folder + "/b.wav"), noise(1, 48'000, folder.back() == '2' ? 5 : 6));
    }
    output("mix film.json -o mix.wav --strict --media archive");
    EXPECT_EQ(readSound(in("mix.wav"))[0][48'000], noise(1, 1, 5)[0][0]);
}

TEST_F(MixCommand, StaysStrictWhileThousandsOfClipsComeAndGo) {
    writeSound(in("a.wav"), noise(1, 200));
    std::string strips;
    for (int strip = 0; strip < 20'000; ++strip)
        strips += (strip == 0 ? "" : ",") +
                  (R"({"media": "a.wav", "from": 0, "to": 200, "at": )" + std::to_string(strip * 400) + "}");
    writeTimeline(strips);
    EXPECT_THAT(output("mix film.json -o mix.wav --strict"), HasSubstr("mixed 7999800 samples"));
}

TEST_F(MixCommand, FindsMediaUnderOtherPathsAndSaysWhatStandsInTheirPlace) {
    for (const std::string folder : {"archive/reel1", "archive/reel2", "here"})
        std::filesystem::create_directories(in(folder));
    for (const std::string name :
         {"reel1/b.wav", "reel2/b.wav", "shot.flac.wav", "take 1.2.wav", "door.aiff"})
        writeSound(in("archive/" + name), noise(1, 100));
    ASSERT_EQ(mkfifo(in("pipe").c_str(), 0600), 0);
    for (const auto& [media, shown] : std::vector<std::pair<std::string, std::string>>{
             {R"(D:\\film\\reel2\\b.wav)", "/reel2/b.wav"},
             {R"(\\\\server\\film\\reel1\\b.wav)", "/reel1/b.wav"},
             {"lost/b.wav", "note: track 'A1', clip '#1', at 0:00:00.000: 2 files fit "},
             {"lost/b.wav", "/reel1/b.wav\n"},
             {"lost/door.mov", "/door.aiff"},
             {"take 1.2", "/take 1.2.wav"},
             {"door.flac", "door.flac' is not there"},
             {"here", "is a folder"},
             {"pipe", "is a pipe"}}) {
        writeTimeline(R"({"media": ")" + media + R"(", "from": 0, "to": 100})");
        EXPECT_THAT(output("mix film.json --list --media archive"), HasSubstr(shown)) << media;
    }
}

TEST_F(MixCommand, TellsOfSilenceInEveryMixAndEndsWhereItIsAskedTo) {
    writeSound(in("a.wav"), noise(1, 48'000));
    writeTimeline(R"({"name": "short", "media": "a.wav", "from": 0, "to": 72000})", R"("length": 96000, )");
    const std::string told = errorsOfMix("mix film.json -o mix.wav --report r.json");
    EXPECT_THAT(told, HasSubstr("note: track 'A1', clip 'short', at 0:00:00.000: "));
    EXPECT_THAT(told, HasSubstr("mixed 96000 samples on 2 channels (2.000 s) of 'film.json' into 'mix.wav'"));
    EXPECT_THAT(told, HasSubstr("the last sound ends at 0:00:01.500, the programme at 0:00:02.000\n"));
    EXPECT_EQ(nlohmann::json::parse(readBytes(in("r.json")))["notes"][0]["silences"], true);
    expectRefused("mix film.json -o new.wav --strict", "clip 'short'", 3);
    writeTimeline(R"({"media": "a.wav", "from": 0, "to": 48000})", R"("length": 96000, )");
    output("mix film.json -o mix.wav --strict --until-last-sound");
    EXPECT_EQ(readSound(in("mix.wav"))[0].size(), 48'000U);
}

TEST_F(MixCommand, ReportsClippingAndKeepsTimeReferenceNameAndMarkers) {
    writeSound(in("a.wav"), {std::vector<float>(100, 0.75F)});
    writeTimeline(
        R"({"media": "a.wav", "at": 100, "from": 0, "to": 100, "gain": 10, "routing": [[0.1], [1]]})",
        R"("timeReference": 5000000000, "name": "reel 2",
            "markers": [{"name": "\"sh,ot\"", "at": 120}, {"name": "slate", "at": 50}, {"name": "early"}], )");
    for (const auto& [format, told] :
         std::map<std::string, std::string>{{"s16", "\nclipped"},
                                            {"f32 --truncate", "\nclipped"},
                                            {"f32", "\nover full scale, not clipped"}}) {
        EXPECT_THAT(
            output("mix film.json -o mix.wav --from slate --report r.json --page p.html --markers m.csv "
                   "--format " +
                   format),
            HasSubstr(told + ": channel 2: 100 samples, by up to 7.50 dB, first at 0:00:00.002"));
        const auto report = nlohmann::json::parse(readBytes(in("r.json")));
        EXPECT_EQ(report["channels"][0]["samples"], 0);
        EXPECT_EQ(report["channels"][1].at("first"), 100);
        EXPECT_EQ(report["channels"][1].at("clipped"), format == "f32" ? 0 : 100);
        EXPECT_NEAR(readSound(in("mix.wav"))[1][100], format == "f32" ? 2.3717 : 1.0, 1e-4);
    }
    EXPECT_EQ(nlohmann::json::parse(readBytes(in("r.json"))).at("page"), "p.html");
    EXPECT_EQ(readBytes(in("m.csv")), "sample,seconds,timecode,length,name,comment\r\n"
                                      "0,0.000000,28:56:06.668,0,\"slate\",\"\"\r\n"
                                      "70,0.001458,28:56:06.669,0,\"\"\"sh,ot\"\"\",\"\"\r\n");
    SF_INFO info{};
    SNDFILE* const file = sf_open(in("mix.wav").c_str(), SFM_READ, &info);
    SF_BROADCAST_INFO broadcast{};
    EXPECT_EQ(sf_command(file, SFC_GET_BROADCAST_INFO, &broadcast, sizeof broadcast), SF_TRUE);
    SF_CUES cues{};
    sf_command(file, SFC_GET_CUE, &cues, sizeof cues);
    EXPECT_STREQ(sf_get_string(file, SF_STR_TITLE), "reel 2");
    sf_close(file);
    EXPECT_EQ((std::uint64_t{broadcast.time_reference_high} << 32) + broadcast.time_reference_low,
              5'000'000'050U);
    EXPECT_STREQ(broadcast.description, "reel 2");
    EXPECT_STREQ(broadcast.originator, "audlmd");
    EXPECT_EQ(cues.cue_count, 2U);
    EXPECT_EQ(cues.cue_points[1].sample_offset, 70U);
    EXPECT_STREQ(cues.cue_points[1].name, "\"sh,ot\"");
    output("mix film.json -o mix.wav --no-metadata");
    EXPECT_EQ(readBytes(in("mix.wav")).find("LIST"), std::string::npos);
    EXPECT_EQ(readBytes(in("mix.wav")).find("bext"), std::string::npos);
}

TEST_F(MixCommand, FoldsDownWithANoteOrPicksChannels) {
    const Channels sound = softNoise(100);
    writeSound(in("six.wav"), sound);
    writeSound(in("nine.wav"), noise(9, 100));
    writeTimeline(R"({"media": "six.wav"}, {"media": "six.wav", "at": 100})");
    EXPECT_THAT(output("mix film.json -o mix.wav --strict"),
                HasSubstr("at 0:00:00.000: 5.1 is folded down to stereo, without LFE (2 clips)\n"));
    EXPECT_NEAR(readSound(in("mix.wav"))[1][199], sound[1][99] + 0.70710678F * (sound[2][99] + sound[5][99]),
                1e-6);
    EXPECT_THAT(output("mix film.json -o mono.wav --channels mono"),
                HasSubstr("note: the timeline: stereo is folded down to mono\n"));
    for (std::size_t n = 0; n < 200; ++n)
        EXPECT_NEAR(readSound(in("mono.wav"))[0][n],
                    (readSound(in("mix.wav"))[0][n] + readSound(in("mix.wav"))[1][n]) / 2, 1e-6);
    output("mix film.json -o right.wav --map R");
    EXPECT_TRUE(readSound(in("right.wav"))[0] == readSound(in("mix.wav"))[1]);
    writeTimeline(R"({"media": "nine.wav"})");
    expectRefused("mix film.json -o new.wav --strict", "nobody knows their speakers", 3);
}

TEST_F(MixCommand, RefusesWhatCannotBeMixed) {
    writeSound(in("a.wav"), noise(1, 100));
    writeTimeline(R"({"media": "a.wav", "from": 0, "to": 100})");
    writeBytes(in("text.otio"), "tracks: 2");
    writeBytes(in("other.json"), R"({"tracks": []})");
    writeBytes(in("empty.json"), R"({"audlmd": 1, "tracks": []})");
    for (const auto& [line, part] : std::vector<std::pair<std::string, std::string>>{
             {"film.json -o mix.wav --to 1smp --until-last-sound", "cannot stand together"},
             {"film.json", "-o"},
             {"film.json --list --report r.json", "--report"},
             {"film.json -o mix.wav --as json", "--as json"},
             {"film.json -o mix.wav --picture mix.jpg", ".png or .svg"},
             {"film.json -o mix.wav --rate 44100", "the timeline itself says 48000"},
             {"film.json -o mix.wav --map C",
              "'C' is not a channel of 'film.json', which has 2 channels: L, R"},
             {"film.json -o mix.wav --map 1 --channels 1", "cannot stand together"},
             {"film.json -o mix.wav --slice 3/2", "K/N"},
             {"film.json -o mix.wav --slice 0/2", "K/N"},
             {"film.json -o mix.wav --slice 1", "K/N"},
             {"film.json -o mix.wav --slice 1/1000", "nothing to mix"},
             {"film.json -o mix.wav --block 0", "--block"},
             {"film.json -o mix.wav --block 65537", "--block"},
             {"film.json -o mix.wav --from 1s", "outside the timeline"},
             {"film.json -o mix.wav --from 50smp --to 50smp", "holds nothing"},
             {"film.json -o mix.wav --media nowhere", "nowhere"},
             {"film.json -o a.wav", "a medium of the timeline"},
             {"film.json -o mix.wav --report film.json", "is the timeline"},
             {"film.json -o mix.wav --page a.wav", "a medium of the timeline"},
             {"film.json -o mix.wav --page p.html --markers p.html", "are one file"},
             {"film.json --markers m.csv --watch", "--watch"},
             {"film.json -o - --watch", "no file"},
             {"film.json -o mix.flac --format f32", "flac"},
             {"film.json -o mix.wav --dither", "f32, which is not rounded"},
             {"empty.json -o mix.wav", "holds nothing"},
         })
        expectRefused("mix " + line, part);
    for (const auto& [line, part] : std::vector<std::pair<std::string, std::string>>{
             {"text.otio --list", "'text.otio': line 1, column 3: this is not JSON; what can be read is "},
             {"other.json --list", "'other.json': this is no timeline"},
             {"a.wav --list", "use audlmd render"},
             {"none.otio --list", "No such file"},
             {". --list", "Is a directory"},
         })
        expectRefused("mix " + line, part, 3);
}

} // namespace
} // namespace audlmd::test

// `audlmd render` refuses in one line, and leaves every file as it was.

#include "tests/tools/audlmd/CommandFixture.hpp"

#include <algorithm>

namespace audlmd::test {
namespace {

/// Arguments that are refused, each with a part of the message.
using Refused = std::vector<std::pair<std::string, std::string>>;

class Refusals : public CommandFixture {
protected:
    Refusals() {
        writeSound(in("a.wav"), noise(2, 48000));
        writeBytes(in("out.wav"), "before");
    }
};

TEST_F(Refusals, OfOptions) {
    writeBytes(in("ride.csv"), "0,0\n");
    std::string thirteenBands;
    for (int i = 0; i < 13; ++i)
        thirteenBands += "--eq highpass:30 ";
    for (const auto& [options, part] :
         Refused{{"--to 1 --duration 1", "--to and --duration cannot stand together"},
                 {"--level 0 --automation ride.csv", "--level and --automation cannot stand together"},
                 {"--automation-reverse", "--automation-reverse needs --automation"},
                 {"--converter linear", "--converter needs --speed"},
                 {"--format s12", "'s12' is not a format"},
                 {"--from soon", "--from: 'soon' is not a time"},
                 {"--from 1.5", "--from: 1.5 is outside 'a.wav', which is 1s long"},
                 {"--to 48001smp", "--to: 48001smp is outside 'a.wav', which is 48000smp long"},
                 {"--from -1001ms", "--from: -1001ms is outside 'a.wav', which is 1000ms long"},
                 {"--from 1:00:00:00", "'1:00:00:00' is not a time"},
                 {"--from 0:00:00:25@25", "is not a time"},
                 {"--from 0:01:00;01@29.97", "is not a time"},
                 {"--duration -1s", "'-1s' is not a time"},
                 {"--fad-in 1", "'--fad-in' is no option; did you mean --fade-in?"},
                 {"b.wav", "several inputs go into a folder, and 'out.wav' is none"},
                 {"--suffix x", "--suffix is for outputs in a folder"},
                 {"--rate 44.1", "'44.1' is not a whole number of hertz"},
                 {"--from 0.5 --to 0.5", "holds nothing"},
                 {"--block 0", "--block"},
                 {"--fade-in 1:round", "'round' is not a curve"},
                 {"--fade-out 0", "shorter than one sample"},
                 {"--gain +61", "--gain: '+61' is not a gain"},
                 {"--level +11", "--level: '+11' is not a level"},
                 {"--dither --truncate", "cannot stand together"},
                 {"--dither", "f32, which is not rounded"},
                 {"--level +-3", "--level: '+-3' is not a number"},
                 {"--from 0:+9", "--from: '0:+9' is not a time"},
                 {"--level nan", "--level: 'nan' is not a level"},
                 {"--eq bell:1k:3", "'bell' is not a kind of band"},
                 {"--eq peak:1k", "should be peak:frequency:gain"},
                 {"--eq lowpass:24k", "half the sample rate"},
                 {"--eq peak:1k:3:0", "Q"},
                 {"--eq peak:nan:3", "half the sample rate"},
                 {"--eq peak:1k:nan", "gain"},
                 {"--eq peak:1k:inf", "gain"},
                 {"--eq peak:1k:3:nan", "Q"},
                 {"--rate 768001", "--rate"},
                 {"--channels 65", "--channels: '65' is not a number from 1 to 64, nor one of mono, stereo"},
                 {"--channels 9.1", "5.1film"},
                 {"--map 3", "--map: '3' is not a channel of 'a.wav', which has 2 channels: L, R"},
                 {"--map 1,,2", "--map: '' is not a channel"},
                 {thirteenBands, "13 bands"},
                 {"--speed nan", "--speed"},
                 {"--speed 2 --converter cubic", "'cubic' is not a converter"},
                 {"--fade-in 40000000000000s --speed 8 --converter linear", "is longer than the range"},
                 {"--fade-in 99999999999999999s", "--fade-in: "},
                 {"--speed 0", "is not a finite number above 0"},
                 {"--rate 44100.5", "'44100.5' is not a whole number of hertz"},
                 {"--relabel 3", "--relabel: "},
                 {"--channels 0", "'0' is not a number from 1 to 64"},
                 {"--map 0", "'0' is not a channel of 'a.wav'"},
                 {"--markers m.csv --no-metadata", "--markers tells of one output"},
                 {"--json --explain", "--explain is for people, and --json for programs"},
                 {"-o new/", "a folder is the only output"},
                 {"--input-format f32", "need all three of"},
                 {"--input-format f32 --input-rate 48k", "need all three of"},
                 {"--automation none.csv", "'none.csv' cannot be read"}})
        expectRefused("render a.wav -o out.wav " + options, part,
                      options.starts_with("--automation n") ? 3 : 2);
    expectRefused("modes 1 2", "'2' is one word too many (audlmd modes --help tells more)");
    expectRefused("render a.wav ./a.wav -o new/", "would both be written as 'new/a.wav'");
    expectRefused("render a.wav ./a.wav -o new/ --mix-into a.wav", "--mix-into takes one input");
    expectRefused("render a.wav ./a.wav -o new/ --peaks p.json", "--peaks takes one input");
    for (const std::string given : {"-o new/ --markers m.csv", "--explain --markers m.csv"})
        expectRefused("render a.wav " + given, "--markers tells of one output");
    for (const std::string option : {"--peaks p.json", "--normalise -1"})
        expectRefused("render a.wav --explain " + option, option.substr(0, option.find(' ')));
    for (const std::string slice : {"x/2", "0/2", "3/2", "1/9999999"})
        expectRefused("mix a.wav -o out.wav --slice " + slice, "--slice");
    for (const std::string how : {"--watch", "--json"})
        expectRefused("mix a.wav --list " + how, how);
    expectRefused("rendr a.wav", "'rendr' is no subcommand; did you mean render?");
    expectRefused("render a.wav out.wav",
                  "name what to write with -o: a folder, or one file as in -o out.wav");
    for (const auto& [text, part] : Refused{{"0,0\n1 3\n", "'bad.csv' line 2"},
                                            {"0,0\n1,soft\n", "'bad.csv' line 2"},
                                            {"1,0\n0,0\n", "comes after a later one"},
                                            {"time,decibels\n", "holds no automation"}}) {
        writeBytes(in("bad.csv"), text);
        expectRefused("render a.wav -o out.wav --automation bad.csv", part, 3);
    }
}

TEST_F(Refusals, OfInputThatIsNoWholeSound) {
    writeBytes(in("text.wav"), "no sound at all");
    writeSound(in("empty.wav"), {{}, {}});
    writeBytes(in("short.wav"), readBytes(in("a.wav")).substr(0, 100000));
    std::filesystem::create_directory(in("folder"));
    // The rate is the third number of the format.
    writeBytes(in("fast.wav"), readBytes(in("a.wav")).replace(24, 4, "\xFF\xFF\xFF\x7F"));
    // The damage is found only while the file is rendered.
    writeSound(in("damaged.flac"), noise(2, 400000), 48000, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    std::string damaged = readBytes(in("damaged.flac"));
    std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(damaged.size() / 2), 40000, '\0');
    writeBytes(in("damaged.flac"), damaged);
    for (const auto& [input, part] : Refused{{"none.wav", "none.wav"},
                                             {"text.wav", "text.wav"},
                                             {"empty.wav", "holds no samples"},
                                             {"short.wav", "short.wav"},
                                             {"folder", "folder"},
                                             {"fast.wav", "2147483647 Hz is outside 1000 to 768000 Hz"},
                                             {"\x1b[2J\xc2\x9b\xe2\x80\xae.wav", "'?[2J??.wav': "},
                                             {"damaged.flac", "damaged.flac"}})
        expectRefused("render " + input + " -o out.wav", part, 3);
}

TEST_F(Refusals, OfOutputThatCannotBeWritten) {
    std::filesystem::create_symlink("circle.wav", in("circle.wav"));
    expectRefused("render a.wav", "-o");
    for (const auto& [name, part] :
         Refused{{"/dev/full", "'/dev/full' cannot be written: "},
                 {"nowhere/out.wav", "'nowhere/out.wav' cannot be written: "},
                 {"out.m4a", "the extension names the kind of file"},
                 {"o.flac --channels 5.1film", "L C R Ls Rs LFE for L R C LFE Ls Rs"},
                 {"o.rf64 --channels 7.1film", "use --channels 7.1"},
                 {std::string(300, 'a') + ".wav", "a.wav' cannot be written: File name too long"},
                 {"circle.wav", "'circle.wav' cannot be written: "},
                 {"out.wav/out.wav", "'out.wav/out.wav' cannot be written"}})
        expectRefused("render a.wav -o " + name, part, name[0] == 'o' && name != "out.wav/out.wav" ? 2 : 5);
}

TEST_F(Refusals, OfOutputsThatAreInputsOrEachOther) {
    writeBytes(in("film.json"), R"({"audlmd": 1, "length": 9, "tracks": []})");
    writeBytes(in("ride.wav"), "0,0\n");
    std::filesystem::create_hard_link(in("a.wav"), in("hard.wav"));
    std::filesystem::create_symlink("a.wav", in("soft.svg"));
    std::filesystem::create_symlink("new.svg", in("dangling.wav"));
    for (const std::string line :
         {"render a.wav -o ./a.wav", "render a.wav -o hard.wav",
          "render a.wav -o ride.wav --automation ride.wav", "plot spectrogram a.wav -o soft.svg",
          "mix film.json -o x.wav --report film.json", "mix film.json -o x.wav --report ./x.wav",
          "mix film.json -o dangling.wav --picture new.svg"})
        expectRefused(line, "name another");
}

TEST_F(Refusals, OfMixesThatDoNotFit) {
    writeSound(in("mono.wav"), noise(1, 48000));
    writeSound(in("slow.wav"), noise(2, 48000), 44100);
    writeSound(in("long.wav"), noise(2, 48001));
    writeSound(in("law.wav"), noise(2, 48000), 48000, SF_FORMAT_WAV | SF_FORMAT_ULAW);
    writeSound(in("b.wav"), noise(2, 48000));
    writeBytes(in("odd.raw"), "12345");
    for (const auto& [existing, part] :
         Refused{{"mono.wav", "its channel count is 1 channels, but what is rendered has 2"},
                 {"slow.wav", "its rate is 44100 Hz"},
                 {"long.wav", "its length is 48001 frames"},
                 {"b.wav --speed 2", "its length is 48000 frames"},
                 {"law.wav", "none of the formats"},
                 {"b.wav --format s16", "its samples are f32, but --format asks for s16"},
                 {"odd.raw", "name it with --format"},
                 {"odd.raw --format s16", "not a whole number of frames"},
                 {"none.wav", "none.wav"}})
        expectRefused("render a.wav -o out.wav --mix-into " + existing, part, 3);
    expectRefused("render a.wav -o b.wav --mix-into b.wav", "never changed");
}

} // namespace
} // namespace audlmd::test

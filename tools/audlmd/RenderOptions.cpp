#include "tools/audlmd/RenderOptions.hpp"

#include "standalone/signal/Equaliser.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/TimeParser.hpp"

#include <CLI/CLI.hpp>

namespace audlmd::command {
namespace {

constexpr const char* renderHelp =
    R"(TIMES of --from, --to and --duration are the input's; those of fades and automation are the output's,
as heard. A time is written in seconds (12.5 or 3s), milliseconds (250ms), samples (480000smp) or as a
timecode (1:02.5, 1:00:02.5).

BANDS of --eq are written peak:FREQUENCY:GAIN[:Q], lowshelf:FREQUENCY:GAIN[:Q], highshelf:FREQUENCY:GAIN[:Q],
highpass:FREQUENCY[:Q] or lowpass:FREQUENCY[:Q], in hertz (1k is 1000) and decibels. Without Q it is 0.707.

MIXES The file of --mix-into has the render's rate, channels and length, and its format where one is given. A
.raw or .pcm file does not tell its format: give it with --format.

FILES The output's extension chooses the kind of file. Every sample in it is what the library stored:
  .wav .w64 .rf64   u8 s16 s24 s32 f32 (a wav beyond 4 GiB becomes RF64)
  .aiff .au .caf    s8 s16 s24 s32 f32 (an aiff also u8)
  .flac             s8 s16 s24
  .raw .pcm         every format, little-endian and without a header; the only ones that hold s24in32
Without --format it is that of --mix-into, else f32, or s24 for flac. Pipes and devices (/dev/stdout, -) get
headerless samples. The output stands under its name only once it is whole; whatever was there stays until
then.

EXAMPLES
  audlmd render speech.wav -o reversed.wav --reverse
  audlmd render take.flac -o part.wav --from 1:02.5 --duration 20s --format s24
  audlmd render voice.wav -o mix.wav --mix-into music.wav
  audlmd render song.wav -o faded.wav --fade-in 2s --fade-out 5s:log --gain -3
  audlmd render song.wav -o eq.wav --eq lowshelf:120:-2 --eq peak:1k:+3:0.7 --eq highpass:30
  audlmd render song.wav -o ride.wav --automation ride.csv      (lines like 0,-20 and 1:02.5,0)
  audlmd render song.wav -o fast.wav --speed 1.5
  audlmd render song.wav --fade-in 2s --explain)";

void declareRange(CLI::App& app, RenderOptions& options) {
    app.add_flag("--reverse", options.reverse, "Play the range from its last sample to its first")
        ->group("Range");
    app.add_option("--from", options.from, "Start of the range in the input (default: its start)")
        ->option_text("TIME")
        ->group("Range");
    app.add_option("--to", options.to, "End of the range, exclusive (default: the end)")
        ->option_text("TIME")
        ->group("Range");
    app.add_option("--duration", options.duration, "Length of the range, instead of --to")
        ->option_text("TIME")
        ->group("Range");
}

void declareSound(CLI::App& app, RenderOptions& options) {
    app.add_option("--eq", options.equaliser,
                   "Equaliser band such as peak:1k:+3:0.7, up to five times, in this order")
        ->option_text("BAND")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->group("Sound");
    app.add_option("--fade-in", options.fadeIn,
                   "Fade in over the first TIME; curve linear (the default), log or power")
        ->option_text("TIME[:CURVE]")
        ->group("Sound");
    app.add_option("--fade-out", options.fadeOut, "Fade out over the last TIME")
        ->option_text("TIME[:CURVE]")
        ->group("Sound");
    app.add_option("--gain", options.gain, "Middle level, at most +10; -inf is silence")
        ->option_text("DB")
        ->group("Sound");
    app.add_option("--level", options.level, "Outer level, at most +10; not with --automation")
        ->option_text("DB")
        ->group("Sound");
    app.add_option("--automation", options.automation,
                   "Outer level that moves along the lines (time,decibels) of a CSV file")
        ->option_text("FILE")
        ->group("Sound");
    app.add_flag("--automation-reverse", options.automationReverse,
                 "Walk the automation backwards: its times count from the output's end")
        ->group("Sound");
    app.add_option("--speed", options.speed, "Play so many times as fast, the pitch with it")
        ->option_text("S")
        ->group("Sound");
    app.add_option("--converter", options.converter,
                   "filtering (band-limited, the default) or linear (cheap, any speed)")
        ->option_text("NAME")
        ->group("Sound");
}

void declareOutput(CLI::App& app, RenderOptions& options) {
    app.add_option("-o,--output", options.output, "The file to write; may be left out with --explain")
        ->option_text("OUTPUT")
        ->group("Output");
    app.add_option("--format", options.format, "f32, s8, u8, s16, s24, s24in32 or s32")
        ->option_text("FORMAT")
        ->group("Output");
    app.add_option("--mix-into", options.mixInto,
                   "Add to the samples of this file, which is only read, and write the sum to OUTPUT")
        ->option_text("EXISTING")
        ->group("Output");
    app.add_option("--block", options.block, "Samples per render call (default 4096); changes no sample")
        ->option_text("N")
        ->check(CLI::Range(std::size_t{1}, std::size_t{1} << 24))
        ->group("Output");
    app.add_option("--threads", options.threads,
                   "Channels rendered side by side (default: one per processor)")
        ->option_text("N")
        ->check(CLI::Range(1, 1024))
        ->group("Output");
    app.add_flag("--explain", options.explain, "Print mode code, fields, chain, output type and record")
        ->group("Output");
}

} // namespace

void RenderOptions::declare(CLI::App& render) {
    render.add_option("INPUT", input, "A sound file in any format that libsndfile reads")->required();
    declareOutput(render, *this);
    declareRange(render, *this);
    declareSound(render, *this);
    render.footer(renderHelp);
}

void RenderOptions::requireCompatible() const {
    if (output.empty() && !explain)
        throw CommandError("name the file to write with -o, or use --explain alone");
    if (to && duration)
        throw CommandError("--to and --duration cannot stand together: each says where the range ends");
    if (level && automation)
        throw CommandError(
            "--level and --automation cannot stand together: both are the outer level; a fixed "
            "level beside an automation is --gain");
    if (automationReverse && !automation)
        throw CommandError("--automation-reverse needs --automation");
    if (converter && !speed)
        throw CommandError("--converter needs --speed: without it nothing is converted");
    if (equaliser.size() > equaliserBandCount)
        throw CommandError("--eq: " + std::to_string(equaliser.size()) + " bands, but the equaliser has " +
                           std::to_string(equaliserBandCount));
}

} // namespace audlmd::command

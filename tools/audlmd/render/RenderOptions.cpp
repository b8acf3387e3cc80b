#include "tools/audlmd/render/RenderOptions.hpp"

#include "tools/audlmd/CommandError.hpp"

#include <CLI/CLI.hpp>

namespace audlmd::command {
namespace {

constexpr std::size_t mostBlock = std::size_t{1} << 24;

constexpr const char* renderHelp =
    R"(TIMES of --from, --to and --duration are the input's; those of fades and automation are the output's,
as heard. A time is written in seconds (12.5 or 3s), milliseconds (250ms), samples (480000smp) or as a
timecode (1:02.5, 1:00:02.5).

BANDS of --eq are written peak:FREQUENCY:GAIN[:Q], lowshelf:FREQUENCY:GAIN[:Q], highshelf:FREQUENCY:GAIN[:Q],
highpass:FREQUENCY[:Q] or lowpass:FREQUENCY[:Q], in hertz (1k is 1000) and decibels. Without Q it is 0.707.

RATES With --rate the input is converted to the output's rate while it is read, at very high quality and with
its pitch and length as they are; then everything counts samples of the output's rate, smp too.

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
  audlmd render song.wav -o cd.wav --rate 44100 --format s16
  audlmd render song.wav --fade-in 2s --explain)";

} // namespace

void RenderOptions::declare(CLI::App& render) {
    render.add_option("INPUT", input, "A sound file in any format that libsndfile reads")->required();
    declareOutput(render, "The file to write; may be left out with --explain", "the input's", mostBlock);
    render
        .add_option("--mix-into", mixInto,
                    "Add to the samples of this file, which is only read, and write the sum to OUTPUT")
        ->option_text("EXISTING")
        ->group("Output");
    render.add_flag("--explain", explain, "Print mode code, fields, chain, output type and record")
        ->group("Output");
    strip.declareRange(render);
    strip.declareSound(render);
    render.footer(renderHelp);
}

void RenderOptions::requireCompatible() const {
    if (output.empty() && !explain)
        throw CommandError("name the file to write with -o, or use --explain alone");
    strip.requireCompatible();
}

} // namespace audlmd::command

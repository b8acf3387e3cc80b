#include "tools/audlmd/render/RenderOptions.hpp"

#include "tools/audlmd/CommandError.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <system_error>

namespace audlmd::command {
namespace {

constexpr std::size_t mostBlock = std::size_t{1} << 24;

constexpr const char* renderHelp =
    R"(TIMES of --from, --to and --duration are the input's; those of fades and automation are the output's,
as heard. A time is written in seconds (12.5 or 3s), milliseconds (250ms), samples (480000smp), as a clock
(1:02.5, 1:00:02.5) or as timecode with its frame rate (1:00:00:12@25, 1:00:00;12@29.97). --from and --to
count from the end with a minus sign: --from -5s. What is no time is the name of a marker of the input: --from
"verse 2". A --duration beyond the end ends there, with a note.

METADATA are kept as far as the output can: tags in most kinds; in .wav and .rf64 also bext, whose time reference
moves with --from, iXML, markers, and loops of samplers unless speed, direction or rate change; in .aiff markers.
What is not kept is told.

BANDS of --eq are written peak:FREQUENCY:GAIN[:Q], lowshelf:FREQUENCY:GAIN[:Q], highshelf:FREQUENCY:GAIN[:Q],
highpass:FREQUENCY[:Q] or lowpass:FREQUENCY[:Q], in hertz (1k is 1000) and decibels. Without Q it is 0.707.

RATES With --rate the input is converted to the output's rate while it is read, at very high quality and with
its pitch and length as they are; then everything counts samples of the output's rate, smp too. --relabel FROM:TO takes what is FROM in the
input for TO first, so that pitch and length change: 24000/1001:24 pulls up by 0.1 %. Times, markers and the
time reference count in the input as it is taken.

CHANNELS --map takes channels of the input by number or name; --channels then folds them down, or puts them in
the order of a layout: mono, stereo, 3.0, quad, 5.0, 5.1, 6.1, 7.1, 5.1film, 7.1film, 5.1smpte or 7.1smpte.
By ITU-R BS.775 the centre and the surrounds go to left and right at -3 dB, and LFE nowhere; mono is half of
left plus right. Nothing is scaled: leave room with --gain.

MIXES The file of --mix-into has the render's rate, channels and length, and its format where one is given. A
.raw or .pcm file does not tell its format: give it with --format.

LEVELS are floats without limits, which f32 holds as they are. Integers are rounded to the nearest step, and
clipped; the report tells how many samples are over full scale. --dither turns the distortion of rounding into
even noise; use it once, where 24 bits become 16. --truncate gives the bytes that a host gets of the library.

LOUDNESS --loudness and --normalise take one gain over everything, and never a limiter; of several inputs each has
its own. The output is rendered once, into a file without a name beside it (4 bytes a sample), and measured. Where
the true peak, or full scale of integers, is in the way, nothing is written, and the line says what is possible;
--loudness-or-peak takes that.

FILES The output's extension chooses the kind of file:
  .wav .w64 .rf64   u8 s16 s24 s32 f32 (a wav beyond 4 GiB becomes RF64)
  .aiff .au .caf    s8 s16 s24 s32 f32 (an aiff also u8)
  .flac             s8 s16 s24
  .raw .pcm         every format, little-endian and without a header; the only ones that hold s24in32
  .ogg .opus .mp3   encoded with loss, from f32; --format is not for them
Without --format it is that of --mix-into. Else it is the input's, if that is one of these, the output can
hold it, and options only choose a range or --reverse it: the samples are then copied as they are. Else, as
for ogg and mp3, it is f32, or s24 for flac. Pipes and devices (/dev/stdout, -) get headerless samples, or with
--kind wav a header that leaves the length open. The output stands under its name only once it is whole;
whatever was there stays until then.

EXAMPLES
  audlmd render master.wav -o master.flac -o master.mp3       (several, from one pass)
  audlmd render speech.wav -o reversed.wav --reverse
  audlmd render take.wav -o verse.wav --from "verse 2" --to chorus
  audlmd render take.flac -o part.wav --from 1:02.5 --duration 20s --format s24
  audlmd render voice.wav -o mix.wav --mix-into music.wav
  audlmd render song.wav -o faded.wav --fade-in 2s --fade-out 5s:log --gain -3
  audlmd render song.wav -o loud.wav --loudness -23 --true-peak -1
  audlmd render song.wav -o eq.wav --eq lowshelf:120:-2 --eq peak:1k:+3:0.7 --eq highpass:30
  audlmd render song.wav -o ride.wav --automation ride.csv      (lines like 0,-20 and 1:02.5,0)
  audlmd render song.wav -o fast.wav --speed 1.5
  audlmd render song.wav -o cd.wav --rate 44100 --format s16 --dither
  audlmd render film.wav -o pal.wav --relabel 24000/1001:25
  audlmd render one.wav two.wav three.wav -o cd/ --rate 44.1k --format s16
  ffmpeg -i film.mkv -f wav - | audlmd render - -o film.wav --gain -3
  audlmd render song.wav -o mono.wav --channels mono      (or --map L for the left channel alone)
  audlmd render song.wav --fade-in 2s --explain)";

} // namespace

void RenderOptions::declare(CLI::App& render) {
    render.add_option("INPUT", inputs, "A sound file, or a film, which ffmpeg decodes; - is standard input")
        ->required();
    declareInput(render);
    declareRelabel(render);
    declareOutput(render, "The file to write, or a folder for one file per input", {}, mostBlock);
    render.add_option("--suffix", suffix, "Comes behind the names of what is written into a folder")
        ->option_text("TEXT")
        ->group("Output");
    render
        .add_option("--mix-into", mixInto,
                    "Add to the samples of this file, which is only read, and write the sum to OUTPUT")
        ->option_text("EXISTING")
        ->group("Output");
    render.add_flag("--no-metadata", noMetadata, "Leave out the input's tags, bext, iXML, markers and loops")
        ->group("Output");
    render.add_option("--markers", markers, "Write the markers of the output, as CSV")
        ->option_text("FILE.csv")
        ->group("Output");
    render.add_flag("--explain", explain, "Print mode code, fields, chain, output type and record")
        ->group("Output");
    strip.declareRange(render);
    strip.declareSound(render);
    levels.declare(render);
    peaks.declare(render);
    render.footer(renderHelp);
}

void RenderOptions::requireCompatible() const {
    if (outputs.empty() && inputs.size() > 1)
        throw CommandError("name what to write with -o: a folder, or one file as in -o " +
                           inputs.back().string());
    if (outputs.empty() && !explain)
        throw CommandError("name the file to write with -o, or use --explain alone");
    if (inputs.size() > 1 && !isFolder())
        throw CommandError("several inputs go into a folder, and '" + outputs.front().string() +
                           "' is none; end its name with / to make one");
    if (isFolder() && outputs.size() > 1)
        throw CommandError("a folder is the only output; several outputs are files of one input");
    if (!markers.empty() && (outputs.empty() || isFolder() || noMetadata))
        throw CommandError(
            "--markers tells of one output, which has them: name it with -o, without --no-metadata");
    if (!suffix.empty() && !isFolder())
        throw CommandError("--suffix is for outputs in a folder");
    if (mixInto && inputs.size() > 1)
        throw CommandError("--mix-into takes one input");
    if (style.json && explain)
        throw CommandError("--explain is for people, and --json for programs: use one of them");
    if (!peaks.file.empty() && inputs.size() > 1)
        throw CommandError("--peaks takes one input");
    levels.requireCompatible(!outputs.empty());
    peaks.requireCompatible(!outputs.empty());
    if (levels.areGiven() && mixInto)
        throw CommandError(levels.name() +
                           std::string(" and --mix-into cannot stand together: mix first, and "
                                       "render the mix"));
    strip.requireCompatible();
}

RenderedChannel::Through RenderOptions::through() const {
    using enum RenderedChannel::Through;
    return !throughTables ? inlined : truncate && !levels.areGiven() ? outputTypes : tables;
}

bool RenderOptions::isFolder() const {
    std::error_code none;
    return std::ranges::any_of(outputs, [&](const std::filesystem::path& output) {
        return !output.has_filename() || std::filesystem::is_directory(output, none);
    });
}

} // namespace audlmd::command

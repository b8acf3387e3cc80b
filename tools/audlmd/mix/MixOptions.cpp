#include "tools/audlmd/mix/MixOptions.hpp"

#include "host/words/Numbers.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

#include <algorithm>

namespace audlmd::command {
namespace {

constexpr std::int64_t mostSlices = 1'000'000;

constexpr const char* mixHelp =
    R"(TIMELINES are OpenTimelineIO JSON (.otio), its bundles (.otioz, .otiod), or the short JSON of our own that --list --as json writes.
--list shows what sounds when. Notes, in the list and after every mix, say what is not played as it was
written.

MEDIA are found where the timeline says, else by file name below the folders of --media. Films are decoded by
ffmpeg, once (audlmd cache --help tells more); a sound file of a film's name beside it is taken in its place.
"film.mov#stream=2" is the second stream with sound.

SILENCE where the timeline means sound, such as a clip whose medium is missing, is told; the output is
written, and the exit status is 4. With --strict nothing is written.

TIMES of --from, --to and --duration are the output's: seconds (12.5 or 3s), milliseconds (250ms), samples
(480000smp), a clock (1:02.5, 1:00:02.5), timecode with its rate (1:00:00:12@25), or the name of a marker of the
timeline. --slice 2/4 mixes the second of four equal parts of that; the samples of the parts, joined, are the
whole byte for byte.

METADATA of the output are the timeline's name as title, its time reference and its markers, as far as the kind
of file has a place for them.

STEMS are the tracks by themselves, as long as the mix and in the format of its first file, named by number
and track: "01 dialogue.wav". The mix is their sum: in f32 bit for bit, if they are summed in their order.

REVIEWING --page writes a page for a browser: clips with waveforms, the loudness, all that the report tells, and
the mix to listen to, which the page holds itself up to 2 MB and else expects beside it. --watch does everything
again when the timeline or a medium changes, until Ctrl-C.

CHANNELS Media with more channels than the timeline are folded down, and a note says so; so is the mix where
--channels asks for fewer than the timeline itself says. --map takes channels of the mix.

LEVELS are summed without limits. f32 holds the sum as it is; integers are rounded to the nearest step, and
clipped. The report tells how many samples are over full scale, and when. --dither turns the distortion of
rounding into even noise. --truncate gives the bytes that a host gets of the library. One channel goes to both sides at full level: other programs lower it by 3 dB.

EXAMPLES
  audlmd mix voice.wav music.wav -o both.wav       (sound files, from their starts on)
  audlmd mix film.otio -o film.wav --loudness -23 --true-peak -1
  audlmd mix film.otio --list
  audlmd mix film.otio -o film.wav -o film.mp3 --stems stems/
  audlmd mix film.otio -o me.wav --mute dialogue narrator
  audlmd mix film.otio -o film.wav --format s16 --dither
  audlmd mix film.otio -o film.wav --media /archive/sound --report film.json --picture film.png
  audlmd mix film.otio --list --as json > film.json      (edit it, and mix it)
  audlmd mix film.otio -o film.flac --page film.html --watch
  audlmd mix film.json -o reel2.wav --from 20:00 --to 40:00
  audlmd mix film.json -o part3.wav --slice 3/8)";

void declarePart(CLI::App& mix, MixOptions& options) {
    options.range.declare(mix, "Part", "the output");
    mix.add_flag("--until-last-sound", options.untilLastSound,
                 "End with the last sound (default: with the programme, pictures included)")
        ->group("Part");
    mix.add_option("--timeline", options.timelineName, "Which timeline of a file that holds several")
        ->option_text("NAME")
        ->group("Part");
    addParsed(mix, "--slice", options.slice, &parseSlice, "The K-th of N equal parts")
        ->option_text("K/N")
        ->group("Part");
}

void declareReports(CLI::App& mix, MixOptions& options) {
    mix.add_flag("--list", options.list, "Show what sounds when")->group("Reports");
    mix.add_option("--as", options.as, "The list as text (a table, the default) or json")
        ->check(CLI::IsMember({"text", "json"}))
        ->group("Reports");
    mix.add_option("--report", options.report, "Write what was silent, late or clipped, as JSON")
        ->option_text("FILE.json")
        ->group("Reports");
    mix.add_option("--picture", options.picture, "Draw the timeline, with what went wrong in red")
        ->option_text("FILE")
        ->group("Reports");
    mix.add_option("--page", options.page, "Write a page for a browser: see, hear and review the mix")
        ->option_text("FILE.html")
        ->group("Reports");
    mix.add_flag("--watch", options.watch,
                 "Do it again whenever the timeline or a medium changes, until Ctrl-C")
        ->group("Reports");
    mix.add_option("--markers", options.markers, "Write the markers of the output, as CSV")
        ->option_text("FILE.csv")
        ->group("Reports");
}

} // namespace

Slice parseSlice(std::string_view text, std::string_view option) {
    const std::size_t bar = text.find('/');
    const std::optional<std::int64_t> number = words::wholeIn<std::int64_t>(text.substr(0, bar));
    const std::optional<std::int64_t> count =
        bar == std::string_view::npos ? std::nullopt : words::wholeIn<std::int64_t>(text.substr(bar + 1));
    if (!number || !count || *number < 1 || *number > *count || *count > mostSlices)
        throw CommandError(std::string(option) + ": '" + std::string(text) +
                           "' is not K/N, such as 2/4 for the second of four parts");
    return {.number = *number, .count = *count};
}

void MixOptions::declare(CLI::App& mix) {
    mix.add_option("TIMELINE", inputs, "OpenTimelineIO JSON, or JSON of our own; or sound files, several")
        ->required();
    declareOutput(mix, "The file to write",
                  {.rate = "the timeline's, else 48000", .channels = "the timeline's, else 2"}, mostMixBlock);
    mix.add_flag("--no-metadata", noMetadata, "Leave out the timeline's name, time reference and markers")
        ->group("Output");
    mix.add_option("--stems", stems, "Also write each track into a file of its own in this folder")
        ->option_text("DIR")
        ->group("Output");
    levels.declare(mix);
    peaks.declare(mix);
    declarePart(mix, *this);
    tracks.declare(mix, "Part");
    mix.add_option("--media", media, "Look for missing media below this folder; may be repeated")
        ->option_text("DIR")
        ->check(CLI::ExistingDirectory)
        ->allow_extra_args(false)
        ->group("Media");
    mix.add_flag("--strict", strict, "Write nothing where sound would be missing")->group("Media");
    declareReports(mix, *this);
    mix.footer(mixHelp);
}

void MixOptions::requireCompatible() const {
    if (outputs.empty() && !stems.empty())
        throw CommandError("--stems writes the tracks beside a mix: name the file of the mix with -o");
    if (outputs.empty() && !list && picture.empty() && page.empty() && markers.empty())
        throw CommandError(
            "name the file to write with -o, or use --list, --picture, --page or --markers alone");
    if (outputs.empty() && !report.empty())
        throw CommandError("--report tells about a mix: name the file to write with -o");
    levels.requireCompatible(!outputs.empty());
    peaks.requireCompatible(!outputs.empty());
    if (levels.areGiven() && slice)
        throw CommandError(levels.name() +
                           std::string(" needs the whole, which a --slice does not know: join "
                                       "the slices, and give it to render"));
    if (watch && (list || (outputs.empty() && picture.empty() && page.empty())))
        throw CommandError("--watch writes again and again: name a file with -o, --picture or --page");
    range.requireCompatible();
    if (range.to && untilLastSound)
        throw CommandError("--to and --until-last-sound cannot stand together");
    if (!picture.empty())
        pictureKindOf(picture); // Throws for a name that could not be written.
    if (as == "json" && !list)
        throw CommandError("--as json is for --list; --json tells programs about a mix");
    if (style.json && list)
        throw CommandError("--json is for a mix; the list is JSON with --as json");
}

std::pair<TimelineSpan, std::string> MixOptions::wholeOf(const Timeline& timelineToMix) const {
    TimelineSample end = TimelineSample() + timelineToMix.length;
    if (untilLastSound)
        end = std::min(endOfSound(timelineToMix), end);
    const ResolvedRange part = range.in({.name = "the timeline",
                                         .length = end.number(),
                                         .sampleRate = timelineToMix.sampleRate,
                                         .markers = markersOf(timelineToMix)});
    return {{.from = part.from, .to = part.to}, part.note};
}

TimelineSpan MixOptions::sliceOf(TimelineSpan whole) const {
    TimelineSpan span = whole;
    if (slice) {
        // A part at a time, because the product of a length and a number may overflow.
        const std::int64_t length = whole.length();
        const auto border = [&](std::int64_t number) {
            return whole.from + length / slice->count * number +
                   length % slice->count * number / slice->count;
        };
        span = {.from = border(slice->number - 1), .to = border(slice->number)};
    }
    if (span.isEmpty())
        throw CommandError("there is nothing to mix from sample " + std::to_string(span.from.number()) +
                           " to sample " + std::to_string(span.to.number()));
    return span;
}

} // namespace audlmd::command

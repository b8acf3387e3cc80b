#include "tools/audlmd/play/PlayOptions.hpp"

#include "host/signal/Speed.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"
#include "tools/audlmd/play/TransportKeys.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace audlmd::command {
namespace {

constexpr const char* playHelp =
    R"(
Without a terminal, and in the background, the command plays to the end and ends. On a terminal it stays
at the end of the last input.

LEVELS What is beyond full scale is clipped for the device, shown in red (without NO_COLOR), and told at the
end. The status line shows the largest peak of the last second.

TIMELINES are those of mix (.otio, .otioz, .otiod, .json), with --speed, --reverse, --from, --gain, --only and
--mute as their only options.
Their times are shown in frames, where they have a frame rate: --from takes them as they are shown, with the
@ and the rate. SOUND FILES have the sound options of render; --speed and --reverse say how the transport
starts, and fades and automation then lie as render lays them. Speeds beyond the band-limited converter are
played by the linear one. With --converter best the transport's normal speed is that of --speed.

UNDERRUNS are counted apart: late samples were not read from the disk in time, and are silent; starved frames
were not rendered in time; the device counts how often it had to play on without us. More --latency helps
against both.

EXAMPLES
  audlmd play take.flac
  audlmd play take1.wav take2.wav take3.wav
  audlmd play take.flac --from 1:02.5 --reverse
  audlmd play song.wav --eq peak:1k:+3:0.7 --speed 1.1
  audlmd play film.otio --media /archive/sound --gain -6 --device "USB Audio")";
void declareDevice(CLI::App& play, PlayOptions& options) {
    play.add_option("--device", options.device, "Name of the sound device, or a part of it")
        ->option_text("NAME")
        ->group("Device");
    play.add_flag("--list-devices", options.listDevices, "List the sound devices; * is the default one")
        ->group("Device");
    options.declareRendering(play, "Device", {});
    play.add_option("--block", options.block, "Frames that the device asks for at a time (default 256)")
        ->option_text("N")
        ->check(CLI::Range(16, 16384))
        ->group("Device");
    play.add_option("--latency", options.latency,
                    "From rendering to the loudspeaker, in milliseconds (default 80)")
        ->option_text("MS")
        ->check(numberBetween(10.0, 2000.0))
        ->group("Device");
}

} // namespace

void PlayOptions::declare(CLI::App& play) {
    play.add_option("INPUT", inputs,
                    "Sound files, films and timelines; the content decides; - is sound on standard input");
    declareInput(play);
    declareRelabel(play);
    declareDevice(play, *this);
    play.add_option("--media", media, "A folder in which a timeline's media are looked for")
        ->option_text("FOLDER")
        ->group("Input");
    tracks.declare(play, "Input");
    addParsed(
        play, "--from", from, &TimeValue::parseMoment,
        "Where playing starts in the first input (default: its start), also a marker's name; -5s counts from "
        "the end")
        ->option_text("TIME")
        ->group("Range");
    play.add_flag("--reverse", strip.reverse, "Start backwards, from the end or from --from")->group("Range");
    strip.declareSound(play);
    play.footer("KEYS on a terminal:\n" + std::string(TransportKeys::help) + "\n" + playHelp);
}

void PlayOptions::requireCompatible() const {
    if (inputs.empty() && !listDevices)
        throw CommandError("name a sound file or a timeline to play");
    strip.requireCompatible();
    // Without --converter the transport takes the linear converter by itself.
    if (strip.converter == Converter::filtering)
        requireFilteringSpeed(strip.speed->factor);
    const bool isForSounds = !strip.equaliser.empty() || strip.fadeIn || strip.fadeOut || strip.level ||
                             strip.automation || strip.converter || decoding.stream || relabel;
    const auto timeline = std::ranges::find_if(inputs, &isTimelineFile);
    if (timeline != inputs.end() && isForSounds)
        throw CommandError(words::quoted(timeline->string()) +
                           " is a timeline, which has its own levels, fades and equalisers: only --speed, "
                           "--reverse, --from and --gain go with a timeline");
    if (timeline == inputs.end() && !inputs.empty() && !media.empty())
        throw CommandError("--media goes with a timeline");
    if (timeline == inputs.end() && !inputs.empty() && !tracks.isEmpty())
        throw CommandError("--only and --mute go with a timeline");
}

double PlayOptions::speed() const {
    const double factor = strip.speed ? strip.speed->factor : 1.0;
    return strip.reverse ? -factor : factor;
}

bool PlayOptions::changesConverter() const {
    return !strip.converter && !isFilteringSpeed(strip.speed ? strip.speed->factor : 1.0);
}

} // namespace audlmd::command

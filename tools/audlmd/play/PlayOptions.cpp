#include "tools/audlmd/play/PlayOptions.hpp"

#include "host/signal/Speed.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

#include <CLI/CLI.hpp>

namespace audlmd::command {
namespace {

constexpr const char* playHelp =
    R"(KEYS on a terminal:
  space            play and stop
  J K L            shuttle backwards, stop, shuttle forwards: 1, 2, 4 and 8 times the speed on repeated
                   presses; a fast shuttle steps down before it turns
  , .              a frame (1/25 s) back and forth; while stopped the frame is heard
  arrows           a second back and forth; Home and End
  I O X            start and end of a loop; no loop
  + -              the level
  Q                ends the command
Without a terminal, and in the background, the command plays to the end and ends.

TIMELINES are those of mix (.otio, .json), with speed, direction and start as their only options. SOUND FILES
have the sound options of render; --speed and --reverse say how the transport starts, and fades and automation
then lie as render lays them.

UNDERRUNS are counted apart: late samples were not read from the disk in time, and are silent; starved frames
were not rendered in time; the device counts how often it had to play on without us. More --latency helps
against both.

EXAMPLES
  audlmd play take.flac
  audlmd play take.flac --from 1:02.5 --reverse
  audlmd play song.wav --eq peak:1k:+3:0.7 --speed 1.1
  audlmd play film.otio --media /archive/sound --device "USB Audio")";

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
    play.add_option("INPUT", input,
                    "A sound file or a timeline; the content decides; - is sound on standard input");
    declareInput(play);
    declareDevice(play, *this);
    play.add_option("--media", media, "A folder in which a timeline's media are looked for")
        ->option_text("FOLDER")
        ->group("Input");
    addParsed(play, "--from", from, &TimeValue::parseMoment,
              "Where playing starts (default: the start), also a marker's name; -5s counts from the end")
        ->option_text("TIME")
        ->group("Range");
    play.add_flag("--reverse", strip.reverse, "Start backwards, from the end or from --from")->group("Range");
    strip.declareSound(play);
    play.footer(playHelp);
}

void PlayOptions::requireCompatible() const {
    if (input.empty() && !listDevices)
        throw CommandError("name a sound file or a timeline to play");
    strip.requireCompatible();
    // Without --converter the transport takes the linear converter by itself.
    if (strip.converter == Converter::filtering)
        requireFilteringSpeed(strip.speed->factor);
    const bool playsTimeline = isTimeline();
    if (playsTimeline && (!strip.equaliser.empty() || strip.fadeIn || strip.fadeOut || strip.gain ||
                          strip.level || strip.automation || strip.converter))
        throw CommandError("a timeline has its own levels, fades and equalisers: only --speed, --reverse and "
                           "--from go with a timeline");
    if (!playsTimeline && !media.empty())
        throw CommandError("--media goes with a timeline");
}

bool PlayOptions::isTimeline() const {
    return isTimelineFile(input);
}

double PlayOptions::speed() const {
    const double factor = strip.speed ? strip.speed->factor : 1.0;
    return strip.reverse ? -factor : factor;
}

} // namespace audlmd::command

#include "host/services/SampleRates.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/cache/DecodingOptions.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/options/AutomationFile.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"
#include "tools/audlmd/options/Parsers.hpp"
#include "tools/audlmd/plot/Figures.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace audlmd::command {

using namespace plot;

namespace {

constexpr const char* plotHelp =
    R"(The output's extension, .png or .svg, chooses the kind of picture. What is drawn is what the library
makes of the settings. Options are written as for render. Sound files are drawn with a row for each channel; the
loudness, in LUFS, is that of all channels (audlmd info --help tells more).

EXAMPLES
  audlmd plot curves -o curves.svg
  audlmd plot envelope -o fades.svg --fade-in 2s --fade-out 5s:log --duration 20s --gain -3
  audlmd plot automation ride.csv -o ride.svg
  audlmd plot eq lowshelf:120:-2 peak:1k:+3:0.7 highpass:30 -o eq.svg
  audlmd plot waveform song.wav -o wave.png
  audlmd plot loudness song.wav -o loudness.svg
  audlmd plot spectrogram speech.wav -o speech.png --channel 1)";

/// The options of all kinds of pictures.
struct PlotOptions {
    std::filesystem::path output;
    std::filesystem::path input;
    std::optional<FadeValue> fadeIn;
    std::optional<FadeValue> fadeOut;
    std::optional<float> gain;
    std::optional<float> level;
    std::optional<TimeValue> duration;
    std::vector<NamedBand> bands;
    bool reverse = false;
    /// In samples per second.
    int rate = 48000;
    /// Counted from 1. Not set: all.
    std::optional<int> channel;
    /// In dB.
    double floor = -120.0;

    DecodingOptions decoding;

    /// The length of the picture in samples: the option's, or `samples` without the option.
    std::int64_t durationOr(std::int64_t samples) const {
        const std::int64_t length = duration ? duration->samples(rate) : samples;
        if (length == 0)
            throw CommandError("--duration: there is nothing to draw over no time at all");
        return length;
    }
};

Figure drawEnvelope(const PlotOptions& options, const Watcher& watcher) {
    StripSettings settings;
    FadePlan& fade = settings.fade;
    if (options.fadeIn) {
        fade.fadeInSamples = static_cast<std::uint64_t>(options.fadeIn->length.samples(options.rate));
        fade.fadeInCurve = options.fadeIn->curve;
    }
    if (options.fadeOut) {
        fade.fadeOutSamples = static_cast<std::uint64_t>(options.fadeOut->length.samples(options.rate));
        fade.fadeOutCurve = options.fadeOut->curve;
    }
    settings.middleLevel = options.gain;
    settings.outerLevel = options.level;
    const auto fades = static_cast<std::int64_t>(fade.fadeInSamples + fade.fadeOutSamples);
    const std::int64_t length = options.durationOr(std::max<std::int64_t>(options.rate, fades + fades / 4));
    return envelopeFigure(settings, length, options.rate, watcher);
}

Figure drawAutomation(const PlotOptions& options, const Watcher& watcher) {
    Automation automation(levelNodes(readAutomationFile(options.input), options.rate, 1.0));
    const std::int64_t last = automation.nodes().back().position;
    StripSettings settings;
    settings.automation.emplace(AutomationWalk{std::move(automation), options.reverse
                                                                          ? DynamicLevelDirection::reverse
                                                                          : DynamicLevelDirection::forwards});
    const std::int64_t length = options.durationOr(std::max<std::int64_t>(options.rate, last + last / 20));
    Figure figure = automationFigure(settings, length, options.rate, watcher);
    figure.subtitle =
        words::printable(options.input.filename().string()) + (options.reverse ? ", walked backwards" : "");
    return figure;
}

/// Makes the figure of one kind of picture.
using Draw = std::function<Figure(const PlotOptions&, const Watcher&)>;

/// Runs one kind: draws with a progress bar, and puts the picture in place once it is whole.
void drawToFile(const PlotOptions& options, const Draw& draw) {
    pictureKindOf(options.output); // Throws for a name that could not be written.
    const OutputPath output(options.output);
    if (!options.input.empty())
        requireOther(output, options.input, "the input");
    std::optional<Progress> bar;
    const Figure figure = draw(options, [&](std::int64_t done, std::int64_t all, int sampleRate) {
        if (!bar)
            bar.emplace(all, sampleRate);
        bar->update(done);
    });
    writePicture(figure, output);
}

using SharedOptions = std::shared_ptr<PlotOptions>;

/// Adds one kind of picture: a subcommand with the option that all of them have.
CLI::App* addKind(CLI::App& plot, const SharedOptions& options, const char* name, const char* description,
                  Draw draw) {
    CLI::App* kind = plot.add_subcommand(name, description);
    kind->add_option("-o,--output", options->output, "The picture to write, .png or .svg")
        ->option_text("OUTPUT")
        ->required();
    kind->callback([options, draw = std::move(draw)] { drawToFile(*options, draw); });
    return kind;
}

void addRate(CLI::App& kind, PlotOptions& options) {
    kind.add_option("--rate", options.rate, "Samples per second (default 48000)")
        ->option_text("HZ")
        ->check(CLI::Range(lowestSampleRate, highestSampleRate));
}

void addDuration(CLI::App& kind, PlotOptions& options, const char* description) {
    addParsed(kind, "--duration", options.duration, &TimeValue::parse, description)->option_text("TIME");
}

void addEnvelope(CLI::App& plot, const SharedOptions& options) {
    CLI::App* kind =
        addKind(plot, options, "envelope", "The gain over time of fades and levels", &drawEnvelope);
    addParsed(*kind, "--fade-in", options->fadeIn, &parseFade,
              "Fade in over the first TIME; curve linear, log or power")
        ->option_text("TIME[:CURVE]");
    addParsed(*kind, "--fade-out", options->fadeOut, &parseFade, "Fade out over the last TIME")
        ->option_text("TIME[:CURVE]");
    addParsed(*kind, "--gain", options->gain, &parseLevel, "Middle level, at most +10; -inf is silence")
        ->option_text("DB");
    addParsed(*kind, "--level", options->level, &parseLevel, "Outer level, at most +10")->option_text("DB");
    addDuration(*kind, *options, "Of the whole range (default: a quarter longer than the fades)");
    addRate(*kind, *options);
}

void addAutomation(CLI::App& plot, const SharedOptions& options) {
    CLI::App* kind =
        addKind(plot, options, "automation", "The level over time of an automation file", &drawAutomation);
    kind->add_option("FILE", options->input, "A CSV file of time,decibels")->required();
    kind->add_flag("--automation-reverse", options->reverse, "Walk the automation backwards");
    addDuration(*kind, *options, "Of the picture (default: a little longer than the automation)");
    addRate(*kind, *options);
}

void addEqualiser(CLI::App& plot, const SharedOptions& options) {
    CLI::App* kind =
        addKind(plot, options, "eq", "The frequency response of equaliser bands",
                [](const PlotOptions& o, const Watcher&) { return equaliserFigure(o.bands, o.rate); });
    // Messages name the subcommand, because the bands have no option.
    const auto parseNamedBand = [](std::string_view text, std::string_view /*option*/) {
        return NamedBand{std::string(text), parseBand(text, "eq")};
    };
    addParsed(*kind, "BAND", options->bands, parseNamedBand,
              "Up to five of peak:FREQUENCY:GAIN[:Q], lowshelf:F:G[:Q], highshelf:F:G[:Q], "
              "highpass:F[:Q], lowpass:F[:Q]; hertz (1k = 1000) and dB")
        ->required()
        ->expected(1, static_cast<int>(equaliserBandCount));
    addRate(*kind, *options);
}

/// Draws what the input plays, and names it in the picture and in what may fail.
Figure drawSound(const PlotOptions& options,
                 const std::function<Figure(const std::filesystem::path&)>& draw) {
    const PlayableFile file = options.decoding.playable(options.input, options.decoding.stream, {});
    if (!file.note.empty())
        std::puts(("note: " + file.note).c_str());
    try {
        Figure figure = draw(file.path);
        figure.title = words::printable(options.input.filename().string());
        return figure;
    } catch (const CommandError& error) {
        std::string line = error.what();
        if (const std::size_t at = line.find(file.path.string()); at != std::string::npos)
            line.replace(at, file.path.string().size(), options.input.string());
        throw CommandError(line, error.status());
    }
}

/// Adds a kind of picture of a sound file.
CLI::App* addSound(CLI::App& plot, const SharedOptions& options, const char* name, const char* description,
                   Draw draw) {
    CLI::App* kind = addKind(plot, options, name, description, std::move(draw));
    kind->add_option("FILE", options->input, "A sound file, or a film")->required();
    options->decoding.declareStream(*kind, "Options");
    options->decoding.declareCache(*kind, "Options");
    return kind;
}

void addChannel(CLI::App& kind, PlotOptions& options) {
    kind.add_option("--channel", options.channel, "One alone, counted from 1 (default: all)")
        ->option_text("N");
}

void addSounds(CLI::App& plot, const SharedOptions& options) {
    addChannel(*addSound(plot, options, "waveform", "Peaks and RMS over time of a sound file",
                         [](const PlotOptions& o, const Watcher& watcher) {
                             return drawSound(o, [&](const auto& file) {
                                 return waveformFigure(file, o.channel, watcher);
                             });
                         }),
               *options);
    addSound(plot, options, "loudness", "The loudness over time of a sound file",
             [](const PlotOptions& o, const Watcher& watcher) {
                 return drawSound(o, [&](const auto& file) { return loudnessFigure(file, watcher); });
             });
    CLI::App* spectrogram = addSound(plot, options, "spectrogram", "The spectrum over time of a sound file",
                                     [](const PlotOptions& o, const Watcher& watcher) {
                                         return drawSound(o, [&](const auto& file) {
                                             return spectrogramFigure(file, o.channel, o.floor, watcher);
                                         });
                                     });
    addChannel(*spectrogram, *options);
    spectrogram->add_option("--floor", options->floor, "Level of the darkest colour (default -120)")
        ->option_text("DB")
        ->check(numberBetween(-200.0, -10.0));
}

} // namespace

void addPlotCommand(CLI::App& app) {
    CLI::App* plot =
        app.add_subcommand("plot", "Draw gain curves, fades, automation, an equaliser or a file");
    plot->require_subcommand(1);
    plot->footer(plotHelp);
    const auto options = std::make_shared<PlotOptions>();
    addKind(*plot, options, "curves", "The three gain curves over the u-values of a fader",
            [](const PlotOptions&, const Watcher&) { return curvesFigure(); });
    addEnvelope(*plot, options);
    addAutomation(*plot, options);
    addEqualiser(*plot, options);
    addSounds(*plot, options);
}

} // namespace audlmd::command

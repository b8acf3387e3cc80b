#include "tools/audlmd/plot/PlotCommand.hpp"

#include "standalone/signal/GainLaws.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/SettingsText.hpp"
#include "tools/audlmd/plot/Figures.hpp"
#include "tools/audlmd/plot/PictureFile.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace audlmd::plot {
namespace {

using command::CommandError;

constexpr const char* plotHelp =
    R"(The output's extension, .png or .svg, chooses the kind of picture. What is drawn is what the library
makes of the settings. Options are written as for render.

EXAMPLES
  audlmd plot curves -o curves.svg
  audlmd plot envelope -o fades.svg --fade-in 2s --fade-out 5s:log --duration 20s --gain -3
  audlmd plot automation ride.csv -o ride.svg
  audlmd plot eq lowshelf:120:-2 peak:1k:+3:0.7 highpass:30 -o eq.svg
  audlmd plot spectrogram speech.wav -o speech.png)";

/// `plot` as it was written.
struct PlotOptions {
    std::filesystem::path output;
    std::filesystem::path input;
    std::optional<std::string> fadeIn;
    std::optional<std::string> fadeOut;
    std::optional<std::string> gain;
    std::optional<std::string> level;
    std::optional<std::string> duration;
    std::vector<std::string> bands;
    bool reverse = false;
    int rate = 48000;
    int channel = 1;
    double floor = -120.0;

    /// In samples.
    std::int64_t durationOr(std::int64_t samples) const {
        const std::int64_t length =
            duration ? command::TimeValue::parse(*duration, "--duration").samples(rate) : samples;
        if (length == 0)
            throw CommandError("--duration: there is nothing to draw over no time at all");
        return length;
    }
};

Figure drawEnvelope(const PlotOptions& options, const Watcher& watcher) {
    StripSettings settings;
    FadePlan& fade = settings.fade;
    if (options.fadeIn) {
        const command::FadeText text = command::parseFade(*options.fadeIn, "--fade-in");
        fade.fadeInSamples = static_cast<std::uint64_t>(text.length.samples(options.rate));
        fade.fadeInCurve = text.curve;
    }
    if (options.fadeOut) {
        const command::FadeText text = command::parseFade(*options.fadeOut, "--fade-out");
        fade.fadeOutSamples = static_cast<std::uint64_t>(text.length.samples(options.rate));
        fade.fadeOutCurve = text.curve;
    }
    if (options.gain)
        settings.middleLevel = command::parseLevel(*options.gain, "--gain");
    if (options.level)
        settings.outerLevel = command::parseLevel(*options.level, "--level");
    const auto fades = static_cast<std::int64_t>(fade.fadeInSamples + fade.fadeOutSamples);
    const std::int64_t length = options.durationOr(std::max<std::int64_t>(options.rate, fades + fades / 4));
    return envelopeFigure(settings, length, options.rate, watcher);
}

Figure drawAutomation(const PlotOptions& options, const Watcher& watcher) {
    const auto points = command::readAutomationFile(options.input);
    Automation automation(command::levelNodes(points, options.rate, 1.0));
    const std::int64_t last = automation.nodes().back().position;
    StripSettings settings;
    settings.automation.emplace(AutomationWalk{std::move(automation), options.reverse
                                                                          ? DynamicLevelDirection::reverse
                                                                          : DynamicLevelDirection::forwards});
    const std::int64_t length = options.durationOr(std::max<std::int64_t>(options.rate, last + last / 20));
    Figure figure = automationFigure(settings, length, options.rate, watcher);
    figure.subtitle = options.input.filename().string() + (options.reverse ? ", walked backwards" : "");
    return figure;
}

Figure drawEqualiser(const PlotOptions& options, const Watcher&) {
    std::vector<NamedBand> bands;
    for (const std::string& text : options.bands)
        bands.push_back({text, command::parseBand(text, "eq")});
    return equaliserFigure(bands, options.rate);
}

/// One kind of picture: a subcommand with the options that all of them have.
CLI::App* addKind(CLI::App& plot, const std::shared_ptr<PlotOptions>& options, const char* name,
                  const char* description, std::function<Figure(const PlotOptions&, const Watcher&)> draw) {
    CLI::App* kind = plot.add_subcommand(name, description);
    kind->add_option("-o,--output", options->output, "The picture to write, .png or .svg")
        ->option_text("OUTPUT")
        ->required();
    kind->callback([options, draw = std::move(draw)] {
        const PictureKind pictureKind = pictureKindOf(options->output);
        std::optional<command::Progress> bar;
        const Figure figure = draw(*options, [&](std::int64_t done, std::int64_t all, int sampleRate) {
            if (!bar)
                bar.emplace(all, sampleRate);
            bar->update(done);
        });
        writePictureFile(options->output, drawFigure(figure, pictureKind));
    });
    return kind;
}

void addRate(CLI::App& kind, PlotOptions& options) {
    kind.add_option("--rate", options.rate, "Samples per second (default 48000)")
        ->option_text("HZ")
        ->check(CLI::Range(1000, 1000000));
}

void addDuration(CLI::App& kind, PlotOptions& options, const char* description) {
    kind.add_option("--duration", options.duration, description)->option_text("TIME");
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

    CLI::App* envelope =
        addKind(*plot, options, "envelope", "The gain over time of fades and levels", &drawEnvelope);
    envelope
        ->add_option("--fade-in", options->fadeIn, "Fade in over the first TIME; curve linear, log or power")
        ->option_text("TIME[:CURVE]");
    envelope->add_option("--fade-out", options->fadeOut, "Fade out over the last TIME")
        ->option_text("TIME[:CURVE]");
    envelope->add_option("--gain", options->gain, "Middle level, at most +10; -inf is silence")
        ->option_text("DB");
    envelope->add_option("--level", options->level, "Outer level, at most +10")->option_text("DB");
    addDuration(*envelope, *options, "Of the whole range (default: a quarter longer than the fades)");
    addRate(*envelope, *options);

    CLI::App* automation =
        addKind(*plot, options, "automation", "The level over time of an automation file", &drawAutomation);
    automation->add_option("FILE", options->input, "A CSV file of time,decibels")->required();
    automation->add_flag("--automation-reverse", options->reverse, "Walk the automation backwards");
    addDuration(*automation, *options, "Of the picture (default: a little longer than the automation)");
    addRate(*automation, *options);

    CLI::App* equaliser =
        addKind(*plot, options, "eq", "The frequency response of equaliser bands", &drawEqualiser);
    equaliser
        ->add_option("BAND", options->bands,
                     "Up to five of peak:FREQUENCY:GAIN[:Q], lowshelf:F:G[:Q], highshelf:F:G[:Q], "
                     "highpass:F[:Q], lowpass:F[:Q]; hertz (1k = 1000) and dB")
        ->required()
        ->expected(1, static_cast<int>(equaliserBandCount));
    addRate(*equaliser, *options);

    CLI::App* spectrogram = addKind(*plot, options, "spectrogram", "The spectrum over time of a sound file",
                                    [](const PlotOptions& o, const Watcher& watcher) {
                                        return spectrogramFigure(o.input, o.channel, o.floor, watcher);
                                    });
    spectrogram->add_option("FILE", options->input, "A sound file in any format that libsndfile reads")
        ->required();
    spectrogram->add_option("--channel", options->channel, "Counted from 1 (default 1)")->option_text("N");
    spectrogram->add_option("--floor", options->floor, "Level of the darkest colour (default -120)")
        ->option_text("DB")
        ->check(CLI::Range(-200.0, -10.0));
}

} // namespace audlmd::plot

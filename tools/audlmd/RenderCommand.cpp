#include "tools/audlmd/RenderCommand.hpp"

#include "standalone/cache/MaterialCache.hpp"
#include "standalone/cache/SoundFile.hpp"
#include "standalone/services/Identities.hpp"
#include "standalone/signal/Speed.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Explain.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/RenderJob.hpp"
#include "tools/audlmd/RenderOptions.hpp"
#include "tools/audlmd/SettingsText.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <thread>

namespace audlmd::command {
namespace {

using Players = std::vector<std::unique_ptr<StripPlayer>>;

std::optional<FormatId> wantedFormat(const RenderOptions& options) {
    if (!options.format)
        return std::nullopt;
    std::string names;
    for (const OutputFormat& format : outputFormats) {
        if (format.name == *options.format)
            return format.id;
        names += (names.empty() ? "" : ", ") + std::string(format.name);
    }
    throw CommandError("--format: '" + *options.format + "' is not a format; use one of " + names);
}

void readRange(const RenderOptions& options, const SoundFile& input, StripSettings& settings) {
    const std::int64_t frames = input.frames();
    const auto position = [&](const std::optional<std::string>& text, const char* option,
                              std::int64_t otherwise) {
        return text ? TimeValue::parse(*text, option).samples(input.sampleRate()) : otherwise;
    };
    const auto requireInside = [&](const char* what, std::int64_t sample) {
        if (sample > frames)
            throw CommandError(std::string(what) + " is at sample " + std::to_string(sample) + ", outside '" +
                               input.path().string() + "', which ends at sample " + std::to_string(frames));
    };
    settings.from = position(options.from, "--from", 0);
    requireInside("--from", settings.from);
    if (options.duration) {
        const std::int64_t length = position(options.duration, "--duration", 0);
        // Also keeps the sum from overflowing.
        requireInside("the end of --duration",
                      std::max(length, length <= frames ? settings.from + length : 0));
        settings.to = settings.from + length;
    } else {
        settings.to = position(options.to, "--to", frames);
        requireInside("--to", settings.to);
    }
    if (settings.from >= settings.to)
        throw CommandError("the range from sample " + std::to_string(settings.from) + " to " +
                           std::to_string(settings.to) + " holds nothing to render");
    settings.reverse = options.reverse;
}

void readSpeed(const RenderOptions& options, StripSettings& settings) {
    if (!options.speed)
        return;
    const std::string name = options.converter.value_or("filtering");
    if (name != "filtering" && name != "linear")
        throw CommandError("--converter: '" + name + "' is not a converter; use filtering or linear");
    settings.converter = name == "linear" ? Converter::linear : Converter::filtering;
    settings.speed = parseNumber(*options.speed, "--speed");
    if (!std::isfinite(settings.speed) || settings.speed <= 0.0)
        throw CommandError("--speed: " + *options.speed +
                           " is not a finite number above 0; --reverse plays backwards");
    requireSpeed(settings.speed);
}

/// Times are as heard, so that a fade lasts as long as it says at any speed.
std::uint64_t readFade(const std::optional<std::string>& text, const char* option, int sampleRate,
                       double speed, FadeCurve& curve) {
    if (!text)
        return 0;
    const FadeText fade = parseFade(*text, option);
    curve = fade.curve;
    const double length = std::round(static_cast<double>(fade.length.samples(sampleRate)) * speed);
    if (length < 1.0)
        throw CommandError(std::string(option) + ": " + fade.length.text() + " is shorter than one sample");
    if (!(length < 0x1p62))
        throw CommandError(std::string(option) + ": " + fade.length.text() + " is longer than the range");
    return static_cast<std::uint64_t>(length);
}

StripSettings readSettings(const RenderOptions& options, const SoundFile& input) {
    StripSettings settings;
    settings.sampleRate = input.sampleRate();
    readRange(options, input, settings);
    readSpeed(options, settings);
    const double speed =
        settings.converter == Converter::filtering ? filteringSpeedInForce(settings.speed) : settings.speed;
    for (const std::string& band : options.equaliser)
        settings.equaliser.push_back(parseBand(band, "--eq"));
    FadePlan& fade = settings.fade;
    fade.fadeInSamples = readFade(options.fadeIn, "--fade-in", input.sampleRate(), speed, fade.fadeInCurve);
    fade.fadeOutSamples =
        readFade(options.fadeOut, "--fade-out", input.sampleRate(), speed, fade.fadeOutCurve);
    if (options.gain)
        settings.middleLevel = parseLevel(*options.gain, "--gain");
    if (options.level)
        settings.outerLevel = parseLevel(*options.level, "--level");
    if (options.automation)
        settings.automation = AutomationWalk{
            Automation(levelNodes(readAutomationFile(*options.automation), input.sampleRate(), speed)),
            options.automationReverse ? WalkDirection::backwards : WalkDirection::forwards};
    return settings;
}

void requireOther(const OutputTarget& target, const std::filesystem::path& path, const char* what) {
    std::error_code different;
    if (!target.isStream && std::filesystem::equivalent(target.path, path, different))
        throw CommandError("'" + target.path.string() + "' is the " + what +
                           "; name another file to write with -o");
}

/// One render from its options to its last line.
class Render {
public:
    explicit Render(const RenderOptions& options) : options_(options) { options.requireCompatible(); }

    void run() {
        const std::optional<FormatId> wanted = wantedFormat(options_);
        if (!options_.output.empty())
            openTarget();
        openInput();
        makePlayers();
        layOut(wanted);
        if (options_.explain)
            std::fputs(explain(*players_.front(), layout_.format, existing_.has_value()).c_str(), report());
        noteLimitedSpeed();
        if (target_)
            renderToFile();
    }

private:
    /// Standard output, unless the samples go there.
    FILE* report() const { return target_ && target_->isStandardOutput ? stderr : stdout; }

    void openTarget() {
        target_.emplace(options_.output);
        requireOther(*target_, options_.input, "input");
        if (options_.mixInto)
            requireOther(*target_, *options_.mixInto, "file that is mixed into, which is never changed");
    }

    void openInput() {
        input_ = std::make_shared<SoundFile>(options_.input);
        if (input_->frames() == 0)
            throw CommandError("'" + options_.input.string() + "' holds no samples");
    }

    void makePlayers() {
        StripSettings settings = readSettings(options_, *input_);
        // Signals are left to this thread.
        const EndingSignalsBlocked blocked;
        cache_ = std::make_unique<MaterialCache>();
        const Orv::UUID material = makeUuid();
        for (int channel = 0; channel < input_->channels(); ++channel) {
            settings.cookie = Cookie{material, static_cast<std::uint16_t>(channel), 0};
            cookies_.push_back(settings.cookie);
            cache_->add(settings.cookie, std::make_shared<SoundFileSource>(input_, channel));
            players_.push_back(std::make_unique<StripPlayer>(*cache_, settings));
        }
    }

    void layOut(std::optional<FormatId> wanted) {
        layout_.channels = input_->channels();
        layout_.sampleRate = input_->sampleRate();
        layout_.frames = static_cast<std::int64_t>(players_.front()->outputLength());
        layout_.format = wanted.value_or(target_ ? defaultFormatOf(*target_->container) : FormatId::f32);
        if (options_.mixInto) {
            existing_.emplace(*options_.mixInto, wanted, layout_);
            layout_.format = existing_->format();
        }
    }

    void noteLimitedSpeed() const {
        const StripPlayer& player = *players_.front();
        if (player.speedIsLimited())
            std::fprintf(stderr,
                         "audlmd: note: the filtering converter plays at %g times the speed, not at %s; the "
                         "setting AudioPlaybackSpeedLimit and --converter linear allow more\n",
                         player.speedInForce(), options_.speed->c_str());
    }

    void renderToFile() {
        OutputFile output(*target_, layout_);
        const std::size_t threads =
            options_.threads != 0 ? options_.threads : std::max(1U, std::thread::hardware_concurrency());
        RenderJob job(players_, layout_, existing_ ? &*existing_ : nullptr, {options_.block, threads});
        RenderSummary summary{layout_.frames, layout_.channels, layout_.sampleRate, 0.0, 0, 0};
        {
            Progress progress(layout_.frames, layout_.sampleRate);
            job.run(output, [&](std::int64_t done) {
                requireWholeInput();
                progress.update(done);
            });
            output.commit();
            summary.seconds = progress.elapsed();
        }
        for (const Cookie& cookie : cookies_) {
            const MaterialStatistics statistics = cache_->statistics(cookie);
            summary.underrunSamples += statistics.underrunSamples;
            summary.underrunEpisodes += statistics.underrunEpisodes;
        }
        std::fprintf(report(), "%s\n", summary.line().c_str());
    }

    /// A segment that cannot be read is silence to the renderer, but no render.
    void requireWholeInput() const {
        for (const Cookie& cookie : cookies_)
            if (const MaterialStatistics statistics = cache_->statistics(cookie);
                statistics.failedSegments != 0)
                throw CommandError(statistics.firstFailure);
    }

    const RenderOptions& options_;
    std::optional<OutputTarget> target_;
    std::shared_ptr<SoundFile> input_;
    std::unique_ptr<MaterialCache> cache_;
    std::vector<Cookie> cookies_;
    Players players_;
    std::optional<ExistingMix> existing_;
    OutputLayout layout_;
};

} // namespace

void addRenderCommand(CLI::App& app) {
    CLI::App* render =
        app.add_subcommand("render", "Render a sound file, or a range of it, into another one");
    const auto options = std::make_shared<RenderOptions>();
    options->declare(*render);
    render->callback([options] { Render(*options).run(); });
}

} // namespace audlmd::command

#include "host/cache/MaterialCache.hpp"
#include "host/cache/SoundFile.hpp"
#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/mix/ConvertedSources.hpp"
#include "host/services/Identities.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/OverloadText.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/modes/ModeText.hpp"
#include "tools/audlmd/render/RenderJob.hpp"
#include "tools/audlmd/render/RenderOptions.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <thread>

namespace audlmd::command {
namespace {

/// A render reads its material once, so the cache needs room only for a few segments of each channel. A small
/// cache uses its memory again while that is still in the processor's caches.
MaterialCacheOptions cacheOptions(int channels) {
    constexpr std::size_t segmentsPerChannel = 8;
    MaterialCacheOptions options;
    const std::size_t room = segmentsPerChannel * static_cast<std::size_t>(channels) *
                             static_cast<std::size_t>(options.segmentLength) * sizeof(float);
    options.memoryBudget = std::min(options.memoryBudget, room);
    return options;
}

/// One render, from the options to the last line of the report.
class Render {
public:
    explicit Render(const RenderOptions& options) : options_(options) { options.requireCompatible(); }

    void run() {
        if (!options_.output.empty())
            openTarget();
        openInput();
        makePlayers();
        layOut();
        if (options_.explain)
            std::fputs(explain(*players_.front(), layout_.format, existing_.has_value()).c_str(), report());
        if (target_)
            renderToFile();
    }

private:
    /// Where the report goes: standard output, or standard error if the samples go to a stream.
    FILE* report() const { return target_ && target_->isStream ? stderr : stdout; }

    /// Before the input is read, so that a wrong output is refused at once.
    void openTarget() {
        target_.emplace(options_.output);
        requireOther(*target_, options_.input, "the input");
        if (options_.mixInto)
            requireOther(*target_, *options_.mixInto, "the file that is mixed into, which is never changed");
        if (options_.strip.automation)
            requireOther(*target_, *options_.strip.automation, "the automation");
    }

    void openInput() {
        input_ = std::make_shared<SoundFile>(options_.input);
        if (input_->frames() == 0)
            throw CommandError("'" + options_.input.string() + "' holds no samples");
    }

    int outputRate() const { return options_.rate.value_or(input_->sampleRate()); }

    void makePlayers() {
        std::vector<std::shared_ptr<SampleSource>> channels;
        channels.reserve(static_cast<std::size_t>(input_->channels()));
        for (int channel = 0; channel < input_->channels(); ++channel)
            channels.push_back(convertedTo(std::make_shared<SoundFileSource>(input_, channel),
                                           input_->sampleRate(), outputRate()));
        StripSettings settings = options_.strip.settingsFor(
            {.path = input_->path(), .frames = channels.front()->length(), .sampleRate = outputRate()});
        // The threads that the cache starts leave the signals to this thread.
        const EndingSignalsBlocked blocked;
        cache_ = std::make_unique<MaterialCache>(cacheOptions(input_->channels()));
        const Orv::UUID material = makeUuid();
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            settings.cookie = Cookie{material, static_cast<std::uint16_t>(channel), 0};
            cookies_.push_back(settings.cookie);
            cache_->add(settings.cookie, channels[channel]);
            players_.push_back(std::make_unique<StripPlayer>(
                *cache_, settings, options_.throughTables ? nullptr : &inlinedRenderFunction));
        }
    }

    /// Settles the format and size of the output. Without --format, the existing mix or the kind of file
    /// decides.
    void layOut() {
        layout_.channels = input_->channels();
        layout_.sampleRate = outputRate();
        layout_.frames = static_cast<std::int64_t>(players_.front()->outputLength());
        layout_.format = options_.format.value_or(target_ ? defaultFormatOf(*target_->kind) : FormatId::f32);
        if (options_.mixInto) {
            existing_.emplace(*options_.mixInto, options_.format, layout_);
            layout_.format = existing_->format();
        }
    }

    void renderToFile() {
        OutputFile output(*target_, layout_);
        const std::size_t threads =
            options_.threads != 0 ? options_.threads : std::max(1U, std::thread::hardware_concurrency());
        RenderJob job(players_, layout_, existing_ ? &*existing_ : nullptr, {options_.block, threads},
                      options_.throughTables ? RenderJob::Through::tables : RenderJob::Through::inlined);
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
        tellClipped(job);
        std::fprintf(report(), "%s\n", summary.line().c_str());
    }

    /// In the words of a mix. The library does not tell what it clips, so through the tables nobody knows
    /// which of the samples at full scale were louder.
    void tellClipped(const RenderJob& job) const {
        for (std::size_t channel = 0; channel < job.clipped().size(); ++channel) {
            const RenderJob::Clipped& clipped = job.clipped()[channel];
            const std::string line =
                options_.throughTables
                    ? channelOverloadLine("clipped or at full scale", channel, clipped.atLimits,
                                          layout_.sampleRate)
                    : channelOverloadLine("clipped", channel, clipped.meter.overload(), layout_.sampleRate);
            std::fputs(line.c_str(), report());
        }
    }

    /// Throws CommandError if a segment could not be read: the library renders such a segment as silence.
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
    std::vector<std::unique_ptr<StripPlayer>> players_;
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

#include "host/cache/MaterialCache.hpp"
#include "host/services/Identities.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/OverloadText.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/modes/ModeText.hpp"
#include "tools/audlmd/render/RenderOptions.hpp"
#include "tools/audlmd/render/RenderedChunks.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <thread>

namespace audlmd::command {
namespace {

/// A render reads its material once, so the cache needs room only for a few segments of each channel. A small
/// cache uses its memory again while that is still in the processor's caches.
MaterialCacheOptions cacheOptions(std::size_t channels) {
    constexpr std::size_t segmentsPerChannel = 8;
    MaterialCacheOptions options;
    const std::size_t room =
        segmentsPerChannel * channels * static_cast<std::size_t>(options.segmentLength) * sizeof(float);
    options.memoryBudget = std::min(options.memoryBudget, room);
    return options;
}

/// One render, from the options to the last line of the report.
class Render {
public:
    explicit Render(const RenderOptions& options) : options_(options), outputs_(options.output) {}

    void run() {
        requireOtherOutput();
        makePlayers();
        layOut();
        if (options_.explain)
            std::fputs(explain(*players_.front(), layout_.format, existing_.has_value()).c_str(),
                       outputs_.report());
        if (outputs_.sound())
            renderToFile();
    }

private:
    /// Before the input is read, so that a wrong output is refused at once.
    void requireOtherOutput() const {
        outputs_.requireOther(options_.input, "the input");
        if (options_.mixInto)
            outputs_.requireOther(*options_.mixInto, "the file that is mixed into, which is never changed");
        if (options_.strip.automation)
            outputs_.requireOther(*options_.strip.automation, "the automation");
    }

    void makePlayers() {
        const Media input = options_.open(options_.input);
        StripSettings settings = options_.strip.settingsFor({.path = options_.input,
                                                             .frames = input.channels.front()->length(),
                                                             .sampleRate = input.sampleRate});
        // The threads that the cache starts leave the signals to this thread.
        const EndingSignalsBlocked blocked;
        cache_ = std::make_unique<MaterialCache>(cacheOptions(input.channels.size()));
        const Orv::UUID material = makeUuid();
        for (const std::shared_ptr<SampleSource>& channel : input.channels) {
            settings.cookie = Cookie{material, static_cast<std::uint16_t>(cookies_.size()), 0};
            cookies_.push_back(settings.cookie);
            cache_->add(settings.cookie, channel);
            players_.push_back(std::make_unique<StripPlayer>(*cache_, settings, options_.inlined()));
        }
        layout_.channels = static_cast<int>(players_.size());
        layout_.sampleRate = input.sampleRate;
    }

    /// Settles the format and length of the output. Without --format, the existing mix or the kind of file
    /// decides.
    void layOut() {
        layout_.frames = static_cast<std::int64_t>(players_.front()->outputLength());
        layout_.format = options_.format.value_or(outputs_.sound() ? defaultFormatOf(*outputs_.sound()->kind)
                                                                   : FormatId::f32);
        if (options_.mixInto) {
            existing_.emplace(*options_.mixInto, options_.format, layout_);
            layout_.format = existing_->format();
        }
    }

    void renderToFile() {
        OutputFile output(*outputs_.sound(), layout_);
        const std::size_t threads =
            options_.threads != 0 ? options_.threads : std::max(1U, std::thread::hardware_concurrency());
        RenderedChunks chunks(players_, layout_, existing_ ? &*existing_ : nullptr, {options_.block, threads},
                              options_.throughTables ? RenderedChunks::Through::tables
                                                     : RenderedChunks::Through::inlined);
        RenderSummary summary{layout_.frames, layout_.channels, layout_.sampleRate, 0.0, 0, 0};
        {
            Progress progress(layout_.frames, layout_.sampleRate);
            ChunkWriter(chunks, layout_, options_.block).run(output, [&](std::int64_t done) {
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
        tellClipped(chunks);
        std::fprintf(outputs_.report(), "%s\n", summary.line().c_str());
    }

    /// In the words of a mix. The library does not tell what it clips, so through the tables nobody knows
    /// which of the samples at full scale were louder.
    void tellClipped(const RenderedChunks& chunks) const {
        for (std::size_t channel = 0; channel < chunks.clipped().size(); ++channel) {
            const RenderedChunks::Clipped& clipped = chunks.clipped()[channel];
            const std::string line =
                options_.throughTables
                    ? channelOverloadLine("clipped or at full scale", channel, clipped.atLimits,
                                          layout_.sampleRate)
                    : channelOverloadLine("clipped", channel, clipped.meter.overload(), layout_.sampleRate);
            std::fputs(line.c_str(), outputs_.report());
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
    const Outputs outputs_;
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
    render->callback([options] {
        options->requireCompatible();
        Render(*options).run();
    });
}

} // namespace audlmd::command

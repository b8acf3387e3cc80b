#include "tools/audlmd/render/Render.hpp"

#include "host/cache/MaterialCache.hpp"
#include "host/cache/SoundFile.hpp"
#include "host/mix/ConvertedSources.hpp"
#include "host/services/Identities.hpp"
#include "host/signal/BestConverter.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/files/LevelledChunks.hpp"
#include "tools/audlmd/files/MarkersCsv.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/files/PeaksFile.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"
#include "tools/audlmd/mix/MixReportText.hpp"
#include "tools/audlmd/modes/ModeText.hpp"
#include "tools/audlmd/render/CopiedChunks.hpp"
#include "tools/audlmd/render/RenderSummary.hpp"
#include "tools/audlmd/render/RenderedChunks.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

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
    Render(const RenderOptions& options, std::filesystem::path input,
           const std::vector<std::filesystem::path>& outputs)
        : options_(options), input_(std::move(input)),
          outputs_(outputs, options.kind.value_or(nullptr), {options.peaks.file, options.markers}),
          log_(outputs_.report(), options.style, input_.string(), options.inputs.size() > 1) {}

    void run() {
        log_.run([this] { renderAndTell(); });
    }

private:
    void renderAndTell() {
        requireOtherOutput();
        makeChannels();
        layOut();
        if (options_.explain)
            tellHow();
        if (outputs_.hasSound())
            renderToFiles();
        if (!options_.markers.empty())
            writeOutput(OutputPath(options_.markers),
                        markersCsv(layout_.metadata.markers, {.sampleRate = layout_.sampleRate,
                                                              .timeReference = layout_.timeReference}));
    }

    /// Before the input is read, so that a wrong output is refused at once.
    void requireOtherOutput() const {
        for (const std::filesystem::path& input : options_.inputs)
            outputs_.requireOther(input, input == input_ ? "the input" : "an input");
        if (options_.mixInto)
            outputs_.requireOther(*options_.mixInto, "the file that is mixed into, which is never changed");
        if (options_.strip.automation)
            outputs_.requireOther(*options_.strip.automation, "the automation");
    }

    void makeChannels() {
        const PlayableFile atHand = options_.atHand(input_);
        file_ = atHand.path;
        log_.note(atHand.note);
        OpenInput opened = options_.open(file_, input_);
        const Media input = options_.strip.amplified(std::move(opened.media));
        for (const std::string& note : opened.notes)
            log_.note(note);
        Metadata metadata = readMetadata(file_);
        metadata.sampleRate = options_.taken().rateOf(metadata.sampleRate);
        ResolvedStrip strip = options_.strip.settingsFor(
            {.path = input_,
             .frames = input.channels.front()->length(),
             .sampleRate = input.sampleRate,
             .markers = atRate(metadata.markers, metadata.sampleRate, input.sampleRate)});
        for (const std::string& note : strip.notes)
            log_.note(note);
        StripSettings& settings = strip.settings;
        if (settings.converter == Converter::best)
            ratio_ = ratioOf(settings.speed);
        // The threads that the cache starts leave the signals to this thread.
        const EndingSignalsBlocked blocked;
        // Through the tables each channel is rendered twice.
        const std::size_t players = options_.through() == RenderedChannel::Through::tables ? 2 : 1;
        cache_ = std::make_unique<MaterialCache>(cacheOptions(players * input.channels.size()));
        settings.cookie.material = makeUuid();
        for (const std::shared_ptr<SampleSource>& source : input.channels) {
            settings.cookie.channel = static_cast<std::uint16_t>(channels_.size());
            channels_.push_back(std::make_unique<RenderedChannel>(*cache_, atNormalSpeed(settings),
                                                                  materialAtNormalSpeed(source, settings),
                                                                  options_.through()));
            for (const Cookie& cookie : channels_.back()->cookies())
                cookies_.push_back(cookie);
        }
        layout_.channels = static_cast<int>(channels_.size());
        layout_.sampleRate = input.sampleRate;
        layout_.speakers = layoutOf(input);
        if (options_.noMetadata)
            return;
        moveInto(metadata,
                 {.from = settings.from.number(),
                  .to = settings.to.number(),
                  .whole = input.channels.front()->length(),
                  .speed = settings.speed,
                  .reverse = settings.reverse},
                 input.sampleRate);
        layout_.metadata = std::move(metadata);
        moveTimeReference(input.sampleRate, settings.from);
    }

    /// The time reference moves with the start of the range, which counts frames of the output's rate.
    void moveTimeReference(int sampleRate, MaterialSample from) {
        const SoundFile file(file_, options_.truncated());
        if (!layout_.metadata.broadcast)
            return;
        const double fileRate = options_.taken().rateOf(file.sampleRate());
        // Of a damaged file any number.
        const double reference = static_cast<double>(file.timeReference()) * sampleRate / fileRate;
        const bool isExact = fileRate == sampleRate;
        layout_.timeReference =
            from.number() + (isExact ? std::clamp<std::int64_t>(file.timeReference(), 0, farthestPosition)
                                     : std::llround(std::clamp(reference, 0.0, 0x1p60)));
    }

    StripPlayer& player() const { return channels_.front()->player(); }

    /// Settles the formats and the length of the outputs. Without --format, the existing mix, the input or
    /// the kind of file decides.
    void layOut() {
        layout_.frames = static_cast<std::int64_t>(player().outputLength());
        const std::optional<FormatId> kept = keptFormat();
        stored_ = options_.storedIn(outputs_.sounds(), kept);
        if (options_.mixInto) {
            existing_.emplace(*options_.mixInto, options_.format, layout_);
            for (OutputOptions::Stored& stored : stored_)
                stored = {existing_->format(), options_.roundingTo(existing_->format()), ""};
            layout_.format = existing_->format();
        } else if (stored_.empty()) {
            layout_.format = options_.format.value_or(kept.value_or(FormatId::f32));
        } else {
            layout_.format = stored_.front().format;
        }
        if (kept)
            copy(*kept);
        for (const OutputOptions::Stored& stored : stored_)
            log_.note(stored.note);
    }

    /// What is kept as it is needs no dither. Floats do not hold 32 bits, which are therefore copied.
    void copy(FormatId kept) {
        std::size_t copies = 0;
        for (OutputOptions::Stored& stored : stored_) {
            if (stored.format != kept || stored.rounding == Rounding::truncated)
                continue;
            ++copies;
            if (std::exchange(stored.rounding, Rounding::nearest) == Rounding::dithered)
                stored.note = "note: nothing is dithered, because the samples are copied as they are";
        }
        if (kept != FormatId::s32 || copies == 0)
            return;
        if (copies != stored_.size())
            throw CommandError("'" + input_.string() +
                               "' has 32-bit samples, which are copied as they are into all outputs or into "
                               "none: choose one --format for all, or render in several calls");
        copied_.emplace(file_);
    }

    /// The input's, if no sample is changed.
    std::optional<FormatId> keptFormat() const {
        if (options_.mixInto || options_.levels.areGiven() || !options_.strip.changesNoSample())
            return std::nullopt;
        const ContainerFile input(file_);
        const std::optional<FormatId> format = input.format();
        // Floats do not hold 32 bits, and other channels are no copy.
        if (options_.channels.map ? format == FormatId::s32 : input.info().channels != layout_.channels)
            return std::nullopt;
        const bool keepsRate = options_.taken().rateOf(input.info().samplerate) == layout_.sampleRate;
        return keepsRate ? format : std::nullopt;
    }

    void tellHow() const {
        std::fputs(explain(player(), layout_.format, existing_.has_value()).c_str(), outputs_.report());
        if (ratio_)
            log_.note("converter best: the input is read at " + std::to_string(ratio_->source) + "/" +
                      std::to_string(ratio_->output) + " times its rate, by libsoxr");
        if (const int doublings = options_.strip.doublings(); doublings != 0)
            log_.note("gain beyond the levels: the input is read times 2^" + std::to_string(doublings));
    }

    void renderToFiles() {
        RenderSummary summary{.outputs = {},
                              .frames = layout_.frames,
                              .channels = layout_.channels,
                              .sampleRate = layout_.sampleRate};
        for (std::size_t n = 0; n < stored_.size(); ++n)
            summary.outputs.push_back({outputs_.sounds()[n].path.string(), stored_[n].format,
                                       clips(stored_[n].format, stored_[n].rounding)});
        if (options_.levels.areGiven()) {
            renderToLevel(summary);
        } else {
            SoundOutputs outputs(allOutputs());
            if (copied_) {
                CopiedChunks chunks(*copied_, player().plan().settings);
                summary.seconds = write(chunks, outputs);
            } else {
                RenderedChunks chunks = renderedAs(outputs.chunkLayout(), outputs.chunkRounding());
                summary.seconds = write(chunks, outputs);
                measureOverload(chunks, summary);
            }
        }
        for (const Cookie& cookie : cookies_) {
            const MaterialStatistics statistics = cache_->statistics(cookie);
            summary.underrunSamples += statistics.underrunSamples;
            summary.underrunEpisodes += statistics.underrunEpisodes;
        }
        log_.result(summary.lines(options_.style.quiet), [&] { return summary.json(); });
    }

    RenderedChunks renderedAs(const OutputLayout& layout, Rounding rounding) {
        const std::size_t threads =
            options_.threads != 0 ? options_.threads : std::max(1U, std::thread::hardware_concurrency());
        return {
            channels_,         layout, rounding, existing_ ? &*existing_ : nullptr, {options_.block, threads},
            options_.through()};
    }

    void renderToLevel(RenderSummary& summary) {
        std::vector<SoundOutput> all = allOutputs();
        LevelledChunks levelled(options_.levels, all, 0, options_.threads);
        RenderedChunks rendered = renderedAs(levelled.floats(), Rounding::nearest);
        Progress progress(layout_.frames, layout_.sampleRate, log_, "measuring, pass 1 of 2");
        levelled.measure(rendered, options_.block, [&](std::int64_t done) {
            requireWholeInput();
            progress.update(done);
        });
        const double measuring = progress.elapsed();
        SoundOutputs outputs(levelled.told(std::move(all)));
        levelled.setFormat(outputs.chunkLayout().format, outputs.chunkRounding());
        summary.seconds = measuring + write(levelled, outputs);
        summary.levels = levelled.levels();
        summary.overloads = levelled.overloads();
        summary.overloadWords = overloadWordsOf(summary.outputs);
    }

    std::vector<SoundOutput> allOutputs() const {
        std::vector<SoundOutput> outputs;
        for (std::size_t n = 0; n < stored_.size(); ++n) {
            outputs.push_back({outputs_.sounds()[n], layout_, stored_[n].rounding});
            outputs.back().layout.format = stored_[n].format;
            if (options_.through() == RenderedChannel::Through::outputTypes &&
                stored_[n].format != stored_.front().format)
                throw CommandError("--through-tables and --truncate together render one format: choose one "
                                   "--format for all outputs");
        }
        return outputs;
    }

    /// Returns how long that took, in seconds.
    double write(ChunkProducer& chunks, SoundOutputs& outputs) const {
        Progress progress(layout_.frames, layout_.sampleRate, log_,
                          options_.levels.areGiven() ? "writing, pass 2 of 2" : "");
        PeaksFile peaks(options_.peaks, outputs.chunkLayout());
        ChunkWriter(chunks, outputs.chunkLayout(), options_.block)
            .run(
                [&](const Chunk& chunk) {
                    outputs.write(chunk);
                    peaks.take(chunk);
                },
                [&](std::int64_t done) {
                    requireWholeInput();
                    progress.update(done);
                });
        outputs.commit();
        peaks.write();
        for (const std::string& note : outputs.notes())
            log_.note(note);
        return progress.elapsed();
    }

    /// In the words of a mix. The library does not tell what it clips, so through its output types nobody
    /// knows which of the samples at full scale were louder.
    void measureOverload(const RenderedChunks& chunks, RenderSummary& summary) const {
        const bool byLibrary = options_.through() == RenderedChannel::Through::outputTypes;
        summary.overloadWords = byLibrary ? std::vector<std::string>{"clipped or at full scale"}
                                          : overloadWordsOf(summary.outputs);
        for (const RenderedChunks::Clipped& clipped : chunks.clipped())
            summary.overloads.push_back(byLibrary ? clipped.atLimits : clipped.meter.overload());
    }

    /// Throws CommandError if a segment could not be read: the library renders such a segment as silence.
    void requireWholeInput() const {
        for (const Cookie& cookie : cookies_)
            if (const MaterialStatistics statistics = cache_->statistics(cookie);
                statistics.failedSegments != 0)
                throw CommandError(statistics.firstFailure, ExitStatus::input);
    }

    const RenderOptions& options_;
    const std::filesystem::path input_;
    /// The input itself, or the copy of a stream.
    std::filesystem::path file_;
    const Outputs outputs_;
    const JobLog log_;
    std::unique_ptr<MaterialCache> cache_;
    std::vector<Cookie> cookies_;
    std::vector<std::unique_ptr<RenderedChannel>> channels_;
    /// Set with the converter best.
    std::optional<SpeedRatio> ratio_;
    std::optional<ExistingMix> existing_;
    /// Set where the samples are copied, and floats could not hold them.
    std::optional<ContainerFile> copied_;
    /// But for the format, that of all outputs.
    OutputLayout layout_;
    std::vector<OutputOptions::Stored> stored_;
};

} // namespace

void renderOne(const RenderOptions& options, const std::filesystem::path& input,
               const std::vector<std::filesystem::path>& outputs) {
    Render(options, input, outputs).run();
}

} // namespace audlmd::command

#include "host/cache/MaterialCache.hpp"
#include "host/services/Identities.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"
#include "tools/audlmd/mix/MixReportText.hpp"
#include "tools/audlmd/modes/ModeText.hpp"
#include "tools/audlmd/options/OutputOptions.hpp"
#include "tools/audlmd/options/StripOptions.hpp"
#include "tools/audlmd/render/CopiedChunks.hpp"
#include "tools/audlmd/render/RenderedChunks.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <thread>

namespace audlmd::command {
namespace {

constexpr std::size_t mostBlock = std::size_t{1} << 24;

constexpr const char* renderHelp =
    R"(TIMES of --from, --to and --duration are the input's; those of fades and automation are the output's,
as heard. A time is written in seconds (12.5 or 3s), milliseconds (250ms), samples (480000smp) or as a
timecode (1:02.5, 1:00:02.5).

BANDS of --eq are written peak:FREQUENCY:GAIN[:Q], lowshelf:FREQUENCY:GAIN[:Q], highshelf:FREQUENCY:GAIN[:Q],
highpass:FREQUENCY[:Q] or lowpass:FREQUENCY[:Q], in hertz (1k is 1000) and decibels. Without Q it is 0.707.

RATES With --rate the input is converted to the output's rate while it is read, at very high quality and with
its pitch and length as they are; then everything counts samples of the output's rate, smp too.

MIXES The file of --mix-into has the render's rate, channels and length, and its format where one is given. A
.raw or .pcm file does not tell its format: give it with --format.

LEVELS are floats without limits, which f32 holds as they are. Integers are rounded to the nearest step, and
clipped; the report tells how many samples are over full scale. --dither turns the distortion of rounding into
even noise; use it once, where 24 bits become 16. --truncate gives the bytes that a host gets of the library.

FILES The output's extension chooses the kind of file:
  .wav .w64 .rf64   u8 s16 s24 s32 f32 (a wav beyond 4 GiB becomes RF64)
  .aiff .au .caf    s8 s16 s24 s32 f32 (an aiff also u8)
  .flac             s8 s16 s24
  .raw .pcm         every format, little-endian and without a header; the only ones that hold s24in32
Without --format it is that of --mix-into. Else it is the input's, if that is one of these, the output can
hold it, and options only choose a range or --reverse it: the samples are then copied as they are. Else, as
for ogg and mp3, it is f32, or s24 for flac. Pipes and devices (/dev/stdout, -) get headerless samples. The
output stands under its name only once it is whole; whatever was there stays until then.

EXAMPLES
  audlmd render speech.wav -o reversed.wav --reverse
  audlmd render take.flac -o part.wav --from 1:02.5 --duration 20s --format s24
  audlmd render voice.wav -o mix.wav --mix-into music.wav
  audlmd render song.wav -o faded.wav --fade-in 2s --fade-out 5s:log --gain -3
  audlmd render song.wav -o eq.wav --eq lowshelf:120:-2 --eq peak:1k:+3:0.7 --eq highpass:30
  audlmd render song.wav -o ride.wav --automation ride.csv      (lines like 0,-20 and 1:02.5,0)
  audlmd render song.wav -o fast.wav --speed 1.5
  audlmd render song.wav -o cd.wav --rate 44100 --format s16 --dither
  audlmd render song.wav --fade-in 2s --explain)";

/// The options of `render`. Without an output the render is only explained.
struct RenderOptions : OutputOptions {
    std::filesystem::path input;
    std::optional<std::filesystem::path> mixInto;
    StripOptions strip;
    bool explain = false;

    /// Declares all options with their help. This object must outlive the app.
    void declare(CLI::App& render);

    /// Throws CommandError for options that cannot stand together, or alone.
    void requireCompatible() const;

    RenderedChannel::Through through() const;
};

void RenderOptions::declare(CLI::App& render) {
    render.add_option("INPUT", input, "A sound file in any format that libsndfile reads")->required();
    declareOutput(render, "The file to write; may be left out with --explain", "the input's", mostBlock);
    render
        .add_option("--mix-into", mixInto,
                    "Add to the samples of this file, which is only read, and write the sum to OUTPUT")
        ->option_text("EXISTING")
        ->group("Output");
    render.add_flag("--explain", explain, "Print mode code, fields, chain, output type and record")
        ->group("Output");
    strip.declareRange(render);
    strip.declareSound(render);
    render.footer(renderHelp);
}

void RenderOptions::requireCompatible() const {
    if (output.empty() && !explain)
        throw CommandError("name the file to write with -o, or use --explain alone");
    strip.requireCompatible();
}

RenderedChannel::Through RenderOptions::through() const {
    using enum RenderedChannel::Through;
    return !throughTables ? inlined : truncate ? outputTypes : tables;
}

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
        makeChannels();
        layOut();
        if (options_.explain)
            tellHow();
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

    void makeChannels() {
        const Media input = options_.strip.amplified(options_.open(options_.input));
        StripSettings settings = options_.strip.settingsFor({.path = options_.input,
                                                             .frames = input.channels.front()->length(),
                                                             .sampleRate = input.sampleRate});
        // The threads that the cache starts leave the signals to this thread.
        const EndingSignalsBlocked blocked;
        // Through the tables each channel is rendered twice.
        const std::size_t players = options_.through() == RenderedChannel::Through::tables ? 2 : 1;
        cache_ = std::make_unique<MaterialCache>(cacheOptions(players * input.channels.size()));
        settings.cookie.material = makeUuid();
        for (const std::shared_ptr<SampleSource>& source : input.channels) {
            settings.cookie.channel = static_cast<std::uint16_t>(channels_.size());
            channels_.push_back(
                std::make_unique<RenderedChannel>(*cache_, settings, source, options_.through()));
            for (const Cookie& cookie : channels_.back()->cookies())
                cookies_.push_back(cookie);
        }
        layout_.channels = static_cast<int>(channels_.size());
        layout_.sampleRate = input.sampleRate;
    }

    StripPlayer& player() const { return channels_.front()->player(); }

    /// Settles the format and length of the output. Without --format, the existing mix, the input or the kind
    /// of file decides.
    void layOut() {
        layout_.frames = static_cast<std::int64_t>(player().outputLength());
        const std::optional<FormatId> kept = keptFormat();
        layout_.format = options_.format.value_or(
            kept.value_or(outputs_.sound() ? defaultFormatOf(*outputs_.sound()->kind) : FormatId::f32));
        if (options_.mixInto) {
            existing_.emplace(*options_.mixInto, options_.format, layout_);
            layout_.format = existing_->format();
        }
        rounding_ = options_.roundingTo(layout_.format);
        const bool copies = kept == layout_.format && rounding_ != Rounding::truncated;
        if (copies && rounding_ == Rounding::dithered) {
            std::fputs("note: nothing is dithered, because the samples are copied as they are\n",
                       outputs_.report());
            rounding_ = Rounding::nearest;
        }
        if (copies && kept == FormatId::s32)
            copied_.emplace(options_.input);
    }

    /// The input's, if no sample is changed and the output can hold the format.
    std::optional<FormatId> keptFormat() const {
        if (options_.mixInto || !options_.strip.changesNoSample())
            return std::nullopt;
        const ContainerFile input(options_.input);
        const std::optional<FormatId> format = input.format();
        const bool kept = format && input.info().samplerate == layout_.sampleRate &&
                          (!outputs_.sound() || subtypeIn(*outputs_.sound()->kind, *format));
        return kept ? format : std::nullopt;
    }

    void tellHow() const {
        std::fputs(explain(player(), layout_.format, existing_.has_value()).c_str(), outputs_.report());
        if (const int doublings = options_.strip.doublings(); doublings != 0)
            std::fprintf(outputs_.report(), "gain beyond the levels: the input is read times 2^%d\n",
                         doublings);
    }

    void renderToFile() {
        OutputFile output(*outputs_.sound(), layout_);
        RenderSummary summary{layout_.frames, layout_.channels, layout_.sampleRate, 0.0, 0, 0};
        if (copied_) {
            CopiedChunks chunks(*copied_, player().plan().settings);
            summary.seconds = write(chunks, output);
        } else {
            const std::size_t threads =
                options_.threads != 0 ? options_.threads : std::max(1U, std::thread::hardware_concurrency());
            RenderedChunks chunks(channels_, layout_, rounding_, existing_ ? &*existing_ : nullptr,
                                  {options_.block, threads}, options_.through());
            summary.seconds = write(chunks, output);
            tellOverload(chunks);
        }
        for (const Cookie& cookie : cookies_) {
            const MaterialStatistics statistics = cache_->statistics(cookie);
            summary.underrunSamples += statistics.underrunSamples;
            summary.underrunEpisodes += statistics.underrunEpisodes;
        }
        std::fprintf(outputs_.report(), "%s\n", summary.line().c_str());
    }

    /// Returns how long that took, in seconds.
    double write(ChunkProducer& chunks, OutputFile& output) const {
        Progress progress(layout_.frames, layout_.sampleRate);
        ChunkWriter(chunks, layout_, options_.block).run(output, [&](std::int64_t done) {
            requireWholeInput();
            progress.update(done);
        });
        output.commit();
        return progress.elapsed();
    }

    /// In the words of a mix. The library does not tell what it clips, so through its output types nobody
    /// knows which of the samples at full scale were louder.
    void tellOverload(const RenderedChunks& chunks) const {
        const bool byLibrary = options_.through() == RenderedChannel::Through::outputTypes;
        for (std::size_t channel = 0; channel < chunks.clipped().size(); ++channel) {
            const RenderedChunks::Clipped& clipped = chunks.clipped()[channel];
            const std::string line =
                byLibrary ? channelOverloadLine("clipped or at full scale", channel, clipped.atLimits,
                                                layout_.sampleRate)
                          : channelOverloadLine(overloadWords(clips(layout_.format, rounding_)), channel,
                                                clipped.meter.overload(), layout_.sampleRate);
            if (!line.empty())
                std::fprintf(outputs_.report(), "%s\n", line.c_str());
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
    std::vector<std::unique_ptr<RenderedChannel>> channels_;
    std::optional<ExistingMix> existing_;
    /// Set where the samples are copied, and floats could not hold them.
    std::optional<ContainerFile> copied_;
    OutputLayout layout_;
    Rounding rounding_ = Rounding::nearest;
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

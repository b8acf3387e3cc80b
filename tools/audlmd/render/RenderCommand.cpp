#include "host/cache/MaterialCache.hpp"
#include "host/cache/SoundFile.hpp"
#include "host/services/Identities.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/mix/MixReportText.hpp"
#include "tools/audlmd/modes/ModeText.hpp"
#include "tools/audlmd/options/OutputOptions.hpp"
#include "tools/audlmd/options/StripOptions.hpp"
#include "tools/audlmd/render/RenderedChunks.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
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

CHANNELS --map takes channels of the input by number or name; --channels then folds them down, or puts them in
the order of a layout: mono, stereo, 3.0, quad, 5.0, 5.1, 6.1, 7.1, 5.1film, 7.1film, 5.1smpte or 7.1smpte.
By ITU-R BS.775 the centre and the surrounds go to left and right at -3 dB, and LFE nowhere; mono is half of
left plus right. Nothing is scaled: leave room with --gain.

MIXES The file of --mix-into has the render's rate, channels and length, and its format where one is given. A
.raw or .pcm file does not tell its format: give it with --format.

FILES The output's extension chooses the kind of file. Every sample in it is what the library stored:
  .wav .w64 .rf64   u8 s16 s24 s32 f32 (a wav beyond 4 GiB becomes RF64)
  .aiff .au .caf    s8 s16 s24 s32 f32 (an aiff also u8)
  .flac             s8 s16 s24
  .raw .pcm         every format, little-endian and without a header; the only ones that hold s24in32
Without --format it is that of --mix-into, else f32, or s24 for flac. Pipes and devices (/dev/stdout, -) get
headerless samples. The output stands under its name only once it is whole; whatever was there stays until
then.

EXAMPLES
  audlmd render speech.wav -o reversed.wav --reverse
  audlmd render take.flac -o part.wav --from 1:02.5 --duration 20s --format s24
  audlmd render voice.wav -o mix.wav --mix-into music.wav
  audlmd render song.wav -o faded.wav --fade-in 2s --fade-out 5s:log --gain -3
  audlmd render song.wav -o eq.wav --eq lowshelf:120:-2 --eq peak:1k:+3:0.7 --eq highpass:30
  audlmd render song.wav -o ride.wav --automation ride.csv      (lines like 0,-20 and 1:02.5,0)
  audlmd render song.wav -o fast.wav --speed 1.5
  audlmd render song.wav -o cd.wav --rate 44100 --format s16
  audlmd render song.wav -o mono.wav --channels mono      (or --map L for the left channel alone)
  audlmd render song.wav --fade-in 2s --explain)";

/// The options of `render`. Without an output the render is only explained.
struct RenderOptions : OutputOptions {
    std::filesystem::path input;
    std::optional<std::filesystem::path> mixInto;
    StripOptions strip;
    bool explain = false;
    bool noMetadata = false;

    /// Declares all options with their help. This object must outlive the app.
    void declare(CLI::App& render);

    /// Throws CommandError for options that cannot stand together, or alone.
    void requireCompatible() const;
};

void RenderOptions::declare(CLI::App& render) {
    render.add_option("INPUT", input, "A sound file in any format that libsndfile reads")->required();
    declareOutput(render, "The file to write; may be left out with --explain", {}, mostBlock);
    render
        .add_option("--mix-into", mixInto,
                    "Add to the samples of this file, which is only read, and write the sum to OUTPUT")
        ->option_text("EXISTING")
        ->group("Output");
    render.add_flag("--no-metadata", noMetadata, "Leave out the input's tags, bext and iXML")
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
        const auto [input, note] = options_.open(options_.input);
        if (!note.empty())
            std::fprintf(outputs_.report(), "%s\n", note.c_str());
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
        layout_.speakers = layoutOf(input);
        if (!options_.noMetadata)
            keepMetadata(input.sampleRate, settings.from);
    }

    /// The time reference moves with the start of the range, which counts frames of the output's rate.
    void keepMetadata(int sampleRate, MaterialSample from) {
        const SoundFile file(options_.input);
        layout_.metadata = readMetadata(options_.input);
        if (!layout_.metadata.broadcast)
            return;
        // Of a damaged file any number.
        const double reference = static_cast<double>(file.timeReference()) * sampleRate / file.sampleRate();
        const bool isExact = file.sampleRate() == sampleRate;
        layout_.timeReference =
            from.number() + (isExact ? std::clamp<std::int64_t>(file.timeReference(), 0, farthestPosition)
                                     : std::llround(std::clamp(reference, 0.0, 0x1p60)));
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
        for (const std::string& note : output.notes())
            std::fprintf(outputs_.report(), "%s\n", note.c_str());
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

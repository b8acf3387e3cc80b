#include "tools/audlmd/mix/Mix.hpp"

#include "host/mix/Mixer.hpp"
#include "host/timeline/List.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/timeline/TimelineFiles.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/files/ChunkWriter.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"
#include "tools/audlmd/mix/MixReportText.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"
#include "tools/audlmd/mix/picture/TimelineFigure.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <sys/resource.h>
#include <tuple>
#include <utility>
#include <vector>

namespace audlmd::command {
namespace {

/// Every strip that sounds holds its file open.
void allowManyOpenFiles() {
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0) {
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files);
    }
}

/// A part of a timeline as the chunks of an output.
class MixedChunks final : public ChunkProducer {
public:
    /// `from` is the output sample of the timeline with which the output begins. After each chunk, `mixed` is
    /// called on the thread that mixes.
    MixedChunks(Mixer& mixer, TimelineSample from, FormatId format, Rounding rounding, std::size_t block,
                std::function<void()> mixed)
        : mixer_(mixer), from_(from), format_(format), rounding_(rounding), mixed_(std::move(mixed)),
          samples_(outputLayout(mixer.timeline()).size(), std::vector<float>(block)) {}

    /// The mixer has threads of its own.
    std::size_t parts() const override { return 1; }

    /// Block by block, so that the sums are still in the processor's cache when they are stored.
    void fill(std::size_t /*part*/, Chunk& chunk) override {
        std::vector<std::span<float>> block(samples_.begin(), samples_.end());
        for (std::size_t done = 0; done < chunk.frames; done += block.front().size()) {
            for (std::span<float>& channel : block)
                channel = channel.first(std::min(channel.size(), chunk.frames - done));
            const TimelineSample position = from_ + chunk.from + static_cast<std::int64_t>(done);
            mixer_.render(position, block);
            for (std::size_t channel = 0; channel < block.size(); ++channel)
                store(format_, rounding_, {channel, position.number()}, block[channel],
                      &chunk.channels[channel][done * outputFormat(format_).bytes]);
        }
        mixed_();
    }

private:
    Mixer& mixer_;
    TimelineSample from_;
    FormatId format_;
    Rounding rounding_;
    std::function<void()> mixed_;
    /// One block of each channel.
    std::vector<std::vector<float>> samples_;
};

/// One mix, from the options to the last line of the report.
class Mix {
public:
    Mix(const MixOptions& options, std::optional<Timeline> timeline)
        : options_(options), media_(options.media, options),
          outputs_(options.output, options.kind.value_or(nullptr), {options.report, options.picture}),
          given_(std::move(timeline)) {}

    void run() {
        if (given_)
            timeline_ = std::move(*given_);
        else
            readTimeline();
        if (outputs_.sound())
            std::tie(span_, rangeNote_) = options_.spanOf(timeline_);
        lookAtMedia();
        if (options_.list)
            list();
        else if (!outputs_.sound())
            tellNotes(report(), allNotes());
        if (options_.strict)
            requireAllHeard();
        MixReport mixed;
        if (outputs_.sound())
            mixed = mix();
        if (!options_.picture.empty())
            draw(mixed);
        requireSound(mixed);
    }

private:
    FILE* report() const { return outputs_.report(); }

    void readTimeline() {
        timeline_ = readTimelineFile(
            options_.timeline,
            {.rate = options_.rate, .channels = options_.channels, .timeline = options_.timelineName},
            media_);
        outputs_.requireOther(options_.timeline, "the timeline");
    }

    /// Of the output: what is looked at.
    TimelineSpan part() const {
        constexpr std::int64_t far = std::numeric_limits<std::int64_t>::max();
        return outputs_.sound() ? span_ : TimelineSpan{-far, far};
    }

    /// Before anything is written.
    void lookAtMedia() {
        MediaCheck check = checkMedia(timeline_, part(), media_);
        for (const std::filesystem::path& file : check.files)
            outputs_.requireOther(file, "a medium of the timeline");
        timeline_.notes.insert(timeline_.notes.end(), check.choices.begin(), check.choices.end());
        failures_ = std::move(check.failures);
    }

    std::string shownFile(const std::string& medium) {
        const FoundMedium& found = media_.find(medium);
        const std::string path = found.path.empty() ? medium : found.path.string();
        return found.facts ? path : "missing: " + path;
    }

    /// With those on media that fail, of which only the report of a mix tells by itself.
    std::vector<TimelineNote> allNotes() const {
        std::vector<TimelineNote> notes = timeline_.notes;
        notes.insert(notes.end(), failures_.begin(), failures_.end());
        return notes;
    }

    void tellNotes(FILE* stream, const std::vector<TimelineNote>& notes) const {
        for (const std::string& line : timeline::noteLines(notes, timeline_.sampleRate))
            std::fprintf(stream, "%s\n", line.c_str());
    }

    void list() {
        if (options_.as == "json") {
            std::fprintf(report(), "%s\n", timeline::writeJson(timeline_).c_str());
            // Not in the JSON: who mixes that may have the media.
            return tellNotes(stderr, failures_);
        }
        Timeline listed = timeline_;
        listed.notes = allNotes();
        const auto fileOf = [this](const std::string& medium) { return shownFile(medium); };
        std::fputs(timeline::list(listed, fileOf).c_str(), report());
    }

    /// Throws CommandError, which names the places.
    void requireAllHeard() const {
        std::vector<TimelineNote> silences = silencesIn(timeline_, part());
        silences.insert(silences.end(), failures_.begin(), failures_.end());
        if (silences.empty())
            return;
        constexpr std::size_t most = 12;
        std::string line = "with --strict nothing is written where sound would be missing";
        for (std::size_t i = 0; i < std::min(silences.size(), most); ++i)
            line += "; " + silences[i].where + ": " + silences[i].text;
        if (silences.size() > most)
            line += "; and " + std::to_string(silences.size() - most) + " more, see --list";
        throw CommandError(words::printable(line, std::string::npos), ExitStatus::input);
    }

    MixReport mix() {
        const FormatId format = options_.format.value_or(defaultFormatOf(*outputs_.sound()->kind));
        const Rounding rounding = options_.roundingTo(format);
        allowManyOpenFiles();
        if (const ChannelLayout given = outputLayout(timeline_);
            given.size() < timeline_.channels && !options_.channels.map)
            timeline_.notes.push_back(
                {.where = "the timeline", .text = foldDownText(layoutOf(timeline_), given)});
        std::optional<Mixer> mixer;
        {
            // The threads that the mixer starts leave the signals to this thread.
            const EndingSignalsBlocked blocked;
            mixer.emplace(
                timeline_, [this](const std::string& medium) { return media_.open(medium); },
                MixerOptions{
                    .threads = options_.threads, .block = options_.block, .inlined = options_.inlined()});
        }
        const double seconds = writeOutput(*mixer, format, rounding);
        MixReport mixed = mixer->report();
        tell(mixed, {.span = span_,
                     .seconds = seconds,
                     .timeline = options_.timeline.string(),
                     .output = options_.output.string(),
                     .quiet = options_.quiet,
                     .clips = clips(format, rounding)});
        return mixed;
    }

    /// Returns how long that took, in seconds.
    double writeOutput(Mixer& mixer, FormatId format, Rounding rounding) const {
        const OutputLayout layout{.format = format,
                                  .channels = static_cast<int>(outputLayout(timeline_).size()),
                                  .sampleRate = timeline_.sampleRate,
                                  .frames = span_.length(),
                                  .timeReference = timeline_.timeReference + span_.from.number(),
                                  .speakers = outputLayout(timeline_)};
        OutputFile output(*outputs_.sound(), layout);
        Progress progress(layout.frames, layout.sampleRate, !options_.quiet);
        MixedChunks chunks(mixer, span_.from, format, rounding, options_.block, [&] {
            if (options_.strict)
                requireNoFailure(mixer.report());
        });
        ChunkWriter(chunks, layout, options_.block).run(output, [&](std::int64_t done) {
            progress.update(done);
        });
        output.commit();
        for (const std::string& note : output.notes())
            std::fprintf(report(), "%s\n", note.c_str());
        return progress.elapsed();
    }

    void requireNoFailure(const MixReport& report) const {
        for (const StripReport& strip : report.strips)
            if (!strip.failure.empty())
                throw CommandError(timeline::whereIs(timeline_, strip.track, strip.strip).text() + ": " +
                                       words::printable(strip.failure, std::string::npos),
                                   ExitStatus::input);
    }

    /// The text first, which must be told also where the file cannot be written.
    void tell(const MixReport& told, const MixRun& run) const {
        if (!rangeNote_.empty())
            std::fprintf(report(), "%s\n", rangeNote_.c_str());
        std::fputs(reportText(told, timeline_, run).c_str(), report());
        if (!options_.report.empty())
            command::writeOutput(OutputPath(options_.report), reportJson(told, timeline_, run));
    }

    void draw(const MixReport& mixed) {
        Progress bar(timeline_.length, timeline_.sampleRate, !options_.quiet);
        const plot::Figure figure = drawTimeline(
            timeline_, mixed, [this](const std::string& medium) { return media_.open(medium); },
            [&](double share) {
                bar.update(static_cast<std::int64_t>(share * static_cast<double>(timeline_.length)));
            });
        writePicture(figure, OutputPath(options_.picture));
    }

    /// The mix is written by then. Who runs it must still learn that something is missing in it.
    void requireSound(const MixReport& mixed) const {
        if (!outputs_.sound())
            return;
        const auto failed = std::ranges::count_if(
            mixed.strips, [](const StripReport& strip) { return !strip.failure.empty(); });
        const auto all = failed + std::ssize(silencesIn(timeline_, span_));
        if (all != 0)
            throw CommandError(std::to_string(all) + (all == 1 ? " clip is" : " clips are") +
                                   " silent, if only in part, see above; '" +
                                   words::printable(outputs_.sound()->path.string()) + "' is written",
                               ExitStatus::incomplete);
    }

    const MixOptions& options_;
    MediaFinder media_;
    const Outputs outputs_;
    std::optional<Timeline> given_;
    /// Of the media that cannot be played.
    std::vector<TimelineNote> failures_;
    Timeline timeline_;
    TimelineSpan span_;
    std::string rangeNote_;
};

} // namespace

void runMix(const MixOptions& options, std::optional<Timeline> timeline) {
    Mix(options, std::move(timeline)).run();
}

} // namespace audlmd::command

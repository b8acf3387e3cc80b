#include "tools/audlmd/mix/Mix.hpp"

#include "host/mix/Mixer.hpp"
#include "host/timeline/List.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/timeline/TimelineFiles.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/files/LevelledChunks.hpp"
#include "tools/audlmd/files/MarkersCsv.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/files/PeaksFile.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"
#include "tools/audlmd/mix/MixReportJson.hpp"
#include "tools/audlmd/mix/MixedChunks.hpp"
#include "tools/audlmd/mix/Stems.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"
#include "tools/audlmd/mix/page/Page.hpp"
#include "tools/audlmd/mix/picture/TimelineFigure.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <system_error>
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

/// Of all channels of the output, and behind them of those of the stems.
void takeOverloads(const std::vector<Overload>& all, MixReport& mixed) {
    auto next = all.begin();
    for (Overload& channel : mixed.channels)
        channel = *next++;
    for (std::vector<Overload>& stem : mixed.stems)
        for (Overload& channel : stem)
            channel = *next++;
}

/// One mix, from the options to the last line of the report.
class Mix {
public:
    Mix(const MixOptions& options, std::optional<Timeline> timeline,
        const std::function<void(const std::filesystem::path&)>& looksAt)
        : options_(options), media_(options.media, options, looksAt),
          outputs_(options.outputs, options.kind.value_or(nullptr),
                   {options.report, options.picture, options.page, options.markers, options.peaks.file}),
          log_(outputs_.report(), options.style, options.timeline.string()), given_(std::move(timeline)) {}

    void run() {
        log_.run([this] { mixAndTell(); }, [this](const CommandError& failure) { reportFailure(failure); });
    }

private:
    FILE* report() const { return outputs_.report(); }

    void mixAndTell() {
        if (given_)
            timeline_ = std::move(*given_);
        else
            readTimeline();
        muted_ = options_.tracks.applyTo(timeline_);
        if (outputs_.hasSound())
            settle();
        // What is there may be a medium.
        mayReport_ = false;
        lookAtMedia();
        mayReport_ = true;
        if (options_.list)
            list();
        else if (!outputs_.hasSound())
            for (const std::string& line : timeline::noteLines(allNotes(), timeline_.sampleRate))
                log_.note(line);
        if (options_.strict)
            requireAllHeard();
        MixReport mixed;
        if (outputs_.hasSound())
            mixed = mix();
        if (!options_.picture.empty())
            draw(mixed);
        if (!options_.page.empty())
            showOnPage(mixed);
        if (!options_.markers.empty())
            writeMarkers();
        requireSound(mixed);
    }

    /// What is mixed, and into which numbers.
    void settle() {
        std::tie(whole_, rangeNote_) = options_.wholeOf(timeline_);
        span_ = options_.sliceOf(whole_);
        stored_ = options_.storedIn(outputs_.sounds(), options_.kept);
        if (!options_.stems.empty())
            settleStems();
    }

    /// Their files are known only now.
    void settleStems() {
        const OutputTarget& first = outputs_.sounds().front();
        // What has no header where it goes into a stream has one in a file.
        const FileKind& kind =
            first.isStream && first.kind == &rawFileKind() ? *findFileKind("x.wav") : *first.kind;
        stems_ = outputs_.add(stemFiles(timeline_, options_.stems, kind.extension), kind);
        if (!given_)
            outputs_.requireOther(options_.timeline, "the timeline");
    }

    void readTimeline() {
        outputs_.requireOther(options_.timeline, "the timeline");
        mayReport_ = holdsNoSound(options_.report);
        timeline_ = readTimelineFile(
            options_.timeline,
            {.rate = options_.rate, .channels = options_.channels, .timeline = options_.timelineName},
            media_);
    }

    /// An earlier report begins with a brace, and no sound does. What is no file is not read: that could wait
    /// for ever.
    static bool holdsNoSound(const std::filesystem::path& report) {
        std::error_code none;
        return !std::filesystem::is_regular_file(report, none) || std::ifstream(report).peek() == '{';
    }

    /// Of the output: what is looked at.
    TimelineSpan part() const {
        constexpr std::int64_t far = std::numeric_limits<std::int64_t>::max();
        return outputs_.hasSound() ? span_ : TimelineSpan{-far, far};
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
        allowManyOpenFiles();
        if (const ChannelLayout given = outputLayout(timeline_);
            given.size() < timeline_.channels && !options_.channels.map)
            timeline_.notes.push_back(
                {.where = "the timeline", .text = foldDownText(layoutOf(timeline_), given)});
        std::optional<Mixer> mixer;
        {
            // The threads that the mixer starts leave the signals to this thread.
            const EndingSignalsBlocked blocked;
            mixer.emplace(timeline_, opensMedia(),
                          MixerOptions{.threads = options_.threads,
                                       .block = options_.block,
                                       .stems = !stems_.empty(),
                                       .inlined = options_.inlined()});
        }
        const Written written = writeOutput(*mixer);
        MixReport mixed = mixer->report();
        if (written.levels)
            takeOverloads(written.overloads, mixed);
        tell(mixed, written);
        return mixed;
    }

    /// One of the outputs, with what it says beside its samples. A file without a header says nothing.
    SoundOutput outputTo(const OutputTarget& target, const OutputOptions::Stored& stored,
                         const std::string& title, std::size_t firstChannel = 0) const {
        const ChannelLayout speakers = outputLayout(timeline_);
        OutputLayout layout{.format = stored.format,
                            .channels = static_cast<int>(speakers.size()),
                            .sampleRate = timeline_.sampleRate,
                            .frames = span_.length(),
                            .speakers = speakers};
        if (!options_.noMetadata && target.kind != &rawFileKind()) {
            layout.timeReference = timeline_.timeReference + span_.from.number();
            if (!title.empty())
                layout.metadata.tags[SF_STR_TITLE] = title;
            layout.metadata.markers = markersOf(timeline_);
            layout.metadata.sampleRate = layout.sampleRate;
            moveInto(layout.metadata,
                     {.from = span_.from.number(), .to = span_.to.number(), .whole = timeline_.length},
                     layout.sampleRate);
        }
        return {target, std::move(layout), stored.rounding, firstChannel};
    }

    /// The mix in all its files, and the stems, in the order of the mixer's channels.
    std::vector<SoundOutput> allOutputs() const {
        std::vector<SoundOutput> all;
        for (std::size_t n = 0; n < stored_.size(); ++n)
            all.push_back(outputTo(outputs_.sounds()[n], stored_[n], timeline_.name));
        for (std::size_t track = 0; track < stems_.size(); ++track)
            all.push_back(outputTo(stems_[track], stored_.front(), timeline_.tracks[track].name,
                                   (track + 1) * outputLayout(timeline_).size()));
        return all;
    }

    struct Written {
        /// How long that took.
        double seconds = 0.0;
        /// Of an output that was brought to a level; then the mixer does not know what was over full scale.
        std::optional<OutputLevels> levels = std::nullopt;
        std::vector<Overload> overloads = {};
    };

    Written writeOutput(Mixer& mixer) {
        std::optional<MadeFolder> folder;
        if (!stems_.empty())
            folder.emplace(options_.stems);
        if (!options_.picture.empty() || !options_.page.empty())
            course_.emplace(span_, outputLayout(timeline_), timeline_.sampleRate,
                            options_.page.empty() ? OutputCourse::Loudness::leftOut
                                                  : OutputCourse::Loudness::measured);
        OutputCourse* const course = course_ ? &*course_ : nullptr;
        const auto requireAll = [&] {
            if (options_.strict)
                requireNoFailure(mixer.report());
        };
        std::vector<SoundOutput> all = allOutputs();
        if (!options_.levels.areGiven()) {
            SoundOutputs outputs(std::move(all), span_.from.number());
            MixedChunks mixed(mixer, span_.from, outputs.chunkLayout(), outputs.chunkRounding(),
                              options_.block, requireAll, course);
            return {.seconds = write(mixed, outputs)};
        }
        LevelledChunks levelled(options_.levels, all, span_.from, options_.threads);
        MixedChunks mixed(mixer, span_.from, levelled.floats(), Rounding::nearest, options_.block, requireAll,
                          course);
        Progress progress(span_.length(), timeline_.sampleRate, log_, "measuring, pass 1 of 2");
        levelled.measure(mixed, options_.block, [&](std::int64_t done) { progress.update(done); });
        const double measuring = progress.elapsed();
        if (course != nullptr)
            course->amplify(levelled.levels());
        SoundOutputs outputs(levelled.told(std::move(all)), span_.from.number());
        levelled.setFormat(outputs.chunkLayout().format, outputs.chunkRounding());
        return {.seconds = measuring + write(levelled, outputs),
                .levels = levelled.levels(),
                .overloads = levelled.overloads()};
    }

    /// Returns how long that took, in seconds.
    double write(ChunkProducer& chunks, SoundOutputs& outputs) const {
        const OutputLayout& layout = outputs.chunkLayout();
        Progress progress(layout.frames, layout.sampleRate, log_,
                          options_.levels.areGiven() ? "writing, pass 2 of 2" : "");
        PeaksFile peaks(options_.peaks, layout);
        ChunkWriter(chunks, layout, options_.block)
            .run(
                [&](const Chunk& chunk) {
                    outputs.write(chunk);
                    peaks.take(chunk);
                },
                [&](std::int64_t done) { progress.update(done); });
        outputs.commit();
        peaks.write();
        for (const OutputOptions::Stored& stored : stored_)
            log_.note(stored.note);
        for (const std::string& note : outputs.notes())
            log_.note(note);
        return progress.elapsed();
    }

    void requireNoFailure(const MixReport& report) const {
        for (const StripReport& strip : report.strips)
            if (!strip.failure.empty())
                throw CommandError(timeline::whereIs(timeline_, strip.track, strip.strip).text() + ": " +
                                       words::printable(strip.failure, std::string::npos),
                                   ExitStatus::input);
    }

    MixRun runThatEnded(ExitStatus status) const {
        MixRun run{.span = span_,
                   .timeline = options_.timeline.string(),
                   .muted = muted_,
                   .picture = options_.picture.string(),
                   .page = options_.page.string(),
                   .markers = options_.markers.string(),
                   .quiet = options_.style.quiet,
                   .status = status};
        for (std::size_t n = 0; n < options_.outputs.size(); ++n)
            run.outputs.push_back({.path = options_.outputs[n].string()});
        for (std::size_t n = 0; n < stored_.size(); ++n) {
            run.outputs[n].format = stored_[n].format;
            run.outputs[n].clips = clips(stored_[n].format, stored_[n].rounding);
        }
        for (const OutputTarget& stem : stems_)
            run.stems.push_back({stem.path.string(), run.outputs.front().format, run.outputs.front().clips});
        if (options_.slice && !stored_.empty())
            run.slice = {*options_.slice,
                         wholeName(timeline_, whole_, stored_.front().format, stored_.front().rounding)};
        return run;
    }

    /// The text first, which must be told also where the file cannot be written.
    void tell(const MixReport& told, const Written& written) {
        log_.note(rangeNote_);
        MixRun run = runThatEnded(silentClips(told) == 0 ? ExitStatus::done : ExitStatus::incomplete);
        run.seconds = written.seconds;
        run.levels = written.levels;
        log_.result(reportLines(told, timeline_, run), [&] { return reportJson(told, timeline_, run); });
        writeReport(told, run);
    }

    /// The report tells also what failed; what failed is told in any case.
    void reportFailure(const CommandError& failure) {
        if (isReported_ || !mayReport_ || options_.report.empty())
            return;
        MixRun run = runThatEnded(failure.status());
        run.failure = failure.what();
        timeline_.notes = allNotes();
        try {
            writeReport({}, run);
        } catch (const CommandError& error) {
            printError(error.what());
        }
    }

    void writeReport(const MixReport& told, const MixRun& run) {
        isReported_ = true;
        if (!options_.report.empty())
            command::writeOutput(OutputPath(options_.report), jsonText(reportJson(told, timeline_, run)));
    }

    OpenMedia opensMedia() {
        return [this](const std::string& medium) { return media_.open(medium); };
    }

    const OutputCourse* course() const { return course_ ? &*course_ : nullptr; }

    /// Shows a bar while the media are read once more. Programs are told of the sound alone.
    template <class Read>
    void readMedia(const Read& read) const {
        Progress bar(timeline_.length, timeline_.sampleRate, !options_.style.quiet && !options_.style.json);
        read([&](double share) {
            bar.update(static_cast<std::int64_t>(share * static_cast<double>(timeline_.length)));
        });
    }

    void draw(const MixReport& mixed) {
        readMedia([&](const auto& progress) {
            writePicture(drawTimeline(timeline_, mixed, course(), opensMedia(), progress),
                         OutputPath(options_.picture));
        });
    }

    void showOnPage(const MixReport& mixed) {
        Timeline shown = timeline_;
        if (!outputs_.hasSound())
            shown.notes = allNotes();
        const PageSubject subject{.timeline = shown,
                                  .report = mixed,
                                  .course = course(),
                                  .clips = !stored_.empty() && clips(stored_.front().format, stored_.front().rounding),
                                  .fileOf = [this](const std::string& medium) { return shownFile(medium); }};
        readMedia([&](const auto& progress) {
            writePage(OutputPath(options_.page), outputs_.hasSound() ? &outputs_.sounds().front() : nullptr, subject,
                      opensMedia(), progress);
        });
    }

    /// Where the output has them; of the whole timeline where there is none.
    void writeMarkers() const {
        const TimelineSpan span =
            outputs_.hasSound() ? span_ : TimelineSpan{0, TimelineSample() + timeline_.length};
        const std::vector<Marker> markers =
            markersIn({.from = span.from.number(), .to = span.to.number(), .whole = timeline_.length},
                      markersOf(timeline_));
        command::writeOutput(
            OutputPath(options_.markers),
            markersCsv(markers, {.sampleRate = timeline_.sampleRate,
                                 .timeReference = timeline_.timeReference + span.from.number(),
                                 .frameRate = timeline_.frameRate}));
    }

    std::ptrdiff_t silentClips(const MixReport& mixed) const {
        return std::ranges::count_if(mixed.strips,
                                     [](const StripReport& strip) { return !strip.failure.empty(); }) +
               std::ssize(silencesIn(timeline_, span_));
    }

    /// The mix is written by then. Who runs it must still learn that something is missing in it.
    void requireSound(const MixReport& mixed) const {
        if (!outputs_.hasSound())
            return;
        if (const std::ptrdiff_t clips = silentClips(mixed); clips != 0)
            throw CommandError(std::to_string(clips) + (clips == 1 ? " clip is" : " clips are") +
                                   " silent, if only in part, see above; " + outputs_.soundNames() +
                                   (outputs_.sounds().size() > 1 ? " are written" : " is written"),
                               ExitStatus::incomplete);
    }

    const MixOptions& options_;
    MediaFinder media_;
    Outputs outputs_;
    const JobLog log_;
    std::optional<Timeline> given_;
    /// Of the media that cannot be played.
    std::vector<TimelineNote> failures_;
    Timeline timeline_;
    /// What is mixed, and what that is a slice of.
    TimelineSpan span_;
    TimelineSpan whole_;
    std::string rangeNote_;
    /// One for each output of the mix.
    std::vector<OutputOptions::Stored> stored_;
    /// One for each track, or none.
    std::vector<OutputTarget> stems_;
    /// The names of tracks that are not heard.
    std::vector<std::string> muted_;
    /// Where a picture or a page shows it.
    std::optional<OutputCourse> course_;
    /// Whether nothing stands where the report goes but an earlier one.
    bool mayReport_ = false;
    bool isReported_ = false;
};

} // namespace

void runMix(const MixOptions& options, std::optional<Timeline> timeline,
            const std::function<void(const std::filesystem::path&)>& looksAt) {
    Mix(options, std::move(timeline), looksAt).run();
}

} // namespace audlmd::command

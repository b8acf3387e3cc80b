#include "tools/audlmd/mix/Mix.hpp"

#include "host/mix/Mixer.hpp"
#include "host/timeline/List.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/timeline/TimelineFiles.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/files/MarkersCsv.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"
#include "tools/audlmd/mix/MixReportJson.hpp"
#include "tools/audlmd/mix/MixWriting.hpp"
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

/// One mix, from the options to the last line of the report.
class Mix {
public:
    Mix(const MixOptions& options, std::optional<Timeline> timeline,
        const std::function<void(const std::filesystem::path&)>& looksAt)
        : options_(options), media_(options.mediaSearch(options.media, looksAt)),
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
        files_.span = options_.sliceOf(whole_);
        files_.sounds = outputs_.sounds();
        files_.stored = options_.storedIn(outputs_.sounds(), options_.kept);
        if (!options_.stems.empty())
            settleStems();
    }

    /// Their files are known only now.
    void settleStems() {
        const OutputTarget& first = outputs_.sounds().front();
        // What has no header where it goes into a stream has one in a file.
        const FileKind& kind =
            first.isStream && first.kind == &rawFileKind() ? *findFileKind("x.wav") : *first.kind;
        files_.stems = outputs_.add(stemFiles(timeline_, options_.stems, kind.extension), kind);
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
        return outputs_.hasSound() ? files_.span : TimelineSpan{-far, far};
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
        const timeline::FoundMedium& found = media_.find(medium);
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
                                       .stems = !files_.stems.empty(),
                                       .inlined = options_.inlined()});
        }
        if (!options_.picture.empty() || !options_.page.empty())
            course_.emplace(files_.span, outputLayout(timeline_), timeline_.sampleRate,
                            options_.page.empty() ? OutputCourse::Loudness::leftOut
                                                  : OutputCourse::Loudness::measured);
        WrittenMix written = writeMix(*mixer, files_, options_, course_ ? &*course_ : nullptr, log_);
        tell(written);
        return std::move(written.report);
    }

    MixRun runThatEnded(ExitStatus status) const {
        MixRun run{.span = files_.span,
                   .timeline = options_.timeline.string(),
                   .muted = muted_,
                   .picture = options_.picture.string(),
                   .page = options_.page.string(),
                   .markers = options_.markers.string(),
                   .quiet = options_.style.quiet,
                   .status = status};
        for (std::size_t n = 0; n < options_.outputs.size(); ++n)
            run.outputs.push_back({.path = options_.outputs[n].string()});
        for (std::size_t n = 0; n < files_.stored.size(); ++n) {
            run.outputs[n].format = files_.stored[n].format;
            run.outputs[n].clips = clips(files_.stored[n].format, files_.stored[n].rounding);
        }
        for (const OutputTarget& stem : files_.stems)
            run.stems.push_back({stem.path.string(), run.outputs.front().format, run.outputs.front().clips});
        if (options_.slice && !files_.stored.empty())
            run.slice = {*options_.slice, wholeName(timeline_, whole_, files_.stored.front().format,
                                                    files_.stored.front().rounding)};
        return run;
    }

    /// The text first, which must be told also where the file cannot be written.
    void tell(const WrittenMix& written) {
        log_.note(rangeNote_);
        const MixReport& mixed = written.report;
        MixRun run = runThatEnded(silentClips(mixed) == 0 ? ExitStatus::done : ExitStatus::incomplete);
        run.seconds = written.seconds;
        run.levels = written.levels;
        log_.result(reportLines(mixed, timeline_, run), [&] { return reportJson(mixed, timeline_, run); });
        writeReport(mixed, run);
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
                                  .clips = !files_.stored.empty() && clips(files_.stored.front().format,
                                                                           files_.stored.front().rounding),
                                  .fileOf = [this](const std::string& medium) { return shownFile(medium); }};
        readMedia([&](const auto& progress) {
            writePage(OutputPath(options_.page), outputs_.hasSound() ? &outputs_.sounds().front() : nullptr,
                      subject, opensMedia(), progress);
        });
    }

    /// Where the output has them; of the whole timeline where there is none.
    void writeMarkers() const {
        const TimelineSpan span =
            outputs_.hasSound() ? files_.span : TimelineSpan{0, TimelineSample() + timeline_.length};
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
               std::ssize(silencesIn(timeline_, files_.span));
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
    timeline::MediaFinder media_;
    Outputs outputs_;
    const JobLog log_;
    std::optional<Timeline> given_;
    /// Of the media that cannot be played.
    std::vector<TimelineNote> failures_;
    Timeline timeline_;
    /// What is mixed, and what that is a slice of.
    MixedFiles files_;
    TimelineSpan whole_;
    std::string rangeNote_;
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

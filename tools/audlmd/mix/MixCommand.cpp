#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/timeline/List.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/timeline/TimelineFiles.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/files/PictureFile.hpp"
#include "tools/audlmd/mix/MediaCheck.hpp"
#include "tools/audlmd/mix/MixJob.hpp"
#include "tools/audlmd/mix/MixOptions.hpp"
#include "tools/audlmd/mix/MixReportText.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"
#include "tools/audlmd/mix/picture/TimelineFigure.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
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
    explicit Mix(const MixOptions& options) : options_(options), media_(options.media) {
        options.requireCompatible();
    }

    void run() {
        findOutputs();
        readTimeline();
        lookAtMedia();
        if (options_.list)
            list();
        else if (!target_)
            tellNotes(report(), allNotes());
        if (options_.strict)
            requireAllHeard();
        MixReport mixed;
        if (target_)
            mixed = mix();
        if (!options_.picture.empty())
            draw(mixed);
        requireSound(mixed);
    }

private:
    /// Where the report goes: standard output, or standard error if the samples go to a stream or another
    /// output to standard output.
    FILE* report() const {
        const auto takesOutput = [](const OutputPath& output) { return output.inherited == STDOUT_FILENO; };
        const bool taken = (target_ && target_->isStream) || std::ranges::any_of(outputs_, takesOutput);
        return taken ? stderr : stdout;
    }

    /// Before anything is read, so that wrong names are refused at once.
    void findOutputs() {
        if (!options_.output.empty())
            target_.emplace(options_.output);
        if (!options_.picture.empty())
            pictureKindOf(options_.picture); // Throws for a name that could not be written.
        for (const std::filesystem::path& output : {options_.output, options_.report, options_.picture})
            if (!output.empty())
                outputs_.emplace_back(output);
        requireDistinct(outputs_);
    }

    void readTimeline() {
        timeline_ = readTimelineFile(
            options_.timeline,
            {.rate = options_.rate, .channels = options_.channels, .timeline = options_.timelineName},
            media_);
        requireOther(options_.timeline, "the timeline");
        if (target_)
            span_ = options_.spanOf(timeline_);
    }

    /// Throws CommandError if one of the files to write is an input. `what` says what the input is.
    void requireOther(const std::filesystem::path& input, const std::string& what) const {
        for (const OutputPath& output : outputs_)
            command::requireOther(output, input, what);
    }

    /// Of the output: what is looked at.
    TimelineSpan part() const {
        constexpr std::int64_t far = std::numeric_limits<std::int64_t>::max();
        return target_ ? span_ : TimelineSpan{-far, far};
    }

    /// Before anything is written.
    void lookAtMedia() {
        MediaCheck check = checkMedia(timeline_, part(), media_);
        for (const std::filesystem::path& file : check.files)
            requireOther(file, "a medium of the timeline");
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
        throw CommandError(words::printable(line, std::string::npos));
    }

    MixReport mix() {
        allowManyOpenFiles();
        std::optional<Mixer> mixer;
        {
            // The threads that the mixer starts leave the signals to this thread.
            const EndingSignalsBlocked blocked;
            mixer.emplace(
                timeline_, [this](const std::string& medium) { return media_.open(medium); },
                MixerOptions{.threads = options_.threads,
                             .block = options_.block,
                             .inlined = options_.throughTables ? nullptr : &inlinedRenderFunction});
        }
        const double seconds = writeOutput(*mixer);
        MixReport mixed = mixer->report();
        tell(mixed, {.span = span_,
                     .seconds = seconds,
                     .timeline = options_.timeline.string(),
                     .output = options_.output.string()});
        return mixed;
    }

    /// Returns how long that took, in seconds.
    double writeOutput(Mixer& mixer) const {
        OutputLayout layout{.channels = static_cast<int>(timeline_.channels),
                            .sampleRate = timeline_.sampleRate,
                            .frames = span_.length(),
                            .timeReference = timeline_.timeReference + span_.from.number()};
        layout.format = options_.format.value_or(defaultFormatOf(*target_->kind));
        OutputFile output(*target_, layout);
        Progress progress(layout.frames, layout.sampleRate);
        MixJob(mixer, span_, layout).run(output, [&](std::int64_t done) {
            progress.update(done);
            if (options_.strict)
                requireNoFailure(mixer.report());
        });
        output.commit();
        return progress.elapsed();
    }

    void requireNoFailure(const MixReport& report) const {
        for (const StripReport& strip : report.strips)
            if (!strip.failure.empty())
                throw CommandError(timeline::whereIs(timeline_, strip.track, strip.strip).text() + ": " +
                                   words::printable(strip.failure, std::string::npos));
    }

    void tell(const MixReport& told, const MixRun& run) const {
        if (!options_.report.empty())
            command::writeOutput(OutputPath(options_.report), reportJson(told, timeline_, run));
        std::fputs(reportText(told, timeline_, run).c_str(), report());
    }

    void draw(const MixReport& mixed) {
        Progress bar(timeline_.length, timeline_.sampleRate);
        const plot::Figure figure = drawTimeline(
            timeline_, mixed, [this](const std::string& medium) { return media_.open(medium); },
            [&](double share) {
                bar.update(static_cast<std::int64_t>(share * static_cast<double>(timeline_.length)));
            });
        writePicture(figure, OutputPath(options_.picture));
    }

    /// The mix is written by then. Who runs it must still learn that something is missing in it.
    void requireSound(const MixReport& mixed) const {
        if (!target_)
            return;
        const auto failed = std::ranges::count_if(
            mixed.strips, [](const StripReport& strip) { return !strip.failure.empty(); });
        const auto all = failed + std::ssize(silencesIn(timeline_, span_));
        if (all != 0)
            throw CommandError(std::to_string(all) + (all == 1 ? " clip is" : " clips are") +
                               " silent, if only in part, see above; '" +
                               words::printable(target_->path.string()) + "' is written");
    }

    const MixOptions& options_;
    MediaFinder media_;
    /// Of the media that cannot be played.
    std::vector<TimelineNote> failures_;
    std::optional<OutputTarget> target_;
    /// All files to write.
    std::vector<OutputPath> outputs_;
    Timeline timeline_;
    TimelineSpan span_;
};

} // namespace

void addMixCommand(CLI::App& app) {
    CLI::App* mix = app.add_subcommand("mix", "Mix a timeline into a sound file, or show what sounds when");
    const auto options = std::make_shared<MixOptions>();
    options->declare(*mix);
    mix->callback([options] { Mix(*options).run(); });
}

} // namespace audlmd::command

#include "standalone/inlined/InlinedRenderFunctions.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/files/PictureFile.hpp"
#include "tools/audlmd/mix/MediaFinder.hpp"
#include "tools/audlmd/mix/MixJob.hpp"
#include "tools/audlmd/mix/MixOptions.hpp"
#include "tools/audlmd/mix/MixReportText.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"
#include "tools/audlmd/mix/picture/TimelineFigure.hpp"
#include "tools/timeline/TimelineFiles.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

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
        checkMedia();
        if (options_.list)
            list();
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
        timeline_ = readTimelineFile(options_.timeline,
                                     {.rate = options_.rate, .channels = options_.channels}, media_);
        requireOther(options_.timeline, "the timeline");
        if (target_)
            span_ = options_.spanOf(timeline_);
    }

    /// Throws CommandError if one of the files to write is an input. `what` says what the input is.
    void requireOther(const std::filesystem::path& input, const std::string& what) const {
        for (const OutputPath& output : outputs_)
            command::requireOther(output, input, what);
    }

    /// Looks at every medium once, before anything is written.
    void checkMedia() {
        std::set<std::string> seen;
        for (std::size_t track = 0; track < timeline_.tracks.size(); ++track)
            for (std::size_t i = 0; i < timeline_.tracks[track].strips.size(); ++i)
                if (const TimelineStrip& strip = timeline_.tracks[track].strips[i];
                    isWanted(strip) && seen.insert(strip.media).second)
                    checkMedium(strip.media, timeline::whereIs(timeline_, track, i).text());
    }

    bool isWanted(const TimelineStrip& strip) const {
        return !target_ || (strip.at < span_.to && strip.at + strip.length > span_.from);
    }

    void checkMedium(const std::string& medium, const std::string& where) {
        media_.requireNoVideo(medium, where);
        if (const std::optional<std::filesystem::path> path = media_.find(medium))
            requireOther(*path, "a medium of the timeline");
        else if (!options_.strict)
            timeline_.notes.push_back({where, "the medium '" + timeline::printable(medium) + "' is missing"});
        if (options_.strict)
            try {
                media_.open(medium);
            } catch (const std::exception& error) {
                throw CommandError(where + ": " + error.what());
            }
    }

    void list() const {
        const std::string shown =
            options_.as == "json" ? timeline::writeJson(timeline_).dump(2) + "\n" : timeline::list(timeline_);
        std::fputs(shown.c_str(), report());
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
        tell(mixed, {.span = span_, .seconds = seconds});
        return mixed;
    }

    /// Returns how long that took, in seconds.
    double writeOutput(Mixer& mixer) const {
        OutputLayout layout{.channels = static_cast<int>(timeline_.channels),
                            .sampleRate = timeline_.sampleRate,
                            .frames = span_.to - span_.from,
                            .timeReference = timeline_.timeReference + span_.from};
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
                                   strip.failure);
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
        const auto failed = std::ranges::count_if(
            mixed.strips, [](const StripReport& strip) { return !strip.failure.empty(); });
        if (failed != 0)
            throw CommandError(std::to_string(failed) + (failed == 1 ? " clip is" : " clips are") +
                               " silent, see above; '" + target_->path.string() + "' is written");
    }

    const MixOptions& options_;
    MediaFinder media_;
    std::optional<OutputTarget> target_;
    /// All files to write.
    std::vector<OutputPath> outputs_;
    Timeline timeline_;
    OutputSpan span_;
};

} // namespace

void addMixCommand(CLI::App& app) {
    CLI::App* mix = app.add_subcommand("mix", "Mix a timeline into a sound file, or show what sounds when");
    const auto options = std::make_shared<MixOptions>();
    options->declare(*mix);
    mix->callback([options] { Mix(*options).run(); });
}

} // namespace audlmd::command

#include "tools/audlmd/mix/MixWriting.hpp"

#include "host/timeline/TimelineError.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/files/LevelledChunks.hpp"
#include "tools/audlmd/files/PeaksFile.hpp"
#include "tools/audlmd/mix/MixedChunks.hpp"
#include "tools/audlmd/mix/Stems.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"

#include <cstddef>
#include <string>
#include <utility>

namespace audlmd::command {
namespace {

/// Of all channels of the output, and behind them of those of the stems.
void takeOverloads(const std::vector<Overload>& all, MixReport& mixed) {
    auto next = all.begin();
    for (Overload& channel : mixed.channels)
        channel = *next++;
    for (std::vector<Overload>& stem : mixed.stems)
        for (Overload& channel : stem)
            channel = *next++;
}

/// One pass, or two, over a mixer.
class Writing {
public:
    Writing(Mixer& mixer, const MixedFiles& files, const MixOptions& options, OutputCourse* course,
            const JobLog& log)
        : mixer_(mixer), files_(files), options_(options), course_(course), log_(log) {}

    WrittenMix run() {
        std::optional<MadeFolder> folder;
        if (!files_.stems.empty())
            folder.emplace(options_.stems);
        const auto requireAll = [this] {
            if (options_.strict)
                requireNoFailure(mixer_.report());
        };
        WrittenMix mix;
        std::vector<SoundOutput> all = allOutputs();
        if (options_.levels.areGiven()) {
            LevelledChunks levelled(options_.levels, all, files_.span.from, options_.threads);
            MixedChunks mixed(mixer_, files_.span.from, levelled.floats(), Rounding::nearest, options_.block,
                              requireAll, course_);
            mix.seconds = measure(levelled, mixed);
            SoundOutputs outputs(levelled.told(std::move(all)), files_.span.from.number());
            levelled.setFormat(outputs.chunkLayout().format, outputs.chunkRounding());
            mix.seconds += write(levelled, outputs);
            mix.levels = levelled.levels();
            mix.report = mixer_.report();
            // The mixer does not know what was over full scale behind the gain.
            takeOverloads(levelled.overloads(), mix.report);
            return mix;
        }
        SoundOutputs outputs(std::move(all), files_.span.from.number());
        MixedChunks mixed(mixer_, files_.span.from, outputs.chunkLayout(), outputs.chunkRounding(),
                          options_.block, requireAll, course_);
        mix.seconds = write(mixed, outputs);
        mix.report = mixer_.report();
        return mix;
    }

private:
    const Timeline& timeline() const { return mixer_.timeline(); }

    /// One of the outputs, with what it says beside its samples. A file without a header says nothing.
    SoundOutput outputTo(const OutputTarget& target, const OutputOptions::Stored& stored,
                         const std::string& title, std::size_t firstChannel = 0) const {
        const ChannelLayout speakers = outputLayout(timeline());
        OutputLayout layout{.format = stored.format,
                            .channels = static_cast<int>(speakers.size()),
                            .sampleRate = timeline().sampleRate,
                            .frames = files_.span.length(),
                            .speakers = speakers};
        if (!options_.noMetadata && target.kind != &rawFileKind()) {
            layout.timeReference = timeline().timeReference + files_.span.from.number();
            if (!title.empty())
                layout.metadata.tags[SF_STR_TITLE] = title;
            layout.metadata.markers = markersOf(timeline());
            layout.metadata.sampleRate = layout.sampleRate;
            moveInto(layout.metadata,
                     {.from = files_.span.from.number(),
                      .to = files_.span.to.number(),
                      .whole = timeline().length},
                     layout.sampleRate);
        }
        return {target, std::move(layout), stored.rounding, firstChannel};
    }

    /// The mix in all its files, and the stems, in the order of the mixer's channels.
    std::vector<SoundOutput> allOutputs() const {
        std::vector<SoundOutput> all;
        for (std::size_t n = 0; n < files_.stored.size(); ++n)
            all.push_back(outputTo(files_.sounds[n], files_.stored[n], timeline().name));
        for (std::size_t track = 0; track < files_.stems.size(); ++track)
            all.push_back(outputTo(files_.stems[track], files_.stored.front(), timeline().tracks[track].name,
                                   (track + 1) * outputLayout(timeline()).size()));
        return all;
    }

    /// The first pass. Returns how long that took, in seconds.
    double measure(LevelledChunks& levelled, MixedChunks& mixed) {
        Progress progress(files_.span.length(), timeline().sampleRate, log_, "measuring, pass 1 of 2");
        levelled.measure(mixed, options_.block, [&](std::int64_t done) { progress.update(done); });
        if (course_ != nullptr)
            course_->amplify(levelled.levels());
        return progress.elapsed();
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
        for (const OutputOptions::Stored& stored : files_.stored)
            log_.note(stored.note);
        for (const std::string& note : outputs.notes())
            log_.note(note);
        return progress.elapsed();
    }

    void requireNoFailure(const MixReport& report) const {
        for (const StripReport& strip : report.strips)
            if (!strip.failure.empty())
                throw CommandError(timeline::whereIs(timeline(), strip.track, strip.strip).text() + ": " +
                                       words::printable(strip.failure, std::string::npos),
                                   ExitStatus::input);
    }

    Mixer& mixer_;
    const MixedFiles& files_;
    const MixOptions& options_;
    OutputCourse* const course_;
    const JobLog& log_;
};

} // namespace

WrittenMix writeMix(Mixer& mixer, const MixedFiles& files, const MixOptions& options, OutputCourse* course,
                    const JobLog& log) {
    return Writing(mixer, files, options, course, log).run();
}

} // namespace audlmd::command

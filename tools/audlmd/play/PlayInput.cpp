#include "tools/audlmd/play/PlayInput.hpp"

#include "host/play/LiveContent.hpp"
#include "host/signal/GainLaws.hpp"
#include "host/timeline/List.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/Metadata.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <set>
#include <utility>

namespace audlmd::command {
namespace {

/// The strip as it lies forwards at its own speed: direction and speed are the transport's, but for the speed
/// of the converter best.
StripSettings forwards(const StripSettings& asRendered, bool converts) {
    StripSettings strip = asRendered.reverse ? settingsAt(asRendered, -1.0) : asRendered;
    // At the speed that is asked for the transport plays normally, and converts at others.
    if (strip.converter == Converter::best)
        return strip;
    strip.speed = 1.0;
    // Keep the linear converter if the user chose it; the transport adds the filtering one by itself.
    if (!converts || strip.converter != Converter::linear)
        strip.converter = Converter::none;
    return strip;
}

} // namespace

PlayInput::PlayInput(const PlayOptions& options, const std::filesystem::path& name, const PlayableFile& file)
    : options_(options), name_(name), isTimeline_(isTimelineFile(name)) {
    if (isTimeline_)
        openTimeline();
    else
        openSound(file);
}

void PlayInput::openSound(const PlayableFile& file) {
    OpenInput opened = options_.open(file.path, name_);
    media_ = options_.strip.amplified(std::move(opened.media));
    const Metadata metadata = readMetadata(file.path);
    markers_ = atRate(metadata.markers, options_.taken().rateOf(metadata.sampleRate), media_.sampleRate);
    if (!file.note.empty())
        notes_.push_back(file.note);
    notes_.insert(notes_.end(), opened.notes.begin(), opened.notes.end());
    // Where nobody chooses the converter, the transport does.
    StripOptions asked = options_.strip;
    if (asked.speed && !asked.converter)
        asked.converter = Converter::filtering;
    const ResolvedStrip strip = asked.settingsFor(
        {.path = name_, .frames = media_.channels.front()->length(), .sampleRate = media_.sampleRate});
    std::ranges::copy_if(strip.notes, std::back_inserter(notes_),
                         [](const std::string& note) { return !note.empty(); });
    settings_ = forwards(strip.settings, options_.strip.converter.has_value());
}

void PlayInput::openTimeline() {
    finder_ = std::make_unique<timeline::MediaFinder>(options_.mediaSearch(options_.media));
    timeline_ = readTimelineFile(name_, {.rate = options_.rate, .channels = options_.channels}, *finder_);
    markers_ = markersOf(timeline_);
    if (timeline_.length <= 0)
        throw CommandError(words::quoted(name_.string()) + " has nothing to play", ExitStatus::input);
    const std::vector<std::string> muted = options_.tracks.applyTo(timeline_);
    if (options_.strip.gain)
        amplify(*options_.strip.gain);
    addTimelineNotes();
    if (!muted.empty())
        notes_.push_back(mutedLine(muted));
}

void PlayInput::amplify(double decibels) {
    const std::size_t channels = layout().size();
    Routing gain{.rows = std::vector(channels, std::vector<float>(channels))};
    for (std::size_t channel = 0; channel < channels; ++channel)
        gain.rows[channel][channel] = static_cast<float>(gainOfDecibels(decibels));
    if (timeline_.foldDown)
        gain = combined(timeline_.foldDown->routing, gain);
    timeline_.foldDown = {std::move(gain), layout()};
}

void PlayInput::addTimelineNotes() {
    constexpr std::size_t mostLines = 12;
    const TimelineSpan whole{0, std::int64_t{timeline_.length}};
    std::vector<TimelineNote> notes = timeline_.notes;
    MediaCheck check = checkMedia(timeline_, whole, *finder_);
    silences_ = std::ssize(silencesIn(timeline_, whole));
    for (std::vector<TimelineNote>* found : {&check.failures, &check.choices})
        notes.insert(notes.end(), found->begin(), found->end());
    // Those by which something is silent come first, so that they are not among those left out.
    std::stable_partition(notes.begin(), notes.end(), [](const TimelineNote& note) { return note.silences; });
    notes_ = timeline::noteLines(notes, timeline_.sampleRate);
    if (notes_.size() <= mostLines)
        return;
    const std::size_t more = notes_.size() - mostLines;
    notes_.resize(mostLines);
    notes_.push_back("and " + std::to_string(more) + " more; audlmd mix --list shows all");
}

std::size_t PlayInput::channels() const {
    return layout().size();
}

RangeOf PlayInput::whole() const {
    return {.name = words::quoted(name_.string()),
            .length = isTimeline_ ? std::int64_t{timeline_.length} : media_.channels.front()->length(),
            .sampleRate = sampleRate(),
            .markers = markers_};
}

int PlayInput::sampleRate() const {
    return isTimeline_ ? timeline_.sampleRate : media_.sampleRate;
}

ChannelLayout PlayInput::layout() const {
    return isTimeline_ ? outputLayout(timeline_) : layoutOf(media_);
}

std::string PlayInput::foldDownTo(std::size_t channels) {
    const ChannelLayout before = layout();
    ChannelOptions fewer;
    fewer.channels = unknownLayout(channels);
    const std::optional<FoldDown> foldDown = fewer.foldDownOf(before, name_.string());
    if (!foldDown)
        return "";
    if (!isTimeline_)
        media_ = foldedDown(media_, *foldDown);
    else if (timeline_.foldDown)
        timeline_.foldDown = {combined(timeline_.foldDown->routing, foldDown->routing), foldDown->layout};
    else
        timeline_.foldDown = foldDown;
    return foldDownText(before, foldDown->layout);
}

std::string PlayInput::nameAt(TimelineSample position) const {
    const TimelineStrip* last = nullptr;
    std::size_t sounding = 0;
    for (const TimelineTrack& track : timeline_.tracks)
        for (const TimelineStrip& strip : track.strips) {
            if (!strip.silence.empty() || position < strip.at || position >= strip.at + strip.length)
                continue;
            ++sounding;
            if (last == nullptr || strip.at >= last->at)
                last = &strip;
        }
    if (last == nullptr)
        return name_ == "-" ? "standard input" : name_.filename().string();
    const std::string clip =
        last->name.empty() ? std::filesystem::path(last->media).filename().string() : last->name;
    return clip + (sounding > 1 ? " +" + std::to_string(sounding - 1) : "");
}

void PlayInput::tell(const LiveReport& report) const {
    if (!report.sound.failure.empty())
        throw CommandError(report.sound.failure, ExitStatus::input);
    // A strip may be reported twice.
    std::set<StripKey> failed;
    for (const StripReport& strip : report.strips) {
        const std::string where = words::printable(nameOf(strip), std::string::npos);
        if (strip.underrunSamples != 0)
            std::printf("late: %s, %llu samples\n", where.c_str(),
                        static_cast<unsigned long long>(strip.underrunSamples));
        if (strip.failure.empty())
            continue;
        failed.insert(strip);
        const std::string failure = words::printable(strip.failure, std::string::npos);
        // A medium that is not there is among the notes.
        if (std::ranges::none_of(
                notes_, [&](const std::string& note) { return note.find(failure) != std::string::npos; }))
            std::printf("silent: %s: %s\n", where.c_str(), failure.c_str());
    }
    if (const std::ptrdiff_t silent = silences_ + std::ssize(failed); silent != 0)
        throw CommandError(words::quoted(name_.string()) + ": " + std::to_string(silent) +
                               (silent == 1 ? " clip is" : " clips are") +
                               " silent, if only in part, see above",
                           ExitStatus::incomplete);
}

std::string PlayInput::nameOf(const StripReport& strip) const {
    return timeline::whereIs(timeline_, strip.track, strip.strip).text();
}

std::unique_ptr<LivePlayer> PlayInput::makePlayer(const LiveOptions& live) const {
    if (!isTimeline_)
        return std::make_unique<LivePlayer>(media_, settings_, live);
    return std::make_unique<LivePlayer>(
        timeline_, [this](const std::string& medium) { return finder_->open(medium); }, live);
}

} // namespace audlmd::command

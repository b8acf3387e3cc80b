#include "tools/audlmd/play/PlayInput.hpp"

#include "host/play/LiveContent.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/Metadata.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"

#include <cstdio>
#include <utility>

namespace audlmd::command {
namespace {

/// The strip as it lies forwards at its own speed: direction and speed are the transport's.
StripSettings forwards(const StripSettings& asRendered, bool converts) {
    StripSettings strip = asRendered.reverse ? settingsAt(asRendered, -1.0) : asRendered;
    strip.speed = 1.0;
    // Keep the linear converter if the user chose it; the transport adds the filtering one by itself.
    if (!converts || strip.converter == Converter::filtering)
        strip.converter = Converter::none;
    return strip;
}

} // namespace

PlayInput::PlayInput(const PlayOptions& options) : options_(options), isTimeline_(options.isTimeline()) {
    if (isTimeline_)
        openTimeline();
    else
        openSound();
}

void PlayInput::openSound() {
    const PlayableFile atHand = options_.atHand(options_.input);
    if (!atHand.note.empty())
        std::puts(atHand.note.c_str());
    OpenInput opened = options_.open(atHand.path, options_.input);
    media_ = options_.strip.amplified(std::move(opened.media));
    const Metadata metadata = readMetadata(atHand.path);
    markers_ = atRate(metadata.markers, metadata.sampleRate, media_.sampleRate);
    for (const std::string& note : opened.notes)
        std::puts(note.c_str());
    settings_ = forwards(options_.strip
                             .settingsFor({.path = options_.input,
                                           .frames = media_.channels.front()->length(),
                                           .sampleRate = media_.sampleRate})
                             .settings,
                         options_.strip.converter.has_value());
}

void PlayInput::openTimeline() {
    finder_ = std::make_unique<MediaFinder>(options_.media, options_);
    timeline_ =
        readTimelineFile(options_.input, {.rate = options_.rate, .channels = options_.channels}, *finder_);
    markers_ = markersOf(timeline_);
    if (timeline_.length <= 0)
        throw CommandError("'" + options_.input.string() + "' has nothing to play", ExitStatus::input);
}

std::size_t PlayInput::channels() const {
    return layout().size();
}

RangeOf PlayInput::whole() const {
    return {.name = words::quoted(options_.input.string()),
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
    const std::optional<FoldDown> foldDown = fewer.foldDownOf(before, options_.input.string());
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

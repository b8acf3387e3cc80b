#include "tools/audlmd/play/PlayInput.hpp"

#include "host/play/LiveContent.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"

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
    media_ = options_.strip.amplified(options_.open(options_.atHand(options_.input), options_.input));
    settings_ = forwards(options_.strip
                             .settingsFor({.path = options_.input,
                                           .frames = media_.channels.front()->length(),
                                           .sampleRate = media_.sampleRate})
                             .settings,
                         options_.strip.converter.has_value());
}

void PlayInput::openTimeline() {
    finder_ = std::make_unique<MediaFinder>(options_.media);
    timeline_ = readTimelineFile(options_.input, {.rate = options_.rate, .channels = {}}, *finder_);
    if (timeline_.length <= 0)
        throw CommandError("'" + options_.input.string() + "' has nothing to play", ExitStatus::input);
}

std::size_t PlayInput::channels() const {
    return isTimeline_ ? timeline_.channels : media_.channels.size();
}

RangeOf PlayInput::whole() const {
    return {.name = words::quoted(options_.input.string()),
            .length = isTimeline_ ? std::int64_t{timeline_.length} : media_.channels.front()->length(),
            .sampleRate = sampleRate()};
}

int PlayInput::sampleRate() const {
    return isTimeline_ ? timeline_.sampleRate : media_.sampleRate;
}

void PlayInput::doubleChannel() {
    if (isTimeline_)
        timeline_.channels = 2;
    else
        media_.channels.push_back(media_.channels.front());
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

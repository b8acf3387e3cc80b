#include "tools/audlmd/mix/SoundTimeline.hpp"

#include "host/mix/ConvertedSources.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/ContainerFile.hpp"

#include <algorithm>
#include <utility>

namespace audlmd::command {

SoundTimeline::SoundTimeline(const RenderingOptions& options) : options_(options) {
    timeline_.channels = 0;
}

void SoundTimeline::append(const std::filesystem::path& input, const std::optional<FadeValue>& crossfade) {
    TimelineStrip strip = open(input);
    if (timeline_.tracks.empty())
        timeline_.tracks.emplace_back();
    std::vector<TimelineStrip>& strips = timeline_.tracks.front().strips;
    const std::int64_t overlap = crossfade ? crossfade->length.samples(timeline_.sampleRate) : 0;
    const bool isFirst = strips.empty();
    if (overlap > strip.length ||
        (!isFirst && static_cast<std::int64_t>(strips.back().settings.fade.fadeInSamples) + overlap >
                         strips.back().length))
        throw CommandError(
            "--crossfade: " + words::quoted(overlap > strip.length ? input.string() : strips.back().media) +
            " is too short to be crossfaded for " + crossfade->length.text() +
            " at each side that has a neighbour");
    if (overlap != 0 && !isFirst) {
        FadePlan& before = strips.back().settings.fade;
        before.fadeOutSamples = static_cast<std::uint64_t>(overlap);
        before.fadeOutCurve = strip.settings.fade.fadeInCurve = crossfade->curve;
        strip.settings.fade.fadeInSamples = before.fadeOutSamples;
        timeline_.length = timeline_.length - overlap;
        format_.reset();
    }
    strip.at = TimelineSample() + timeline_.length;
    timeline_.length = timeline_.length + strip.length;
    strips.push_back(std::move(strip));
}

void SoundTimeline::addTrack(const std::filesystem::path& input) {
    TimelineStrip strip = open(input);
    timeline_.length = std::max<std::int64_t>(timeline_.length, strip.length);
    timeline_.tracks.push_back({.name = strip.name, .strips = {}});
    timeline_.tracks.back().strips.push_back(std::move(strip));
}

Timeline SoundTimeline::timeline() && {
    timeline_.foldDown = options_.channels.foldDownOf(layoutOf(timeline_), "what the files make together");
    return std::move(timeline_);
}

TimelineStrip SoundTimeline::open(const std::filesystem::path& input) {
    const PlayableFile playable = options_.decoding.playable(input, std::nullopt, options_.style);
    const Media media = openRecording(playable.path.string(), options_.truncated());
    const bool isFirst = timeline_.channels == 0;
    if (isFirst)
        timeline_.sampleRate = options_.rate.value_or(media.sampleRate);
    noteFormat(playable.path, media, isFirst);
    if (media.channels.size() > timeline_.channels) {
        timeline_.channels = media.channels.size();
        timeline_.layout = layoutOf(media);
    }
    TimelineStrip strip;
    strip.name = input.filename().string();
    // Not the sound that may stand beside a film.
    strip.media = playable.isDecoded ? input.string() + "#stream=1" : input.string();
    strip.length = convertedTo(media.channels.front(), media.sampleRate, timeline_.sampleRate)->length();
    if (strip.length == 0)
        throw CommandError(words::quoted(input.string()) + " holds no samples", ExitStatus::input);
    strip.settings.to = std::int64_t{strip.length};
    return strip;
}

void SoundTimeline::noteFormat(const std::filesystem::path& file, const Media& media, bool isFirst) {
    const std::optional<FormatId> format = ContainerFile(file).format();
    const bool isAlike = isFirst || (format == format_ && media.channels.size() == timeline_.channels);
    const bool isCopied = media.sampleRate == timeline_.sampleRate && format != FormatId::s32;
    format_ = isAlike && isCopied ? format : std::nullopt;
}

} // namespace audlmd::command

#include "c/BuiltTimeline.hpp"
#include "c/Failure.hpp"
#include "c/Files.hpp"
#include "c/Options.hpp"
#include "c/Samples.hpp"
#include "c/Sound.hpp"
#include "c/Text.hpp"
#include "c/audlmd.h"
#include "host/services/SampleRates.hpp"
#include "host/timeline/ReportText.hpp"
#include "host/timeline/TimelineFiles.hpp"
#include "host/words/Text.hpp"

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace audlmd::c {
namespace {

Sound soundOf(std::span<const float> interleaved, int channels, int sampleRate) {
    Sound sound{.media = {.channels = {}, .sampleRate = sampleRate}};
    const auto width = static_cast<std::size_t>(channels);
    for (std::size_t channel = 0; channel < width; ++channel) {
        std::vector<float> samples(interleaved.size() / width);
        for (std::size_t n = 0; n < samples.size(); ++n)
            samples[n] = interleaved[n * width + channel];
        sound.media.channels.push_back(std::make_shared<MemorySource>(std::move(samples)));
    }
    return sound;
}

/// A timeline of the sound alone.
Sound stripOf(const Sound& sound, Options options) {
    const int sampleRate =
        options.takeWhole("sampleRate", lowestSampleRate, highestSampleRate).value_or(sound.media.sampleRate);
    const MixOptions mix = takeMixOptions(options);
    BuiltTimeline built({{"sampleRate", sampleRate}, {"channels", sound.media.channels.size()}});
    built.add("", sound, options.rest());
    Timeline timeline = built.timeline();
    timeline.layout = layoutOf(sound.media);
    return mixed(std::move(timeline), built.opener(), mix);
}

const MixedTimeline& mixOf(const audlmd_sound* sound) {
    if (sound->sound.mix == nullptr)
        throw std::invalid_argument("only a mix and a strip have a timeline and a report");
    return *sound->sound.mix;
}

} // namespace
} // namespace audlmd::c

using namespace audlmd;
using c::guarded;

const char* audlmd_version() {
    return AUDLMD_VERSION;
}

const char* audlmd_error() {
    return c::lastError.c_str();
}

audlmd_sound* audlmd_open(const char* path, const char* const* options) {
    return guarded<audlmd_sound*>(nullptr,
                                  [&] { return new audlmd_sound{c::openFile(path, c::Options(options))}; });
}

audlmd_sound* audlmd_from_samples(const float* interleaved, int64_t frames, int channels, int sample_rate) {
    return guarded<audlmd_sound*>(nullptr, [&] {
        if (channels < 1 || channels > 1024)
            throw std::invalid_argument("a sound has 1 to 1024 channels, not " + std::to_string(channels));
        if (sample_rate < lowestSampleRate || sample_rate > highestSampleRate)
            throw std::invalid_argument("the sample rate " + std::to_string(sample_rate) + " is not from " +
                                        std::to_string(lowestSampleRate) + " to " +
                                        std::to_string(highestSampleRate));
        if (frames < 0)
            throw std::invalid_argument("the number of frames cannot be negative");
        const auto count = static_cast<std::size_t>(frames) * static_cast<std::size_t>(channels);
        return new audlmd_sound{c::soundOf({interleaved, count}, channels, sample_rate)};
    });
}

audlmd_sound* audlmd_strip(const audlmd_sound* sound, const char* const* options) {
    return guarded<audlmd_sound*>(
        nullptr, [&] { return new audlmd_sound{c::stripOf(sound->sound, c::Options(options))}; });
}

audlmd_sound* audlmd_mix(const audlmd_timeline* timeline, const char* const* options) {
    return guarded<audlmd_sound*>(nullptr, [&] {
        c::Options asked(options);
        const c::MixOptions mix = c::takeMixOptions(asked);
        asked.finish();
        return new audlmd_sound{c::mixed(timeline->built.timeline(), timeline->built.opener(), mix)};
    });
}

void audlmd_free(audlmd_sound* sound) {
    delete sound;
}

int audlmd_channels(const audlmd_sound* sound) {
    return static_cast<int>(sound->sound.media.channels.size());
}

int audlmd_sample_rate(const audlmd_sound* sound) {
    return sound->sound.media.sampleRate;
}

int64_t audlmd_frames(const audlmd_sound* sound) {
    return sound->sound.media.channels.front()->length();
}

int64_t audlmd_read(const audlmd_sound* sound, int64_t position, int64_t frames, int format, void* buffer) {
    return guarded<int64_t>(
        -1, [&] { return c::readFrames(sound->sound.media, position, frames, format, buffer); });
}

char* audlmd_report(const audlmd_sound* sound) {
    return guarded<char*>(nullptr, [&] {
        const MixedTimeline& mix = c::mixOf(sound);
        return c::copied(timeline::writeReport(mix.report(), mix.timeline()));
    });
}

char* audlmd_timeline_text(const audlmd_sound* sound) {
    return guarded<char*>(nullptr,
                          [&] { return c::copied(timeline::writeJson(c::mixOf(sound).timeline())); });
}

// Whoever frees a text owns it. NOLINTNEXTLINE(readability-non-const-parameter)
void audlmd_free_text(char* text) {
    delete[] text;
}

audlmd_timeline* audlmd_timeline_new(const char* const* options) {
    return guarded<audlmd_timeline*>(
        nullptr, [&] { return new audlmd_timeline{c::BuiltTimeline(c::Options(options).rest())}; });
}

int audlmd_timeline_add(audlmd_timeline* timeline, const char* track, const audlmd_sound* sound,
                        const char* const* options) {
    return guarded(-1, [&] {
        timeline->built.add(track, sound->sound, c::Options(options).rest());
        return 0;
    });
}

void audlmd_timeline_free(audlmd_timeline* timeline) {
    delete timeline;
}

#include "sounds.hpp"
#include <host/mix/ConvertedSources.hpp>
#include <host/mix/Mixer.hpp>
#include <host/timeline/List.hpp>
#include <host/timeline/MediaFinder.hpp>
#include <host/timeline/ReportText.hpp>
#include <host/timeline/TimelineError.hpp>
#include <host/timeline/TimelineFiles.hpp>
#include <host/timeline/TimelineText.hpp>

#undef NDEBUG
#include <array>
#include <cassert>
#include <cstdio>

using namespace audlmd;

static Timeline build() {
    //! [timeline]
    Timeline timeline{.name = "film", .sampleRate = 48000, .channels = 2, .length = 96000};
    TimelineStrip& strip =
        timeline.tracks.emplace_back(TimelineTrack{.name = "voice", .strips = {}}).strips.emplace_back();
    strip.name = "take 1";
    strip.media = "tone.wav";
    strip.at = 24000;          // where it is heard first
    strip.length = 48000;      // and how long
    strip.settings.to = 48000; // of the medium
    strip.settings.fade.fadeOutSamples = 4800;
    strip.gainDb = -6.0;
    assert(endOfSound(timeline) == TimelineSample(72000) && outputLayout(timeline) == layoutOf(timeline));
    //! [timeline]
    return timeline;
}

static void mix(const Timeline& timeline) {
    //! [mixer]
    Mixer mixer(timeline, &openSoundFile, {.threads = 2});
    std::vector<float> left(4096), right(4096);
    const std::array<std::span<float>, 2> output{left, right};
    for (std::int64_t position = 0; position < timeline.length; position += 4096)
        mixer.render(position, output); // each time another block, for a file or a device
    //! [mixer]

    //! [report]
    const MixReport report = mixer.report();
    for (const StripReport& strip : report.strips)
        if (!strip.failure.empty())
            std::printf("%s: %s\n", timeline::whereIs(timeline, strip.track, strip.strip).text().c_str(),
                        strip.failure.c_str());
    assert(report.strips.empty() && report.channels.size() == 2 && report.channels[0].samples == 0);
    const std::string json = timeline::writeReport(report, timeline); // for programs
    assert(json.find("\"channels\"") != std::string::npos);
    //! [report]
    mixer.callOff(); // ends waiting, on another thread
}

static void write(const Timeline& timeline) {
    //! [read]
    const std::string text = timeline::writeJson(timeline);
    assert(timeline::mayBeTimeline(text));

    timeline::ReadOptions options;
    options.folder = ".";
    options.media = [](const std::string& media) -> std::optional<timeline::MediaFacts> {
        const SoundFile file(media);
        return timeline::MediaFacts{file.frames(), file.sampleRate(), file.timeReference()};
    };
    try {
        const Timeline read = timeline::readTimeline(text, options);
        for (const std::string& line : timeline::noteLines(read.notes, read.sampleRate))
            std::puts(line.c_str()); // what is not played as it was written
        std::fputs(timeline::list(read, [](const std::string& media) { return media; }).c_str(), stdout);
        assert(read.length == 96000);
    } catch (const timeline::TimelineError& error) {
        std::puts(error.what()); // one line, which names track and clip
        assert(false);
    }
    //! [read]

    //! [file]
    std::ofstream("film.json") << text;
    const timeline::TimelineText file = timeline::readTimelineText("film.json"); // or a bundle
    assert(file.text == text && timeline::contentOfBundle("film.json").empty());
    //! [file]

    //! [finder]
    DecodedCache films;
    timeline::MediaFinder finder({.folders = {"."}, // the timeline is from a machine with other folders
                                  .playable = [&films](const std::filesystem::path& medium, std::optional<int> stream) {
                                      return films.playable(medium, stream.value_or(1) - 1);
                                  }});
    options.media = [&finder](const std::string& media) { return finder.factsOf(media); };
    const Mixer mixer(timeline::readTimeline(text, options),
                      [&finder](const std::string& media) { return finder.open(media); });
    assert(finder.find("/gone/tone.wav").path == "./tone.wav");
    //! [finder]
}

static void route() {
    //! [routing]
    const Routing toStereo = defaultRouting(usualLayout(6), usualLayout(2));
    assert(toStereo.rows.size() == 2 && toStereo.rows[0][0] == 1.0F && toStereo.rows[0][3] == 0.0F); // L; no LFE
    std::puts(foldDownText(usualLayout(6), usualLayout(2)).c_str());
    const Routing rightAlone = combined(toStereo, pickedChannels({1}, 2));
    assert(rightAlone.rows.size() == 1);
    const Routing leftLouder = panned(toStereo, -50.0, usualLayout(2)); // right to a third
    assert(leftLouder.rows[0] == toStereo.rows[0]);
    //! [routing]

    //! [media]
    const Media mono = openSoundFile("tone.wav");
    const Media stereo = foldedDown(mono, {defaultRouting(layoutOf(mono), usualLayout(2)), usualLayout(2)});
    assert(stereo.channels.size() == 2 && stereo.sampleRate == 48000);
    assert(namesIn(jointName({"L.wav", "R.wav"})).size() == 2); // two files, one recording
    assert(!openRecording("tone.wav", Truncated::taken).isTruncated);
    //! [media]

    //! [converted]
    const auto source = std::make_shared<MemorySource>(tone(44100));
    const std::shared_ptr<SampleSource> converted = convertedTo(source, 44100, 48000);
    assert(converted->length() == 48000 && convertedTo(source, 48000, 48000) == source);
    const ScaledSource quieter(source, -headroomExponent); // 120 dB down, all bits kept
    assert(quieter.length() == source->length());
    //! [converted]

    //! [relabel]
    const Relabel pal{.from = 24, .to = 25}; // a film that runs at 25 frames per second
    assert(pal.rateOf(48000.0) == 50000.0);
    const RateConvertedSource faster(source, 48000, 48000, pal);
    assert(faster.length() == 42336); // 24/25 of the samples
    //! [relabel]
}

int main() {
    writeTone("tone.wav", 48000);
    const Timeline timeline = build();
    mix(timeline);
    write(timeline);
    route();
}

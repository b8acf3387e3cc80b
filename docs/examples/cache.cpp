#include "sounds.hpp"
#include <contract/Identity.hpp>
#include <host/cache/MaterialCache.hpp>
#include <host/cache/SoundFile.hpp>
#include <host/media/DecodedCache.hpp>
#include <host/services/Identities.hpp>
#include <ole/Aud/SampleCacheIterators.hpp>

#undef NDEBUG
#include <cassert>
#include <cstdio>

using namespace audlmd;

//! [source]
/// Samples of a program's own: here the numbers of the samples.
class Numbers final : public SampleSource {
public:
    std::int64_t length() const override { return 1000; }
    void read(std::int64_t position, std::span<float> samples) override {
        for (float& sample : samples)
            sample = static_cast<float>(position++) / 1024.0F;
    }
};
//! [source]

static void hold() {
    //! [cache]
    MaterialCache cache({.segmentLength = 256, .memoryBudget = 1 << 20});
    const Cookie left{.material = makeUuid(), .channel = 0};
    cache.add(left, std::make_shared<Numbers>());

    // Before a render call that must not wait: loads a segment, and those behind it.
    const Aud::SampleCacheSegment segment = cache.request(left, 0, Aud::Render::Direction::forward, {});
    if (segment.status() == Aud::eSegmentRequestOutstanding)
        segment.getRequestCompletedEvent()->wait(iThreadEvent::noTimeLimit);
    assert(segment.status() == Aud::eSegmentReady && segment.length() == 256 && segment.pSamples()[1] == 1 / 1024.0F);
    assert(cache.usage().residentBytes > 0 && cache.statistics(left).underrunSamples == 0);
    //! [cache]

    //! [reader]
    // As a chain reads: waits for samples that are not loaded.
    Aud::SampleCache::ForwardIterator reader(left, 998, true, cache, 0, false, {});
    assert(*reader == 998 / 1024.0F);
    ++reader;
    ++reader;
    assert(reader.position() == 1000 && *reader == 0.0F); // silence behind the end
    //! [reader]

    //! [forget]
    const MaterialStatistics last = cache.remove(left); // readers find silence from their next segment on
    assert(last.failedSegments == 0 && last.firstFailure.empty());
    try {
        (void)cache.statistics(left);
        assert(false);
    } catch (const UnknownMaterial& error) {
        std::puts(error.what()); // names the cookie
    }
    cache.callOff(); // ends loading, for a program that ends
    //! [forget]
}

static void open() {
    //! [sound file]
    const auto file = std::make_shared<SoundFile>("tone.wav");
    std::printf("%d channels, %lld frames at %d Hz\n", file->channels(), static_cast<long long>(file->frames()),
                file->sampleRate());
    SoundFileSource left(file, 0); // as a cache wants it
    std::vector<float> samples(100);
    left.read(500, samples);
    assert(left.length() == file->frames() && left.exclusiveResource() == file.get());
    try {
        SoundFile("gone.wav");
        assert(false);
    } catch (const SoundFileError& error) {
        std::puts(error.what()); // names the file, and says why
    }
    //! [sound file]
}

static void nameChannels() {
    //! [layout]
    const ChannelLayout film = usualLayout(6); // L R C LFE Ls Rs
    assert(nameOf(film) == "5.1" && channelNames(film)[3] == "LFE" && isKnown(film));
    assert(layoutNamed("5.1") == film && areAlike(film, vorbisLayout(6)) == false); // Vorbis has another order
    assert(layoutOfMap(mapOf(film)) == film && !isKnown(unknownLayout(6)));
    std::printf("%s; names: %s\n", channelList(film).c_str(), layoutNames().c_str());
    //! [layout]
}

static void decode() {
    //! [decoded]
    DecodedCache decoded({.folder = "decoded", .limit = std::uintmax_t{1} << 30});
    // A sound file is itself; a film is decoded by ffmpeg, once, and its file of samples is given.
    const PlayableFile file = decoded.playable("tone.wav");
    assert(file.path == "tone.wav" && !file.isDecoded);
    assert(decoded.contents().empty() && decoded.clear() == 0);
    //! [decoded]
}

int main() {
    writeTone("tone.wav", 48000);
    hold();
    open();
    nameChannels();
    decode();
}

#include "fuzz/Fuzzing.hpp"
#include "host/cache/MaterialCache.hpp"
#include "host/cache/SoundFile.hpp"
#include "ole/Aud/SampleCacheIterators.hpp"
#include "tools/audlmd/files/Metadata.hpp"
#include "tools/audlmd/files/RiffChunks.hpp"

#include <algorithm>
#include <bit>
#include <memory>
#include <string>
#include <vector>

namespace audlmd::fuzz {
namespace {

constexpr std::int64_t span = 700;

template <class Reader>
std::vector<std::uint32_t> take(Reader reader) {
    std::vector<std::uint32_t> samples;
    for (; samples.size() < span; ++reader)
        samples.push_back(std::bit_cast<std::uint32_t>(*reader));
    return samples;
}

/// From a position on, and back again.
void readBothWays(MaterialCache& cache, const Cookie& cookie, std::int64_t position) {
    const auto forwards =
        take(Aud::SampleCache::ForwardIterator(cookie, position, true, cache, 0, false, {1.0}));
    auto backwards =
        take(Aud::SampleCache::ReverseIterator(cookie, position + span, true, cache, false, {1.0}));
    std::ranges::reverse(backwards);
    require(forwards == backwards, "samples are the same in both directions");
}

void readThroughCache(const std::shared_ptr<SoundFile>& file) {
    // Short segments, so that readers cross borders.
    MaterialCache cache({.segmentLength = 300, .memoryBudget = std::size_t{4} << 20, .loaderThreads = 1});
    for (const int channel : {0, file->channels() - 1}) {
        const Cookie cookie{.material = {}, .channel = static_cast<std::uint16_t>(channel), .kind = 0};
        cache.add(cookie, std::make_shared<SoundFileSource>(file, channel));
        for (const std::int64_t position : {std::int64_t{-100}, file->frames() / 2, file->frames() - 600})
            readBothWays(cache, cookie, position);
        if (const MaterialStatistics statistics = cache.remove(cookie); statistics.failedSegments != 0)
            requireOneLine(statistics.firstFailure);
    }
}

/// What the file says beside its samples is read as it would be written, and stays inside a part of the file.
void readMetadata(const std::string& path) {
    command::Metadata found = command::readMetadata(path);
    command::FileChunks chunks;
    const std::string written = command::riffChunksOf(found);
    for (const auto& [identifier, content] : command::chunksIn(written))
        chunks[std::string(identifier)].emplace_back(content);
    // An AIFF has markers, too.
    require(command::markersOfChunks(chunks) == found.markers, "markers are read as they are written");
    require(command::samplerOfChunk(command::contentOf(chunks, "smpl")) == found.sampler,
            "loops are read as they are written");
    for (const bool reverse : {false, true}) {
        command::Metadata moved = found;
        moveInto(moved, {.from = 10, .to = 500, .whole = 500, .speed = 0.7, .reverse = reverse}, 48000);
        for (const command::Marker& marker : moved.markers)
            require(marker.position >= 0 && marker.length >= 0 && marker.position + marker.length <= 700,
                    "markers lie in the part");
    }
}

/// Sound files, through the cache, by readers in both directions. A file is read or refused with one line,
/// and so is each of its segments; readers in both directions find the same samples.
void read(std::span<const std::uint8_t> bytes) {
    static FileInMemory file;
    file.hold(bytes);
    try {
        readThroughCache(std::make_shared<SoundFile>(file.path()));
        readMetadata(file.path());
    } catch (const SoundFileError& error) {
        requireOneLine(error.what());
    }
}

} // namespace
} // namespace audlmd::fuzz

/// libsndfile leaks what some decoders below it have allocated, where it refuses a file.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libvorbis.so\nleak:libogg.so\nleak:libFLAC.so\nleak:libopus.so\nleak:libmpg123.so\n";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    audlmd::fuzz::read({bytes, size});
    return 0;
}

#pragma once

#include "contract/Identity.hpp"
#include "contract/SampleCache.hpp"
#include "host/cache/Material.hpp"
#include "host/cache/MaterialCache.hpp"
#include "host/cache/SegmentLists.hpp"
#include "host/services/Threads.hpp"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace audlmd {

/// The segments that a reader wants beyond the one it stands on.
struct LookAhead {
    Aud::Render::Direction direction;
    /// How many segments the reader requests.
    std::uint32_t reach;
    /// The reader's handles to the nearest of them, at most `reach`. The cache fills them in.
    std::span<Aud::SampleCacheSegment> held;
};

/// The state of a MaterialCache. Its materials keep it alive after the MaterialCache is gone, for readers
/// that still stand on them.
///
/// Reading from sources, allocating samples and freeing them are done without the lock, so that readers never
/// wait for them.
class CacheCore : public std::enable_shared_from_this<CacheCore> {
public:
    /// Throws std::invalid_argument for an option out of range.
    explicit CacheCore(const MaterialCacheOptions& options);

    // The operations of MaterialCache, with the same errors.

    void add(const Cookie& cookie, std::shared_ptr<SampleSource> source);
    MaterialStatistics remove(const Cookie& cookie);
    MaterialStatistics statistics(const Cookie& cookie);
    MaterialCacheUsage usage();
    void callOff();

    /// Removes all material and wakes all readers that wait.
    void close();

    /// Loads segments until the thread is asked to stop. Every loader thread runs this.
    void serve(const std::stop_token& stop);

    // For readers.

    /// Who holds this mutex holds cacheLock, and may use what cacheLock guards.
    Mutex& mutex() AUDLMD_RETURNS_MUTEX(cacheLock) { return mutex_; }
    /// The number of segments that a reader requests ahead if it holds `held` of them: the larger of `held`
    /// and segmentsAhead, times a speed above 1, but at most half the budget, or one segment. Needs no lock.
    std::uint32_t reach(const Orv::OutputGearing& gearing, std::uint32_t held) const;
    /// Where a reader stands.
    struct Standing {
        /// Valid while the reader holds a segment of the material.
        Material* material = nullptr;
        std::int64_t materialLength = 0;
        /// Empty behind the end of the material, in the reader's direction.
        Aud::SampleCacheSegment segment;
        std::uint32_t number = 0;
        /// Of the sample in the segment.
        std::int32_t index = 0;
    };
    /// Places a reader on a sample, inside the material or outside, and requests what it reads next. Throws
    /// UnknownMaterial.
    Standing stand(const Cookie& cookie, std::int64_t sample, const LookAhead& lookAhead)
        AUDLMD_EXCLUDES(cacheLock);
    /// Makes a segment the one that a reader stands on, and requests that and those ahead of it. Lets go of
    /// the old one before a loader could look for room. Where the material was removed, the new one is never
    /// ready.
    void enter(Material& material, std::uint32_t number, const LookAhead& lookAhead,
               Aud::SampleCacheSegment& current) AUDLMD_EXCLUDES(cacheLock);

private:
    struct CookieHash {
        std::size_t operator()(const Cookie& cookie) const noexcept;
    };
    /// A segment that is read, alone or with those of other channels.
    struct Loading {
        CachedSegment* segment;
        /// Null if the source failed.
        std::unique_ptr<float[]> samples;
    };
    /// Segments that are read at one go. Of a fixed size, so that a loader needs no memory beside the
    /// samples: further channels are read by themselves.
    struct Load {
        std::array<Loading, SegmentLists::mostTogether> all{};
        std::size_t count = 0;
        /// Set if the source failed: its reason, which may be empty.
        std::optional<std::string> failure;

        std::span<Loading> segments() { return std::span(all).first(count); }
    };

    /// Throws UnknownMaterial.
    Material& find(const Cookie& cookie) const AUDLMD_REQUIRES(cacheLock);
    /// Requests the segments that a reader outside the material will enter first. The segment returned is
    /// never ready; it keeps the material alive.
    Aud::SampleCacheSegment approach(Material& material, const LookAhead& lookAhead)
        AUDLMD_REQUIRES(cacheLock);
    Aud::SampleCacheSegment entered(Material& material, std::uint32_t number, const LookAhead& lookAhead)
        AUDLMD_REQUIRES(cacheLock);
    void requestAhead(Material& material, std::int64_t first, const LookAhead& lookAhead)
        AUDLMD_REQUIRES(cacheLock);
    CachedSegment& request(Material& material, std::uint32_t number, CachedSegment::Stage stage)
        AUDLMD_REQUIRES(cacheLock);
    /// Also for the channels that are read together with this one.
    CachedSegment& addRequests(Material& material, std::uint32_t number, CachedSegment::Stage stage)
        AUDLMD_REQUIRES(cacheLock);
    CachedSegment& addRequest(Material& material, std::uint32_t number, CachedSegment::Stage stage)
        AUDLMD_REQUIRES(cacheLock);
    /// Wakes loaders for so many requests. Without the lock, for which they would only wait.
    void wakeLoaders(unsigned int requests) AUDLMD_EXCLUDES(cacheLock);
    void takeAll(Material& material, SegmentLists::List& taken) AUDLMD_REQUIRES(cacheLock);

    /// Marks a requested segment, and those that are requested together with it, as loading. None: there is
    /// no room.
    Load startLoading(CachedSegment& segment, SegmentLists::List& taken) AUDLMD_REQUIRES(cacheLock);
    /// Reads the samples. Deletes the segments in `taken`; may reuse their memory.
    static void readSamples(Load& load, SegmentLists::List& taken) AUDLMD_EXCLUDES(cacheLock);
    /// Shows the result to the readers, and wakes those who wait.
    void publish(Load load, SegmentLists::List& taken) AUDLMD_EXCLUDES(cacheLock);
    /// Wakes who waits for the segments, gives up the cache's hold on them and empties the list.
    static void letGo(SegmentLists::List& taken) AUDLMD_EXCLUDES(cacheLock);

    const std::int32_t segmentLength_;
    const std::size_t memoryBudget_;
    const std::uint32_t segmentsAhead_;

    Mutex mutex_;
    /// Notified when there may be a segment for one more loader.
    std::condition_variable requested_;
    /// Of new requests, how many the loaders were not woken for.
    unsigned int unheard_ AUDLMD_GUARDED_BY(cacheLock) = 0;
    std::unordered_map<Cookie, std::shared_ptr<Material>, CookieHash> materials_ AUDLMD_GUARDED_BY(cacheLock);
    /// By frames and recording.
    std::map<std::pair<FrameSource*, decltype(Orv::UUID::bytes)>, std::vector<Material*>>
        together_ AUDLMD_GUARDED_BY(cacheLock);
    bool isCalledOff_ AUDLMD_GUARDED_BY(cacheLock) = false;
    SegmentLists lists_ AUDLMD_GUARDED_BY(cacheLock);
};

} // namespace audlmd

#pragma once

#include "contract/Identity.hpp"
#include "contract/SampleCache.hpp"
#include "host/cache/Material.hpp"
#include "host/cache/MaterialCache.hpp"
#include "host/cache/SegmentLists.hpp"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <stop_token>
#include <string>
#include <unordered_map>

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
/// One lock guards all members. Reading from sources, allocating samples and freeing them are done without
/// the lock, so that readers never wait for them.
class CacheCore : public std::enable_shared_from_this<CacheCore> {
public:
    using Lock = std::unique_lock<std::mutex>;

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

    // For readers, who take the lock and hand it in to show that they hold it.

    Lock lock() { return Lock(mutex_); }
    /// Throws UnknownMaterial.
    Material& find(const Lock&, const Cookie& cookie) const;
    /// The number of segments that a reader requests ahead if it holds `held` of them: the larger of `held`
    /// and segmentsAhead, times a speed above 1, but at most half the budget, or one segment. Needs no lock.
    std::uint32_t reach(const Orv::OutputGearing& gearing, std::uint32_t held) const;
    /// Where a reader stands.
    struct Standing {
        /// Empty behind the end of the material, in the reader's direction.
        Aud::SampleCacheSegment segment;
        std::uint32_t number = 0;
        /// Of the sample in the segment.
        std::int32_t index = 0;
    };
    /// Places a reader on a sample, inside the material or outside, and requests what it reads next.
    Standing stand(const Lock& lock, Material& material, std::int64_t sample, const LookAhead& lookAhead);
    /// Requests the segment that a reader stands on, and those ahead of it. Where the material was removed,
    /// the segment returned is never ready.
    Aud::SampleCacheSegment enter(const Lock&, Material& material, std::uint32_t number,
                                  const LookAhead& lookAhead);
    /// Requests the segments that a reader outside the material will enter first. The segment returned is
    /// never ready; it keeps the material alive.
    Aud::SampleCacheSegment approach(const Lock&, Material& material, const LookAhead& lookAhead);

private:
    struct CookieHash {
        std::size_t operator()(const Cookie& cookie) const noexcept;
    };
    /// What a read of one segment came to.
    struct LoadedSamples {
        /// Null if the source failed.
        std::unique_ptr<float[]> samples;
        /// The source's reason, which may be empty.
        std::string failure;
    };

    void requestAhead(Material& material, std::int64_t first, const LookAhead& lookAhead);
    CachedSegment& request(Material& material, std::uint32_t number, CachedSegment::Stage stage);
    CachedSegment& addRequest(Material& material, std::uint32_t number, CachedSegment::Stage stage);
    void takeAll(Material& material, SegmentLists::List& taken);

    /// Loads a requested segment. The lock is held on entry and on return, but not while the source reads.
    void load(Lock& lock, CachedSegment& segment);
    /// Reads a segment's samples, without the lock. Deletes the segments in `taken`; may reuse their memory.
    static LoadedSamples readSamples(const CachedSegment& segment, SegmentLists::List& taken);
    /// Shows the result to the readers. Returns the event that wakes those who wait.
    EventPtr publish(CachedSegment& segment, LoadedSamples loaded, SegmentLists::List& taken);
    /// Wakes who waits for the segments, gives up the cache's hold on them and empties the list. Called
    /// without the lock.
    static void letGo(SegmentLists::List& taken);

    const std::int32_t segmentLength_;
    const std::size_t memoryBudget_;
    const std::uint32_t segmentsAhead_;

    std::mutex mutex_;
    /// Notified when there may be a segment for one more loader.
    std::condition_variable_any requested_;
    std::unordered_map<Cookie, std::shared_ptr<Material>, CookieHash> materials_;
    bool isCalledOff_ = false;
    SegmentLists lists_;
};

} // namespace audlmd

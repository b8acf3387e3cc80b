#pragma once

#include "host/Identity.hpp"
#include "host/SampleCache.hpp"
#include "standalone/cache/Material.hpp"
#include "standalone/cache/MaterialCache.hpp"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <span>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

namespace audlmd {

/// What a reader wants beyond the segment it stands on: `reach` segments requested, the first of them held.
struct LookAhead {
    Direction direction;
    std::uint32_t reach;
    std::span<Aud::SampleCacheSegment> held;
};

/// The state of a cache, which its materials keep alive beyond it. One lock guards all of it; nothing that
/// takes long is done under the lock.
class CacheCore : public std::enable_shared_from_this<CacheCore> {
public:
    using Lock = std::unique_lock<std::mutex>;

    explicit CacheCore(const MaterialCacheOptions& options);

    void add(const Cookie& cookie, std::shared_ptr<SampleSource> source);
    MaterialStatistics remove(const Cookie& cookie);
    MaterialStatistics statistics(const Cookie& cookie);
    MaterialCacheUsage usage();

    /// Removes everything and wakes everyone.
    void close();

    /// What a loader thread does until it is asked to stop.
    void serve(const std::stop_token& stop);

    // For readers. Handing in the lock shows that it is held.

    Lock lock() { return Lock(mutex_); }
    /// Throws UnknownMaterial.
    Material& find(const Lock&, const Cookie& cookie) const;
    /// The number of segments that a reader requests ahead, if it holds `held` of them.
    std::uint32_t reach(const Orv::OutputGearing& gearing, std::uint32_t held) const;
    /// Requests a segment that a reader stands on, and those ahead of it.
    Aud::SampleCacheSegment enter(const Lock&, Material& material, std::uint32_t number,
                                  const LookAhead& lookAhead);
    /// For a reader outside the material: requests what it will enter. The segment is never ready.
    Aud::SampleCacheSegment approach(const Lock&, Material& material, const LookAhead& lookAhead);

private:
    using SegmentList = std::list<CachedSegment*>;

    struct CookieHash {
        std::size_t operator()(const Cookie& cookie) const noexcept;
    };

    void requestAhead(Material& material, std::int64_t first, const LookAhead& lookAhead);
    CachedSegment& request(Material& material, std::uint32_t number, CachedSegment::Stage stage);
    CachedSegment& addRequest(Material& material, std::uint32_t number, CachedSegment::Stage stage);
    void moveTo(CachedSegment::Stage stage, CachedSegment& segment);
    /// Takes a segment out of the lists and out of its material's table, and appends it to `taken`.
    void take(CachedSegment& segment, SegmentList& taken);
    void takeAll(Material& material, SegmentList& taken);
    /// Takes unused segments until `bytes` fit the budget. Returns whether they do.
    bool makeRoom(std::size_t bytes, SegmentList& taken);
    /// The segment to be loaded first. Null if there is none, or none whose resource is free.
    CachedSegment* nextRequest() const;
    void load(Lock& lock, CachedSegment& segment);
    /// Gives up the cache's hold on segments that were taken, outside the lock. Wakes who waits for them.
    static void letGo(const SegmentList& taken);

    const std::int32_t segmentLength_;
    const std::size_t memoryBudget_;
    const std::uint32_t segmentsAhead_;

    std::mutex mutex_;
    std::condition_variable_any requested_;
    std::unordered_map<Cookie, std::shared_ptr<Material>, CookieHash> materials_;
    std::array<SegmentList, CachedSegment::stageCount> lists_;
    /// Resources that loaders are reading from.
    std::vector<const void*> busyResources_;
    MaterialCacheUsage usage_;
};

} // namespace audlmd

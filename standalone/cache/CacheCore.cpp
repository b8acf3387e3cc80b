#include "standalone/cache/CacheCore.hpp"

#include "standalone/services/Identities.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <limits>
#include <stdexcept>
#include <utility>

namespace audlmd {
namespace {

using Access = Aud::SampleCacheSegmentAccess;

/// Empty if all went well.
std::string readInto(std::span<float> samples, SampleSource& source, std::int64_t position) {
    try {
        source.read(position, samples);
        return {};
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return "the source failed without saying why";
    }
}

MaterialStatistics statisticsOf(const Material& material) {
    return {.underrunSamples = material.underrunSamples.load(std::memory_order_relaxed),
            .underrunEpisodes = material.underrunEpisodes.load(std::memory_order_relaxed),
            .failedSegments = material.failedSegments,
            .firstFailure = material.firstFailure};
}

} // namespace

CacheCore::CacheCore(const MaterialCacheOptions& options)
    : segmentLength_(options.segmentLength), memoryBudget_(options.memoryBudget),
      segmentsAhead_(options.segmentsAhead) {
    if (options.segmentLength < 1)
        throw std::invalid_argument("the segment length must be at least 1 sample");
    if (options.loaderThreads < 1)
        throw std::invalid_argument("the sample cache needs at least 1 loader thread");
    busyResources_.reserve(options.loaderThreads);
}

std::size_t CacheCore::CookieHash::operator()(const Cookie& cookie) const noexcept {
    std::uint64_t halves[2];
    static_assert(sizeof halves == sizeof cookie.material.bytes);
    std::memcpy(halves, cookie.material.bytes.data(), sizeof halves);
    const std::uint64_t strip = std::uint64_t{cookie.channel} << 8 | cookie.kind;
    // Knuth's multiplicative hashing, by the golden ratio.
    return static_cast<std::size_t>((halves[0] ^ (halves[1] + strip)) * 0x9E3779B97F4A7C15U);
}

void CacheCore::add(const Cookie& cookie, std::shared_ptr<SampleSource> source) {
    if (source == nullptr)
        throw std::invalid_argument("material needs a source: " + toString(cookie));
    const std::int64_t length = source->length();
    const auto mostSegments = std::int64_t{std::numeric_limits<std::uint32_t>::max()};
    if (length < 0 || length / segmentLength_ >= mostSegments)
        throw std::invalid_argument("no segments can be made of " + std::to_string(length) +
                                    " samples: " + toString(cookie));
    auto material = std::make_shared<Material>(shared_from_this(), std::move(source), length, segmentLength_);
    const Lock lock(mutex_);
    if (!materials_.emplace(cookie, std::move(material)).second)
        throw std::invalid_argument("the sample cache already holds material " + toString(cookie));
}

MaterialStatistics CacheCore::remove(const Cookie& cookie) {
    SegmentList taken;
    Lock lock(mutex_);
    find(lock, cookie);
    const auto node = materials_.extract(cookie);
    Material& material = *node.mapped();
    takeAll(material, taken);
    MaterialStatistics statistics = statisticsOf(material);
    lock.unlock();
    letGo(taken);
    return statistics;
}

MaterialStatistics CacheCore::statistics(const Cookie& cookie) {
    const Lock lock(mutex_);
    return statisticsOf(find(lock, cookie));
}

MaterialCacheUsage CacheCore::usage() {
    const Lock lock(mutex_);
    return usage_;
}

void CacheCore::close() {
    SegmentList taken;
    Lock lock(mutex_);
    const auto materials = std::move(materials_);
    for (const auto& [cookie, material] : materials)
        takeAll(*material, taken);
    lock.unlock();
    letGo(taken);
}

void CacheCore::serve(const std::stop_token& stop) {
    Lock lock(mutex_);
    CachedSegment* next = nullptr;
    while (requested_.wait(lock, stop, [&] { return (next = nextRequest()) != nullptr; }))
        load(lock, *next);
}

CachedSegment* CacheCore::nextRequest() const {
    for (const auto stage : {CachedSegment::eUrgent, CachedSegment::eAhead})
        for (CachedSegment* const segment : lists_[stage]) {
            const void* const resource = segment->material->source->exclusiveResource();
            if (resource == nullptr || std::ranges::find(busyResources_, resource) == busyResources_.end())
                return segment;
        }
    return nullptr;
}

void CacheCore::load(Lock& lock, CachedSegment& segment) {
    const std::shared_ptr<Material> material = segment.material;
    SegmentList taken;
    if (!makeRoom(segment.bytes(), taken) && segment.stage == CachedSegment::eAhead) {
        take(segment, taken);
        lock.unlock();
        letGo(taken);
        lock.lock();
        return;
    }
    moveTo(CachedSegment::eLoading, segment);
    usage_.residentBytes += segment.bytes();
    usage_.peakBytes = std::max(usage_.peakBytes, usage_.residentBytes);
    ++usage_.segmentsLoaded;
    const void* const resource = material->source->exclusiveResource();
    busyResources_.push_back(resource);
    lock.unlock();

    std::unique_ptr<float[]> storage;
    // Nobody else can see a segment that made room: its storage is as good as new.
    for (CachedSegment* unused : taken)
        if (unused->length == segment.length)
            storage = std::move(unused->storage);
    letGo(taken);
    taken.clear();
    const auto length = static_cast<std::size_t>(segment.length);
    if (storage == nullptr)
        storage = std::make_unique_for_overwrite<float[]>(length);
    const std::string failure =
        readInto({storage.get(), length}, *material->source, material->start(segment.number));

    lock.lock();
    busyResources_.erase(std::ranges::find(busyResources_, resource));
    // What waited for the resource is now for any loader to take.
    requested_.notify_one();
    if (failure.empty()) {
        segment.storage = std::move(storage);
        segment.samples = segment.storage.get();
        segment.status.store(Aud::eSegmentReady, std::memory_order_release);
        moveTo(CachedSegment::eReady, segment);
    } else {
        usage_.residentBytes -= segment.bytes();
        if (++material->failedSegments == 1)
            material->firstFailure = failure;
        segment.status.store(eSegmentFailed, std::memory_order_release);
        moveTo(CachedSegment::eFailed, segment);
    }
    const EventPtr completed = segment.completed;
    if (material->removed)
        take(segment, taken);
    lock.unlock();
    completed->signal();
    letGo(taken);
    lock.lock();
}

Material& CacheCore::find(const Lock&, const Cookie& cookie) const {
    const auto found = materials_.find(cookie);
    if (found == materials_.end())
        throw UnknownMaterial(cookie);
    return *found->second;
}

std::uint32_t CacheCore::reach(const Orv::OutputGearing& gearing, std::uint32_t held) const {
    const double speed = std::abs(gearing.sourceSamplesPerOutputSample);
    const double wanted = std::ceil(std::max(segmentsAhead_, held) * (speed > 1.0 ? speed : 1.0));
    const std::size_t segmentBytes = static_cast<std::size_t>(segmentLength_) * sizeof(float);
    const auto most = static_cast<double>(std::max<std::size_t>(memoryBudget_ / segmentBytes / 2, 1));
    return static_cast<std::uint32_t>(std::min({wanted, most, 1e6}));
}

Aud::SampleCacheSegment CacheCore::enter(const Lock&, Material& material, std::uint32_t number,
                                         const LookAhead& lookAhead) {
    Aud::SampleCacheSegment entered =
        material.removed ? Access::adopt(new CachedSegment(Aud::eSegmentEmpty, material.lengthOf(number),
                                                           material.shared_from_this(), number))
                         : Access::share(request(material, number, CachedSegment::eUrgent));
    requestAhead(material, number + static_cast<std::int64_t>(lookAhead.direction), lookAhead);
    return entered;
}

Aud::SampleCacheSegment CacheCore::approach(const Lock&, Material& material, const LookAhead& lookAhead) {
    const std::int64_t first = lookAhead.direction == Direction::forward ? 0 : material.segmentCount() - 1;
    requestAhead(material, first, lookAhead);
    return Access::adopt(new CachedSegment(Aud::eSegmentEmpty, 0, material.shared_from_this(), 0));
}

void CacheCore::requestAhead(Material& material, std::int64_t first, const LookAhead& lookAhead) {
    for (std::size_t i = 0; i < lookAhead.reach; ++i) {
        const std::int64_t number =
            first + static_cast<std::int64_t>(i) * static_cast<std::int64_t>(lookAhead.direction);
        const bool isThere = number >= 0 && number < material.segmentCount() && !material.removed;
        if (!isThere && i >= lookAhead.held.size())
            return;
        CachedSegment* const segment =
            isThere ? &request(material, static_cast<std::uint32_t>(number), CachedSegment::eAhead) : nullptr;
        if (i < lookAhead.held.size())
            lookAhead.held[i] = isThere ? Access::share(*segment) : Aud::SampleCacheSegment();
    }
}

CachedSegment& CacheCore::request(Material& material, std::uint32_t number, CachedSegment::Stage stage) {
    const auto found = material.segments.find(number);
    if (found == material.segments.end())
        return addRequest(material, number, stage);
    CachedSegment& segment = *found->second;
    const bool becomesUrgent = segment.stage == CachedSegment::eAhead && stage == CachedSegment::eUrgent;
    if (becomesUrgent)
        moveTo(CachedSegment::eUrgent, segment);
    else if (segment.stage == CachedSegment::eReady)
        moveTo(CachedSegment::eReady, segment);
    return segment;
}

CachedSegment& CacheCore::addRequest(Material& material, std::uint32_t number, CachedSegment::Stage stage) {
    auto segment = std::make_unique<CachedSegment>(Aud::eSegmentRequestOutstanding, material.lengthOf(number),
                                                   material.shared_from_this(), number);
    segment->completed = EventPtr(new Event);
    segment->requestCompleted = &*segment->completed;
    SegmentList node{segment.get()};
    material.segments.emplace(number, segment.get());
    // Nothing from here on throws.
    segment->stage = stage;
    segment->place = node.begin();
    lists_[stage].splice(lists_[stage].end(), node);
    requested_.notify_one();
    return *segment.release();
}

void CacheCore::moveTo(CachedSegment::Stage stage, CachedSegment& segment) {
    lists_[stage].splice(lists_[stage].end(), lists_[segment.stage], segment.place);
    segment.stage = stage;
}

void CacheCore::take(CachedSegment& segment, SegmentList& taken) {
    if (segment.stage == CachedSegment::eReady)
        usage_.residentBytes -= segment.bytes();
    else if (segment.stage != CachedSegment::eFailed)
        segment.status.store(Aud::eSegmentEmpty, std::memory_order_release);
    segment.material->segments.erase(segment.number);
    taken.splice(taken.end(), lists_[segment.stage], segment.place);
}

void CacheCore::takeAll(Material& material, SegmentList& taken) {
    material.removed = true;
    while (!material.segments.empty()) {
        const auto first = material.segments.begin();
        if (first->second->stage == CachedSegment::eLoading)
            // Its loader takes it.
            material.segments.erase(first);
        else
            take(*first->second, taken);
    }
}

bool CacheCore::makeRoom(std::size_t bytes, SegmentList& taken) {
    SegmentList& ready = lists_[CachedSegment::eReady];
    const auto fits = [&] {
        return usage_.residentBytes <= memoryBudget_ && bytes <= memoryBudget_ - usage_.residentBytes;
    };
    for (auto next = ready.begin(); next != ready.end() && !fits();) {
        CachedSegment& segment = **next++;
        // Under the lock a segment that only the cache holds cannot get another holder.
        if (segment.holders.load(std::memory_order_acquire) == 1)
            take(segment, taken);
    }
    return fits();
}

void CacheCore::letGo(const SegmentList& taken) {
    for (CachedSegment* segment : taken) {
        segment->completed->signal();
        Access::release(segment);
    }
}

} // namespace audlmd

#include "host/cache/CacheCore.hpp"

#include "host/services/FailureText.hpp"
#include "host/services/Identities.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

namespace audlmd {
namespace {

using Access = Aud::SampleCacheSegmentAccess;

/// Readers may be counting underruns at the same time.
MaterialStatistics statisticsOf(const Material& material) AUDLMD_REQUIRES(cacheLock) {
    return {.underrunSamples = material.underrunSamples.load(std::memory_order_relaxed),
            .underrunEpisodes = material.underrunEpisodes.load(std::memory_order_relaxed),
            .failedSegments = material.failedSegments,
            .firstFailure = material.firstFailure};
}

} // namespace

CacheCore::CacheCore(const MaterialCacheOptions& options)
    : segmentLength_(options.segmentLength), memoryBudget_(options.memoryBudget),
      segmentsAhead_(options.segmentsAhead), lists_(options.memoryBudget, options.loaderThreads) {
    if (options.segmentLength < 1)
        throw std::invalid_argument("the segment length must be at least 1 sample");
    if (options.loaderThreads < 1)
        throw std::invalid_argument("the sample cache needs at least 1 loader thread");
}

std::size_t CacheCore::CookieHash::operator()(const Cookie& cookie) const noexcept {
    std::uint64_t halves[2];
    static_assert(sizeof halves == sizeof cookie.material.bytes);
    std::memcpy(halves, cookie.material.bytes.data(), sizeof halves);
    const std::uint64_t channel = std::uint64_t{cookie.channel} << 8 | cookie.kind;
    // Multiplicative hashing with 2^64 divided by the golden ratio (Knuth, The Art of Computer Programming,
    // volume 3, section 6.4).
    return static_cast<std::size_t>((halves[0] ^ (halves[1] + channel)) * 0x9E3779B97F4A7C15U);
}

void CacheCore::add(const Cookie& cookie, std::shared_ptr<SampleSource> source) {
    if (source == nullptr)
        throw std::invalid_argument("material needs a source: " + toString(cookie));
    const std::int64_t length = source->length();
    const auto mostSegments = std::int64_t{std::numeric_limits<std::uint32_t>::max()};
    if (length < 0 || length / segmentLength_ >= mostSegments)
        throw std::invalid_argument("a material of " + std::to_string(length) +
                                    " samples does not fit into the sample cache, which holds up to " +
                                    std::to_string(mostSegments * segmentLength_) + ": " + toString(cookie));
    auto material = std::make_shared<Material>(shared_from_this(), std::move(source), length, segmentLength_);
    const Lock lock(mutex());
    material->removed = isCalledOff_;
    const auto [added, isNew] = materials_.emplace(cookie, std::move(material));
    if (!isNew)
        throw std::invalid_argument("the sample cache already holds material " + toString(cookie));
    if (FrameSource* const frames = added->second->inFrames.frames; frames != nullptr) {
        added->second->together = &together_[{frames, cookie.material.bytes}];
        added->second->together->push_back(added->second.get());
    }
}

MaterialStatistics CacheCore::remove(const Cookie& cookie) {
    SegmentLists::List taken;
    Lock lock(mutex());
    find(cookie); // Throws where the cookie is unknown.
    const auto node = materials_.extract(cookie);
    Material& material = *node.mapped();
    if (material.together != nullptr && std::erase(*material.together, &material) != 0 &&
        material.together->empty())
        together_.erase({material.inFrames.frames, cookie.material.bytes});
    takeAll(material, taken);
    MaterialStatistics statistics = statisticsOf(material);
    lock.unlock();
    letGo(taken);
    return statistics;
}

MaterialStatistics CacheCore::statistics(const Cookie& cookie) {
    const Lock lock(mutex());
    return statisticsOf(find(cookie));
}

MaterialCacheUsage CacheCore::usage() {
    const Lock lock(mutex());
    return lists_.usage();
}

void CacheCore::callOff() {
    SegmentLists::List taken;
    Lock lock(mutex());
    isCalledOff_ = true;
    for (const auto& [cookie, material] : materials_)
        takeAll(*material, taken);
    lock.unlock();
    letGo(taken);
}

void CacheCore::close() {
    SegmentLists::List taken;
    Lock lock(mutex());
    const auto materials = std::move(materials_);
    for (const auto& [cookie, material] : materials)
        takeAll(*material, taken);
    lock.unlock();
    letGo(taken);
}

/// A loader that has finished looks for the next request itself, so that nobody need be woken for those that
/// waited for the source's resource.
void CacheCore::serve(const std::stop_token& stop) {
    const std::stop_callback wakeAll(stop, [this] {
        { const Lock lock(mutex()); }
        requested_.notify_all();
    });
    Lock lock(mutex());
    while (!stop.stop_requested()) {
        CachedSegment* const next = lists_.nextRequest();
        if (next == nullptr) {
            requested_.wait(lock.native());
            continue;
        }
        SegmentLists::List taken;
        Load load = startLoading(*next, taken);
        lock.unlock();
        if (load.count != 0) {
            readSamples(load, taken);
            publish(std::move(load), taken);
        }
        letGo(taken);
        lock.lock();
    }
}

CacheCore::Load CacheCore::startLoading(CachedSegment& segment, SegmentLists::List& taken) {
    Load load;
    const auto start = [&](CachedSegment& requested) AUDLMD_REQUIRES(cacheLock) {
        if (lists_.startLoading(requested, taken))
            load.all[load.count++] = {.segment = &requested, .samples = nullptr};
    };
    const Material& material = *segment.material;
    // A segment without room may be deleted.
    const std::uint32_t number = segment.number;
    start(segment);
    if (material.together == nullptr || load.count == 0)
        return load;
    for (const Material* const other : *material.together) {
        if (load.count == load.all.size())
            break;
        const auto found = other->segments.find(number);
        if (found != other->segments.end() && found->second->stage <= CachedSegment::eAhead)
            start(*found->second);
    }
    return load;
}

void CacheCore::readSamples(Load& load, SegmentLists::List& taken) {
    const std::span<Loading> segments = load.segments();
    const CachedSegment& first = *segments.front().segment;
    // No reader holds a segment that made room, so its memory can be used again.
    auto next = segments.begin();
    for (CachedSegment* unused : taken)
        if (unused->length == first.length && unused->storage != nullptr && next != segments.end())
            (next++)->samples = std::move(unused->storage);
    letGo(taken);
    const auto length = static_cast<std::size_t>(first.length);
    const std::int64_t position = first.material->start(first.number);
    std::array<FrameSource::Stretch, SegmentLists::mostTogether> all;
    const std::span<FrameSource::Stretch> stretches = std::span(all).first(segments.size());
    try {
        auto stretch = stretches.begin();
        for (Loading& loading : segments) {
            if (loading.samples == nullptr)
                loading.samples = std::make_unique_for_overwrite<float[]>(length);
            const SampleSource::InFrames& inFrames = loading.segment->material->inFrames;
            *stretch++ = {inFrames.channel, inFrames.factor, {loading.samples.get(), length}};
        }
        if (FrameSource* const frames = first.material->inFrames.frames; frames != nullptr)
            frames->read(position, stretches);
        else
            first.material->source->read(position, stretches.front().samples);
    } catch (...) {
        load.failure = failureText("the source failed without saying why");
    }
}

void CacheCore::publish(Load load, SegmentLists::List& taken) {
    std::array<EventPtr, SegmentLists::mostTogether> completed;
    auto* next = completed.begin();
    Lock lock(mutex());
    for (auto& [segment, samples] : load.segments()) {
        Material& material = *segment->material;
        *next++ = segment->completed;
        if (!load.failure) {
            segment->storage = std::move(samples);
            segment->samples = segment->storage.get();
            segment->status.store(Aud::eSegmentReady, std::memory_order_release);
            lists_.finishLoading(*segment, CachedSegment::eReady);
        } else {
            if (++material.failedSegments == 1)
                material.firstFailure = *load.failure;
            segment->status.store(eSegmentFailed, std::memory_order_release);
            lists_.finishLoading(*segment, CachedSegment::eFailed);
        }
        if (material.removed)
            lists_.take(*segment, taken);
    }
    lock.unlock();
    for (const EventPtr& event : std::span(completed).first(load.count))
        event->signal();
}

Material& CacheCore::find(const Cookie& cookie) const {
    const auto found = materials_.find(cookie);
    if (found == materials_.end())
        throw UnknownMaterial(cookie);
    return *found->second;
}

std::uint32_t CacheCore::reach(const Orv::OutputGearing& gearing, std::uint32_t held) const {
    const double speed = std::abs(gearing.sourceSamplesPerOutputSample);
    // A speed that is not a number counts as 1.
    const double wanted = std::ceil(std::max(segmentsAhead_, held) * (speed > 1.0 ? speed : 1.0));
    const std::size_t segmentBytes = static_cast<std::size_t>(segmentLength_) * sizeof(float);
    const auto most = static_cast<double>(std::max<std::size_t>(memoryBudget_ / segmentBytes / 2, 1));
    // The last limit keeps the conversion in range where the budget is all the memory there is.
    return static_cast<std::uint32_t>(std::min({wanted, most, 1e6}));
}

void CacheCore::enter(Material& material, std::uint32_t number, const LookAhead& lookAhead,
                      Aud::SampleCacheSegment& current) {
    Lock lock(mutex());
    current = entered(material, number, lookAhead);
    const unsigned int requests = std::exchange(unheard_, 0U);
    lock.unlock();
    wakeLoaders(requests);
}

void CacheCore::wakeLoaders(unsigned int requests) {
    if (requests == 1)
        requested_.notify_one();
    else if (requests > 1)
        requested_.notify_all();
}

Aud::SampleCacheSegment CacheCore::entered(Material& material, std::uint32_t number,
                                           const LookAhead& lookAhead) {
    requestAhead(material, number + step(lookAhead.direction), lookAhead);
    // A reader of removed material gets a segment of its own that nobody will load.
    return material.removed ? Access::adopt(new CachedSegment(Aud::eSegmentEmpty, material.lengthOf(number),
                                                              material.shared_from_this(), number))
                            : Access::share(request(material, number, CachedSegment::eUrgent));
}

Aud::SampleCacheSegment CacheCore::approach(Material& material, const LookAhead& lookAhead) {
    const std::int64_t first =
        lookAhead.direction == Aud::Render::Direction::forward ? 0 : material.segmentCount() - 1;
    requestAhead(material, first, lookAhead);
    return Access::adopt(new CachedSegment(Aud::eSegmentEmpty, 0, material.shared_from_this(), 0));
}

CacheCore::Standing CacheCore::stand(const Cookie& cookie, std::int64_t sample, const LookAhead& lookAhead) {
    Lock lock(mutex());
    Material& material = find(cookie);
    Standing standing{.material = &material, .materialLength = material.length, .segment = {}};
    const bool isForward = lookAhead.direction == Aud::Render::Direction::forward;
    if (sample >= 0 && sample < material.length) {
        standing.number = static_cast<std::uint32_t>(sample / material.segmentLength);
        standing.index = static_cast<std::int32_t>(sample % material.segmentLength);
        standing.segment = entered(material, standing.number, lookAhead);
    } else if (isForward ? sample < 0 : sample >= 0) {
        standing.segment = approach(material, lookAhead);
    }
    const unsigned int requests = std::exchange(unheard_, 0U);
    lock.unlock();
    wakeLoaders(requests);
    return standing;
}

void CacheCore::requestAhead(Material& material, std::int64_t first, const LookAhead& lookAhead) {
    const bool forward = lookAhead.direction == Aud::Render::Direction::forward;
    const std::int64_t left = material.removed ? 0 : forward ? material.segmentCount() - first : first + 1;
    const auto there = static_cast<std::size_t>(std::clamp<std::int64_t>(left, 0, lookAhead.reach));
    // Beyond the end of the material only old handles are left to be given up.
    for (std::size_t i = there; i < lookAhead.held.size(); ++i)
        lookAhead.held[i] = Aud::SampleCacheSegment();
    // The nearest comes last: the last request is loaded first.
    for (std::size_t i = there; i-- > 0;) {
        const std::int64_t number = first + static_cast<std::int64_t>(i) * step(lookAhead.direction);
        CachedSegment& segment = request(material, static_cast<std::uint32_t>(number), CachedSegment::eAhead);
        if (i < lookAhead.held.size())
            lookAhead.held[i] = Access::share(segment);
    }
}

CachedSegment& CacheCore::request(Material& material, std::uint32_t number, CachedSegment::Stage stage) {
    const auto found = material.segments.find(number);
    if (found == material.segments.end())
        return addRequests(material, number, stage);
    CachedSegment& segment = *found->second;
    lists_.want(stage, segment);
    return segment;
}

CachedSegment& CacheCore::addRequests(Material& material, std::uint32_t number, CachedSegment::Stage stage) {
    if (material.together != nullptr)
        for (Material* const other : *material.together)
            if (other != &material && !other->removed && !other->segments.contains(number))
                addRequest(*other, number, CachedSegment::eAhead);
    ++unheard_;
    return addRequest(material, number, stage);
}

CachedSegment& CacheCore::addRequest(Material& material, std::uint32_t number, CachedSegment::Stage stage) {
    auto segment = std::make_unique<CachedSegment>(Aud::eSegmentRequestOutstanding, material.lengthOf(number),
                                                   material.shared_from_this(), number);
    segment->completed = EventPtr(new Event);
    segment->requestCompleted = &*segment->completed;
    SegmentLists::List node{segment.get()};
    material.segments.emplace(number, segment.get());
    // Nothing below can fail: from here on the lists own the segment.
    lists_.add(stage, node);
    return *segment.release();
}

void CacheCore::takeAll(Material& material, SegmentLists::List& taken) {
    material.removed = true;
    while (!material.segments.empty()) {
        const auto first = material.segments.begin();
        if (first->second->stage == CachedSegment::eLoading)
            // Its loader takes the segment when the read is over.
            material.segments.erase(first);
        else
            lists_.take(*first->second, taken);
    }
}

void CacheCore::letGo(SegmentLists::List& taken) {
    for (CachedSegment* segment : taken) {
        segment->completed->signal();
        Access::release(segment);
    }
    taken.clear();
}

} // namespace audlmd

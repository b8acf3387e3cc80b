// The host operations of a render call, answered by the current scripted host.

#include "contract/Biquad.hpp"
#include "contract/DynamicLevel.hpp"
#include "contract/SampleCache.hpp"
#include "ole/Orv/LightweightString.hpp"
#include "ole/Orv/Ptr.hpp"
#include "tests/scripted_host/ScriptedHost.hpp"

#include <array>
#include <map>
#include <memory>
#include <new>

namespace model = audlmd::model;
using audlmd::test::ScriptedHost;

namespace {

std::int64_t heapBlocks = 0;
/// The count of the event that the library holds.
const std::int32_t* heldEventCount = nullptr;

ScriptedHost& host() {
    return *ScriptedHost::current;
}

class ScriptedEvent final : public iThreadEvent {
public:
    ScriptedEvent(int segment, bool kept) : segment_(segment), kept_(kept) {
        referenceCount = kept ? 1 : 0;
        heldEventCount = &referenceCount;
    }
    ~ScriptedEvent() override {
        if (!kept_)
            host().note("destroy event", 0);
    }

    bool wait(std::uint32_t timeOut) override {
        host().wait(segment_, timeOut);
        return true;
    }

private:
    int segment_;
    bool kept_;
};

class ScriptedOperatingSystem final : public iOperatingSystem, iReferenceCounts, iHeap, iExceptionRecorder {
public:
    iReferenceCounts& referenceCounts() noexcept override { return *this; }
    iHeap& heap() noexcept override { return *this; }
    iExceptionRecorder& exceptionRecorder() noexcept override { return *this; }

private:
    void increment(std::int32_t& count) noexcept override { ++count; }
    std::int32_t decrement(std::int32_t& count) noexcept override {
        if (&count == heldEventCount)
            host().note("release event", static_cast<std::uint64_t>(count - 1));
        return --count;
    }
    // Behind each block stands a guard; a block that was written beyond stays in use.
    void* allocate(std::size_t bytes) override {
        ++heapBlocks;
        auto* const storage = static_cast<unsigned char*>(::operator new(bytes + 1));
        storage[bytes] = guard;
        sizes_[storage] = bytes;
        return storage;
    }
    void release(void* storage) noexcept override {
        heapBlocks -= static_cast<unsigned char*>(storage)[sizes_[storage]] == guard;
        ::operator delete(storage);
    }
    void record(ExceptionNotes& notes) override {
        if (ScriptedHost::current != nullptr) { // There is none while the library is being loaded.
            host().recordException();
            host().require(notes.size() == 0);
        }
        const LightweightString<char> note("what the host knows");
        notes = {note, LightweightString<char>(), note};
    }

    static constexpr unsigned char guard = 0xA5;
    std::map<void*, std::size_t> sizes_;
};

} // namespace

iOperatingSystem& OS() noexcept {
    static ScriptedOperatingSystem& system = *new ScriptedOperatingSystem; // outlives all that it counts
    return system;
}

std::int64_t audlmd::test::heapBlocksInUse() {
    return heapBlocks;
}

Cookie ce_handle::get_strip_cookie() const {
    host().stripCookie();
    return this == &host().record->strip ? stripCookie_ : Cookie();
}

namespace Aud {

class SampleCacheSegment::Body {};

/// Handles by the numbers of their segments.
class SampleCacheSegmentAccess {
public:
    static int numberOf(const SampleCacheSegment& segment) {
        return segment.body_ == nullptr ? -1 : static_cast<int>(segment.body_ - bodies.data());
    }
    static void rebind(SampleCacheSegment& segment, int number) {
        segment.body_ = number < 0 ? nullptr : &bodies[static_cast<std::size_t>(number)];
    }

private:
    static inline std::array<SampleCacheSegment::Body, ScriptedHost::maxSegments> bodies;
};

using Access = SampleCacheSegmentAccess;

namespace {

/// Whether an iterator is being made, whose handles are the host's own work.
bool isMaking = false;

} // namespace

SampleCacheSegment::SampleCacheSegment() : body_(nullptr) {
    isMaking ? host().adoptSegment() : host().makeSegment();
}
SampleCacheSegment::SampleCacheSegment(const SampleCacheSegment& other) : body_(other.body_) {
    host().copySegment(Access::numberOf(other));
}
SampleCacheSegment& SampleCacheSegment::operator=(const SampleCacheSegment& other) {
    host().assignSegment(Access::numberOf(*this), Access::numberOf(other));
    body_ = other.body_;
    return *this;
}
SampleCacheSegment::~SampleCacheSegment() {
    host().destroySegment(Access::numberOf(*this));
}
eSegmentStatus SampleCacheSegment::status() const {
    return static_cast<eSegmentStatus>(host().status(Access::numberOf(*this)));
}
const float* SampleCacheSegment::pSamples() const {
    return host().samples(Access::numberOf(*this));
}
std::int32_t SampleCacheSegment::length() const {
    return host().length(Access::numberOf(*this));
}
ThreadEventPtr SampleCacheSegment::getRequestCompletedEvent() const {
    static std::unique_ptr<ScriptedEvent> kept;
    host().requestEvent(Access::numberOf(*this));
    auto* event = new ScriptedEvent(Access::numberOf(*this), host().keepsEvents);
    if (host().keepsEvents)
        kept.reset(event);
    return ThreadEventPtr(event);
}

namespace {

// The values of the members of the iterators that only the host uses.
constexpr std::uint8_t ownFlags = 0xA5;
constexpr std::uint32_t ownReach = 0x12345678;

/// Where the iterator that is being made stands.
model::Place made;

/// Begins a constructor of an iterator. The handles that its members make are the host's own work.
const Cookie& begin(const model::SourceRequest& request, const Cookie& cookie, const SampleCache& cache,
                    const Orv::OutputGearing& gearing) {
    made = host().makeSource(request);
    host().require(cookie == ScriptedHost::cookie && &cache == host().cache && &gearing == host().gearing);
    isMaking = true;
    return cookie;
}

/// Moves an iterator to a place.
template <class Number>
void moveTo(const model::Place& place, SampleCacheSegment& segment, std::int32_t& index, Number& number) {
    Access::rebind(segment, place.segment);
    index = place.index;
    number = static_cast<Number>(place.segment);
}

} // namespace

SampleCache::ForwardIterator::ForwardIterator(const Cookie& cookie, long position, bool flag,
                                              SampleCache& cache, unsigned int extra, bool notFlag,
                                              const Orv::OutputGearing& gearing)
    : identity(begin({true, position, flag, notFlag, extra}, cookie, cache, gearing)), segmentIndex(0),
      cachePosition(position), materialLength(host().materialLength()), hostMaterial(&host()),
      waitForSegment(flag), hostSegmentsAhead(extra), hostHeldSegments(extra), hostFlags(ownFlags),
      hostSegmentNumber(0), hostReach(ownReach) {
    for (std::size_t i = 0; i < extra; ++i)
        Access::rebind(hostHeldSegments[i], static_cast<int>(i));
    moveTo(made, currentSegment, segmentIndex, hostSegmentNumber);
    isMaking = false;
}

SampleCache::ReverseIterator::ReverseIterator(const Cookie& cookie, long position, bool flag,
                                              SampleCache& cache, bool notFlag,
                                              const Orv::OutputGearing& gearing)
    : identity(begin({false, position, flag, notFlag, 0}, cookie, cache, gearing)), segmentIndex(0),
      cachePosition(position), materialLength(host().materialLength()), hostMaterial(&host()),
      waitForSegment(flag), hostFlags(ownFlags), hostSegmentNumber(0), hostReach(ownReach) {
    moveTo(made, currentSegment, segmentIndex, hostSegmentNumber);
    isMaking = false;
}

SampleCache::ForwardIterator::~ForwardIterator() {
    host().require(identity == ScriptedHost::cookie && hostMaterial == &host() && hostFlags == ownFlags &&
                   hostReach == ownReach && hostHeldSegments.size() == hostSegmentsAhead);
    host().destroySource(true);
}

SampleCache::ReverseIterator::~ReverseIterator() {
    host().require(identity == ScriptedHost::cookie && hostMaterial == &host() && hostFlags == ownFlags &&
                   hostReach == ownReach);
    host().destroySource(false);
}

void SampleCache::ForwardIterator::internal_inc_hitFirstSegment() {
    moveTo(host().hitFirst(), currentSegment, segmentIndex, hostSegmentNumber);
}
void SampleCache::ForwardIterator::internal_inc_moveToNextSegment() {
    moveTo(host().moveForward(static_cast<int>(hostSegmentNumber)), currentSegment, segmentIndex,
           hostSegmentNumber);
}
void SampleCache::ForwardIterator::internal_incrementAudioUnderrunCounter() const {
    host().countUnderrun();
}
void SampleCache::ReverseIterator::internal_inc_hitLastSegment() {
    moveTo(host().hitLast(), currentSegment, segmentIndex, hostSegmentNumber);
}
void SampleCache::ReverseIterator::internal_inc_moveToNextSegment() {
    moveTo(host().moveReverse(static_cast<int>(hostSegmentNumber)), currentSegment, segmentIndex,
           hostSegmentNumber);
}
void SampleCache::ReverseIterator::internal_incrementAudioUnderrunCounter() const {
    host().countUnderrun();
}

float Filter::Biquad::processSample(float x) {
    return host().filter(static_cast<unsigned int>(this - &host().record->equaliser.band(0)), x);
}
float Filter::Biquad::getLastProcessSampleResult() {
    return host().lastResult(static_cast<unsigned int>(this - &host().record->equaliser.band(0)));
}

namespace DynamicLevelControl {
namespace {

void load(DynamicLevelApplyingIteratorState& state, const model::LevelSegment& segment) {
    state.samplesToNextNode = segment.samples;
    state.uValue = segment.uValue;
    state.uValueStep = segment.uValueStep;
    state.stationary = segment.stationary;
}

} // namespace

DynamicLevelApplyingIteratorBase::DynamicLevelApplyingIteratorBase(DynamicLevelApplyingIteratorState& state)
    : state_(state) {
    host().bindLevel();
    host().require(&state == &host().record->dynamicLevel);
}
void DynamicLevelApplyingIteratorBase::moveToNextNodeForwards() {
    load(state_, host().nextLevel(true));
}
void DynamicLevelApplyingIteratorBase::moveToNextNodeReverse() {
    load(state_, host().nextLevel(false));
}

} // namespace DynamicLevelControl
} // namespace Aud

// Every host operation that the library imports, answered by the current script.

#include "host/Biquad.hpp"
#include "host/DynamicLevel.hpp"
#include "host/LoadServices.hpp"
#include "host/SampleCache.hpp"
#include "model/OutputTypes.hpp"
#include "model/Script.hpp"
#include "ole/Orv/OrvModeMeta"
#include "tests/library/host/LoadLog.hpp"

#include <array>
#include <cstdlib>
#include <new>

namespace {

std::int64_t heapBlocks = 0;
/// The count of the event that the library holds.
const std::int32_t* heldEventCount = nullptr;

Test::Script& script() {
    return *Test::Script::current;
}

class ScriptedEvent final : public iThreadEvent {
public:
    ScriptedEvent(int segment, bool kept) : segment_(segment), kept_(kept) {
        referenceCount = kept ? 1 : 0;
        heldEventCount = &referenceCount;
    }
    ~ScriptedEvent() override {
        if (!kept_)
            script().note(Test::Op::destroyEvent, 0);
    }

    bool wait(std::uint32_t timeOut) override {
        script().wait(segment_, timeOut);
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
            script().note(Test::Op::releaseEvent, static_cast<std::uint64_t>(count - 1));
        return --count;
    }
    void* allocate(std::size_t bytes) override {
        ++heapBlocks;
        return ::operator new(bytes);
    }
    void release(void* storage) noexcept override {
        --heapBlocks;
        ::operator delete(storage);
    }
    void record(ExceptionNotes& notes) override {
        if (Test::Script::current != nullptr) // There is none while the library is being loaded.
            script().note(Test::Op::recordException, notes.size());
        const LightweightString<char> note("what the host knows");
        notes = {note, LightweightString<char>(), note};
    }
};

} // namespace

iOperatingSystem& OS() noexcept {
    static ScriptedOperatingSystem system;
    return system;
}

std::int64_t Test::heapBlocksInUse() {
    return heapBlocks;
}

Test::LoadLog& Test::LoadLog::get() {
    static LoadLog log;
    return log;
}

double config_double(const char* key, double defaultValue) {
    Test::LoadLog& log = Test::LoadLog::get();
    log.settingsRead.emplace_back(key, defaultValue);
    return log.speedLimitSetting.value_or(defaultValue);
}

Orv::Image::FormatUID::FormatUID(std::uint32_t number) : number_(number) {
    Test::LoadLog& log = Test::LoadLog::get();
    ++log.announcedFormats;
    if (log.onFormat)
        log.onFormat(number);
}

Orv::Image::FormatUID::~FormatUID() {
    --Test::LoadLog::get().announcedFormats;
}

template <class Out>
auto Aud::LoopModesDespatcherInstance<Out>::get() -> typename Render::LoopModesDespatch::Types<Out>::Table& {
    static typename Render::LoopModesDespatch::Types<Out>::Table table;
    return table;
}

template struct Aud::LoopModesDespatcherInstance<Test::F32*>;
template struct Aud::LoopModesDespatcherInstance<Test::S16*>;
template struct Aud::LoopModesDespatcherInstance<Test::S24*>;
template struct Aud::LoopModesDespatcherInstance<Test::S8*>;
template struct Aud::LoopModesDespatcherInstance<Test::U8*>;
template struct Aud::LoopModesDespatcherInstance<Test::S24In32*>;
template struct Aud::LoopModesDespatcherInstance<Test::S32*>;
template struct Aud::LoopModesDespatcherInstance<Test::Summing<Test::F32>>;
template struct Aud::LoopModesDespatcherInstance<Test::Summing<Test::S16>>;
template struct Aud::LoopModesDespatcherInstance<Test::Summing<Test::S24>>;
template struct Aud::LoopModesDespatcherInstance<Test::Summing<Test::S8>>;
template struct Aud::LoopModesDespatcherInstance<Test::Summing<Test::U8>>;
template struct Aud::LoopModesDespatcherInstance<Test::Summing<Test::S24In32>>;
template struct Aud::LoopModesDespatcherInstance<Test::Summing<Test::S32>>;

Cookie ce_handle::get_strip_cookie() const {
    script().call(Test::Op::stripCookie, 0);
    return this == script().strip ? stripCookie_ : Cookie();
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
    static inline std::array<SampleCacheSegment::Body, Test::Script::maxSegments> bodies;
};

using Access = SampleCacheSegmentAccess;

SampleCacheSegment::SampleCacheSegment() : body_(nullptr) {
    script().makeSegment();
}
SampleCacheSegment::SampleCacheSegment(const SampleCacheSegment& other) : body_(other.body_) {
    script().copySegment(Access::numberOf(other));
}
SampleCacheSegment& SampleCacheSegment::operator=(const SampleCacheSegment& other) {
    script().assignSegment(Access::numberOf(*this), Access::numberOf(other));
    body_ = other.body_;
    return *this;
}
SampleCacheSegment::~SampleCacheSegment() {
    script().destroySegment(Access::numberOf(*this));
}
eSegmentStatus SampleCacheSegment::status() const {
    return static_cast<eSegmentStatus>(script().status(Access::numberOf(*this)));
}
const float* SampleCacheSegment::pSamples() const {
    return script().samples(Access::numberOf(*this));
}
std::int32_t SampleCacheSegment::length() const {
    return script().length(Access::numberOf(*this));
}
ThreadEventPtr SampleCacheSegment::getRequestCompletedEvent() const {
    static std::unique_ptr<ScriptedEvent> kept;
    script().requestEvent(Access::numberOf(*this));
    auto* event = new ScriptedEvent(Access::numberOf(*this), script().keepsEvents);
    if (script().keepsEvents)
        kept.reset(event);
    return ThreadEventPtr(event);
}

namespace {

/// Where the iterator that is being made stands.
Test::Place made;

/// The first thing in a constructor, so that the members after it are the host's own work.
const Cookie& begin(bool forward, const Cookie& cookie, long position, bool flag, bool notFlag,
                    unsigned int extra, const SampleCache& cache, const Orv::OutputGearing& gearing) {
    Test::Script& host = script();
    const bool right = cookie == Test::Script::cookie && &cache == host.cache && &gearing == host.gearing;
    made = host.makeIterator(forward, position,
                             (right ? Test::Script::rightObjects : 0) | std::uint64_t{extra} << 32 |
                                 unsigned{flag} << 1 | unsigned{notFlag});
    host.beginHostWork();
    return cookie;
}

/// Makes the place that the script answers current.
template <class Number>
void moveTo(const Test::Place& place, SampleCacheSegment& segment, std::int32_t& index, Number& number) {
    Access::rebind(segment, place.segment);
    index = place.index;
    number = static_cast<Number>(place.segment);
}

} // namespace

SampleCache::ForwardIterator::ForwardIterator(const Cookie& cookie, long position, bool flag,
                                              SampleCache& cache, unsigned int extra, bool notFlag,
                                              const Orv::OutputGearing& gearing)
    : identity(begin(true, cookie, position, flag, notFlag, extra, cache, gearing)), segmentIndex(0),
      cachePosition(position), materialLength(script().materialLength), hostMaterial(&script()),
      waitForSegment(flag), hostSegmentsAhead(extra), hostHeldSegments(extra),
      hostFlags(Test::Script::hostFlags), hostSegmentNumber(0), hostReach(Test::Script::hostReach) {
    for (std::size_t i = 0; i < extra; ++i)
        Access::rebind(hostHeldSegments[i], static_cast<int>(i));
    moveTo(made, currentSegment, segmentIndex, hostSegmentNumber);
    script().endHostWork();
}

SampleCache::ReverseIterator::ReverseIterator(const Cookie& cookie, long position, bool flag,
                                              SampleCache& cache, bool notFlag,
                                              const Orv::OutputGearing& gearing)
    : identity(begin(false, cookie, position, flag, notFlag, 0, cache, gearing)), segmentIndex(0),
      cachePosition(position), materialLength(script().materialLength), hostMaterial(&script()),
      waitForSegment(flag), hostFlags(Test::Script::hostFlags), hostSegmentNumber(0),
      hostReach(Test::Script::hostReach) {
    moveTo(made, currentSegment, segmentIndex, hostSegmentNumber);
    script().endHostWork();
}

SampleCache::ForwardIterator::~ForwardIterator() {
    if (identity != Test::Script::cookie || hostMaterial != &script() ||
        hostFlags != Test::Script::hostFlags || hostReach != Test::Script::hostReach ||
        hostHeldSegments.size() != hostSegmentsAhead)
        script().note(Test::Op::corrupted, 0);
    script().note(Test::Op::destroyForward, 0);
}

SampleCache::ReverseIterator::~ReverseIterator() {
    if (identity != Test::Script::cookie || hostMaterial != &script() ||
        hostFlags != Test::Script::hostFlags || hostReach != Test::Script::hostReach)
        script().note(Test::Op::corrupted, 0);
    script().note(Test::Op::destroyReverse, 0);
}

void SampleCache::ForwardIterator::internal_inc_hitFirstSegment() {
    moveTo(script().hitFirst(), currentSegment, segmentIndex, hostSegmentNumber);
}
void SampleCache::ForwardIterator::internal_inc_moveToNextSegment() {
    moveTo(script().moveForward(static_cast<int>(hostSegmentNumber)), currentSegment, segmentIndex,
           hostSegmentNumber);
}
void SampleCache::ForwardIterator::internal_incrementAudioUnderrunCounter() const {
    script().underrun();
}
void SampleCache::ReverseIterator::internal_inc_hitLastSegment() {
    moveTo(script().hitLast(), currentSegment, segmentIndex, hostSegmentNumber);
}
void SampleCache::ReverseIterator::internal_inc_moveToNextSegment() {
    moveTo(script().moveReverse(static_cast<int>(hostSegmentNumber)), currentSegment, segmentIndex,
           hostSegmentNumber);
}
void SampleCache::ReverseIterator::internal_incrementAudioUnderrunCounter() const {
    script().underrun();
}

float Filter::Biquad::processSample(float x) {
    const auto* first = static_cast<const Biquad*>(script().firstBand);
    return script().biquad(static_cast<unsigned int>(this - first), x);
}
float Filter::Biquad::getLastProcessSampleResult() {
    const auto* first = static_cast<const Biquad*>(script().firstBand);
    return script().biquadResult(static_cast<unsigned int>(this - first));
}

namespace DynamicLevelControl {
namespace {

void load(DynamicLevelApplyingIteratorState& state, const Test::LevelSegment& segment) {
    state.samplesToNextNode = segment.samples;
    state.uValue = segment.uValue;
    state.uValueStep = segment.uValueStep;
    state.stationary = segment.stationary;
}

} // namespace

DynamicLevelApplyingIteratorBase::DynamicLevelApplyingIteratorBase(DynamicLevelApplyingIteratorState& state)
    : state_(state) {
    script().call(Test::Op::bindLevel, &state == script().levelState);
}
void DynamicLevelApplyingIteratorBase::moveToNextNodeForwards() {
    load(state_, script().nextLevel(true));
}
void DynamicLevelApplyingIteratorBase::moveToNextNodeReverse() {
    load(state_, script().nextLevel(false));
}

} // namespace DynamicLevelControl
} // namespace Aud

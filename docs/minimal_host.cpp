// A host without a cache: materials lie in memory, cut into segments of 1,000 samples. See hosts.md.
#include "contract/Biquad.hpp"
#include "contract/DynamicLevel.hpp"
#include "contract/GainCurveNodes.hpp"
#include "contract/LoadServices.hpp"
#include "contract/SampleCache.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "ole/Orv/LightweightString.hpp"
#include "ole/Orv/OrvModeMeta"
#include "ole/Orv/Ptr.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <future>
#include <memory>
#include <vector>

// Loading: settings, picture formats, the operating system's services, the despatch tables.
//! [settings]
double config_double(const char*, double defaultValue) { return defaultValue; }

Orv::Image::FormatUID::FormatUID(std::uint32_t number) : number_(number) {}
Orv::Image::FormatUID::~FormatUID() = default;
//! [settings]

//! [system]
struct System final : iOperatingSystem, iReferenceCounts, iHeap, iExceptionRecorder {
    iReferenceCounts& referenceCounts() noexcept override { return *this; }
    iHeap& heap() noexcept override { return *this; }
    iExceptionRecorder& exceptionRecorder() noexcept override { return *this; }
    void increment(std::int32_t& count) noexcept override { std::atomic_ref(count).fetch_add(1); }
    std::int32_t decrement(std::int32_t& count) noexcept override { return std::atomic_ref(count).fetch_sub(1) - 1; }
    void* allocate(std::size_t bytes) override {
        if (void* const storage = std::malloc(std::max<std::size_t>(bytes, 1)))
            return storage;
        throw std::bad_alloc();
    }
    void release(void* storage) noexcept override { std::free(storage); }
    void record(ExceptionNotes&) override {}
};
constinit System operatingSystem;
iOperatingSystem& OS() noexcept { return operatingSystem; }
//! [system]

//! [tables]
template <class Out>
auto Aud::LoopModesDespatcherInstance<Out>::get() -> typename Render::LoopModesDespatch::Types<Out>::Table& {
    static typename Render::LoopModesDespatch::Types<Out>::Table table;
    return table;
}
// Has the compiler produce all fourteen.
[[gnu::used]] const auto tables = []<class... Out>(std::tuple<Out...>*) {
    return std::tuple{&Aud::LoopModesDespatcherInstance<Out>::get...};
}(static_cast<Aud::Render::OutputTypes*>(nullptr));
//! [tables]

// Materials, and the handles of their segments.
Cookie ce_handle::get_strip_cookie() const { return stripCookie_; }

//! [event]
struct Event final : iThreadEvent {
    std::promise<void> signal;
    std::shared_future<void> signalled = signal.get_future().share();
    bool wait(std::uint32_t milliseconds) override {
        if (milliseconds == noTimeLimit)
            signalled.wait();
        return signalled.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready;
    }
};
//! [event]

struct Material : std::enable_shared_from_this<Material> {
    static constexpr std::int64_t segmentLength = 1000;
    std::vector<float> samples;
    std::atomic<Aud::eSegmentStatus> status = Aud::eSegmentReady;
    Event* event = new Event;
    ThreadEventPtr held{event};
    std::atomic<std::uint64_t> underruns = 0;
};
std::int64_t lengthOf(const Material* material) { return material ? std::ssize(material->samples) : 0; }

namespace Aud {

//! [segments]
/// Each handle has one, which keeps the material. A host that counts holders in the segment spares the heap.
class SampleCacheSegment::Body {
public:
    std::shared_ptr<Material> material;
    std::int64_t start;
};

SampleCacheSegment::SampleCacheSegment() : body_(nullptr) {}
SampleCacheSegment::SampleCacheSegment(const SampleCacheSegment& other)
    : body_(other.body_ ? new Body(*other.body_) : nullptr) {}
SampleCacheSegment& SampleCacheSegment::operator=(const SampleCacheSegment& other) {
    SampleCacheSegment copy(other);
    std::swap(body_, copy.body_);
    return *this;
}
SampleCacheSegment::~SampleCacheSegment() { delete body_; }
eSegmentStatus SampleCacheSegment::status() const { return body_ ? body_->material->status.load() : eSegmentEmpty; }
const float* SampleCacheSegment::pSamples() const { return body_->material->samples.data() + body_->start; }
std::int32_t SampleCacheSegment::length() const {
    return static_cast<std::int32_t>(std::min(lengthOf(body_->material.get()) - body_->start, Material::segmentLength));
}
ThreadEventPtr SampleCacheSegment::getRequestCompletedEvent() const { return body_->material->held; }
//! [segments]

//! [cache]
struct MemoryCache : SampleCache {
    std::vector<std::shared_ptr<Material>> materials; // by the channels of their cookies
};
Material* find(SampleCache& cache, const Cookie& cookie) {
    auto& materials = static_cast<MemoryCache&>(cache).materials;
    return cookie.channel < materials.size() ? materials[cookie.channel].get() : nullptr;
}
//! [cache]

void countUnderrun(void* material) { ++static_cast<Material*>(material)->underruns; }

/// Makes the handle of a sample's segment, and where the sample is there; an empty one outside the material.
class SampleCacheSegmentAccess {
public:
    static std::int32_t stand(SampleCacheSegment& handle, void* hostMaterial, std::int64_t sample) {
        handle = SampleCacheSegment();
        auto* const material = static_cast<Material*>(hostMaterial);
        if (sample < 0 || sample >= lengthOf(material))
            return 0;
        const std::int64_t index = sample % Material::segmentLength;
        handle.body_ = new SampleCacheSegment::Body{material->shared_from_this(), sample - index};
        return static_cast<std::int32_t>(index);
    }
};
const auto stand = SampleCacheSegmentAccess::stand;

// Readers. When the renderer asks for another segment, it has moved the position.
using Forward = SampleCache::ForwardIterator;
using Reverse = SampleCache::ReverseIterator;
//! [readers]
Forward::ForwardIterator(const Cookie& cookie, long position, bool flag, SampleCache& cache, unsigned int, bool,
                         const Orv::OutputGearing&)
    : identity(cookie), cachePosition(position), materialLength(lengthOf(find(cache, cookie))),
      hostMaterial(find(cache, cookie)), waitForSegment(flag), hostSegmentsAhead(0), hostFlags(0), hostSegmentNumber(0),
      hostReach(0) {
    segmentIndex = stand(currentSegment, hostMaterial, cachePosition);
}
Forward::~ForwardIterator() = default;
void Forward::internal_inc_hitFirstSegment() { segmentIndex = stand(currentSegment, hostMaterial, 0); }
void Forward::internal_inc_moveToNextSegment() { segmentIndex = stand(currentSegment, hostMaterial, cachePosition); }
void Forward::internal_incrementAudioUnderrunCounter() const { countUnderrun(hostMaterial); }

/// Made with the exclusive end of what it reads.
Reverse::ReverseIterator(const Cookie& cookie, long position, bool flag, SampleCache& cache, bool,
                         const Orv::OutputGearing&)
    : identity(cookie), cachePosition(position - 1), materialLength(lengthOf(find(cache, cookie))),
      hostMaterial(find(cache, cookie)), waitForSegment(flag), hostFlags(0), hostSegmentNumber(0), hostReach(0) {
    segmentIndex = stand(currentSegment, hostMaterial, cachePosition);
}
Reverse::~ReverseIterator() = default;
void Reverse::internal_inc_hitLastSegment() { segmentIndex = stand(currentSegment, hostMaterial, materialLength - 1); }
void Reverse::internal_inc_moveToNextSegment() { segmentIndex = stand(currentSegment, hostMaterial, cachePosition); }
void Reverse::internal_incrementAudioUnderrunCounter() const { countUnderrun(hostMaterial); }
//! [readers]

// The equaliser and the automation.
//! [equaliser]
float Filter::Biquad::processSample(float x) {
    const double y = b0_ * x + delays_.first;
    delays_ = {b1b2_.first * x - a1a2_.first * y + delays_.second, b1b2_.second * x - a1a2_.second * y};
    return lastResult_ = static_cast<float>(y);
}
float Filter::Biquad::getLastProcessSampleResult() { return lastResult_; }
//! [equaliser]

namespace DynamicLevelControl {
//! [levels]
/// From the level that the walk has reached, straight on to the next node in that direction: nearNode. Nodes at one
/// position make a jump.
void loadRamp(DynamicLevelApplyingIteratorState& state, std::uint32_t step) {
    HostStorage::LevelWalk& walk = state.host;
    for (; walk.nearNode < walk.nodeCount; walk.nearNode += step) { // also ends before node 0, where the number wraps
        const auto& [position, uValue] = walk.nodes[walk.nearNode];
        if (position != walk.nextPosition) {
            state.stationary = 0;
            state.samplesToNextNode = static_cast<std::uint32_t>(std::abs(position - walk.nextPosition));
            state.uValueStep = (uValue - state.uValue) / static_cast<float>(state.samplesToNextNode);
            walk.nextPosition = position;
            return;
        }
        state.uValue = uValue;
    }
    state.stationary = 1;
}
DynamicLevelApplyingIteratorBase::DynamicLevelApplyingIteratorBase(DynamicLevelApplyingIteratorState& state)
    : state_(state) {}
void DynamicLevelApplyingIteratorBase::moveToNextNodeForwards() { loadRamp(state_, 1U); }
void DynamicLevelApplyingIteratorBase::moveToNextNodeReverse() { loadRamp(state_, ~0U); }
//! [levels]
} // namespace DynamicLevelControl

namespace GainCurve {
//! [curves]
// The renderer's tables under names by which they can be filled: before the renderer is loaded.
CurveNode mixer[1502] asm("_ZN3Aud9GainCurve22MixerStyleLog1_Private19UVal2Mag_CurveNodesE");
CurveNode power[101] asm("_ZN3Aud9GainCurve22ConstantPower1_Private19UVal2Mag_CurveNodesE");

bool fill(CurveNode* nodes, int count, double spacing, double (*law)(double)) {
    for (int i = 0; i < count; ++i) {
        const double u = i * spacing, rise = law(u + spacing) - law(u);
        nodes[i] = {static_cast<float>(u), static_cast<float>(law(u)), static_cast<float>(rise / spacing), 0.0F};
    }
    return true;
}
const bool filled = fill(mixer, 1502, 0.001, [](double u) { return u * u * u; }) &&
                    fill(power, 101, 0.01, [](double u) { return std::sin(u * 1.5707963267948966); });
//! [curves]
} // namespace GainCurve
} // namespace Aud

#include "contract/Biquad.hpp"
#include "contract/DespatchTables.hpp"
#include "contract/DynamicLevel.hpp"
#include "contract/Identity.hpp"
#include "contract/LoadServices.hpp"
#include "contract/OperatingSystem.hpp"
#include "model/OutputTypes.hpp"
#include "ole/Orv/OrvModeMeta"

#include <new>
#include <tuple>

Cookie ce_handle::get_strip_cookie() const {
    return stripCookie_;
}

double config_double(const char*, double defaultValue) {
    return defaultValue;
}

namespace {

class Services final : public iOperatingSystem, iReferenceCounts, iHeap, iExceptionRecorder {
public:
    iReferenceCounts& referenceCounts() noexcept override { return *this; }
    iHeap& heap() noexcept override { return *this; }
    iExceptionRecorder& exceptionRecorder() noexcept override { return *this; }

private:
    void increment(std::int32_t& count) noexcept override { __atomic_fetch_add(&count, 1, __ATOMIC_RELAXED); }
    std::int32_t decrement(std::int32_t& count) noexcept override {
        return __atomic_sub_fetch(&count, 1, __ATOMIC_ACQ_REL);
    }
    void* allocate(std::size_t bytes) override { return ::operator new(bytes); }
    void release(void* storage) noexcept override { ::operator delete(storage); }
    void record(ExceptionNotes&) override {}
};

} // namespace

iOperatingSystem& OS() noexcept {
    static constinit Services services;
    return services;
}

Orv::Image::FormatUID::FormatUID(std::uint32_t number) : number_(number) {}
// NOLINTNEXTLINE(modernize-use-equals-default): its place in the library makes it anything but trivial
Orv::Image::FormatUID::~FormatUID() {}

void HostStorage::Biquad::setCoefficients(const Coefficients& coefficients) {
    b0_ = coefficients.b0;
    b1b2_ = {coefficients.b1, coefficients.b2};
    a1a2_ = {coefficients.a1, coefficients.a2};
}

namespace Aud {

template <class Out>
typename Render::LoopModesDespatch::Types<Out>::Table& LoopModesDespatcherInstance<Out>::get() {
    static constinit typename Render::LoopModesDespatch::Types<Out>::Table table;
    return table;
}

namespace {

/// Instantiating it emits the fourteen tables.
template <class... Outs>
auto emitTables(std::tuple<Outs...>*) {
    return std::tuple{&LoopModesDespatcherInstance<Outs>::get...};
}
[[gnu::used]] const auto tables = emitTables(static_cast<audlmd::model::OutputTypes*>(nullptr));

} // namespace

namespace Filter {

float Biquad::processSample(float x) {
    const double in = x;
    const double out = b0_ * in + delays_.first;
    delays_ = {b1b2_.first * in + delays_.second - a1a2_.first * out, b1b2_.second * in - a1a2_.second * out};
    return lastResult_ = static_cast<float>(out);
}

float Biquad::getLastProcessSampleResult() {
    return lastResult_;
}

} // namespace Filter

namespace DynamicLevelControl {

DynamicLevelApplyingIteratorBase::DynamicLevelApplyingIteratorBase(DynamicLevelApplyingIteratorState& state)
    : state_(state) {}

/// There and back, for as long as anyone reads.
void DynamicLevelApplyingIteratorBase::moveToNextNodeForwards() {
    state_.samplesToNextNode = 48000;
    state_.uValueStep = -state_.uValueStep;
}

void DynamicLevelApplyingIteratorBase::moveToNextNodeReverse() {
    moveToNextNodeForwards();
}

} // namespace DynamicLevelControl

} // namespace Aud

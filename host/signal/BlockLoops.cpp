#include "host/signal/BlockLoops.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/signal/BlockLoops.cpp"
#include "host/signal/Wide.ipp"

HWY_BEFORE_NAMESPACE();
namespace audlmd::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
using Floats = hn::ScalableTag<float>;

// Each loop goes on sample by sample where the rest fills no vector.

void addProduct(float* bus, const float* input, std::size_t count, float gain) {
    const Floats f;
    const auto gains = hn::Set(f, gain);
    std::size_t i = 0;
    for (; i + hn::Lanes(f) <= count; i += hn::Lanes(f))
        hn::StoreU(hn::Add(hn::LoadU(f, bus + i), hn::Mul(hn::LoadU(f, input + i), gains)), f, bus + i);
    for (; i < count; ++i)
        bus[i] += input[i] * gain;
}

void addTwoProducts(float* bus, const float* a, float gainOfA, const float* b, float gainOfB,
                    std::size_t count) {
    const Floats f;
    const auto gainsOfA = hn::Set(f, gainOfA);
    const auto gainsOfB = hn::Set(f, gainOfB);
    std::size_t i = 0;
    for (; i + hn::Lanes(f) <= count; i += hn::Lanes(f)) {
        const auto sum =
            hn::Add(hn::Mul(hn::LoadU(f, a + i), gainsOfA), hn::Mul(hn::LoadU(f, b + i), gainsOfB));
        hn::StoreU(hn::Add(hn::LoadU(f, bus + i), sum), f, bus + i);
    }
    for (; i < count; ++i)
        bus[i] += a[i] * gainOfA + b[i] * gainOfB;
}

/// The bus stays in registers while all inputs are added, two vectors of it at a time.
void addProducts(float* bus, const BusInput* inputs, std::size_t inputCount, std::size_t count) {
    const Floats f;
    std::size_t i = 0;
    for (; i + 2 * hn::Lanes(f) <= count; i += 2 * hn::Lanes(f)) {
        auto first = hn::LoadU(f, bus + i);
        auto second = hn::LoadU(f, bus + i + hn::Lanes(f));
        for (std::size_t n = 0; n < inputCount; ++n) {
            const auto gains = hn::Set(f, inputs[n].gain);
            const float* const in = inputs[n].samples + i;
            first = hn::Add(first, hn::Mul(hn::LoadU(f, in), gains));
            second = hn::Add(second, hn::Mul(hn::LoadU(f, in + hn::Lanes(f)), gains));
        }
        hn::StoreU(first, f, bus + i);
        hn::StoreU(second, f, bus + i + hn::Lanes(f));
    }
    for (; i < count; ++i)
        for (std::size_t n = 0; n < inputCount; ++n)
            bus[i] += inputs[n].samples[i] * inputs[n].gain;
}

void multiplyAll(float* samples, std::size_t count, float gain) {
    const Floats f;
    const auto gains = hn::Set(f, gain);
    std::size_t i = 0;
    for (; i + hn::Lanes(f) <= count; i += hn::Lanes(f))
        hn::StoreU(hn::Mul(hn::LoadU(f, samples + i), gains), f, samples + i);
    for (; i < count; ++i)
        samples[i] *= gain;
}

void copyBackwards(const float* last, float* samples, std::size_t count) {
    const Floats f;
    std::size_t i = 0;
    for (; i + hn::Lanes(f) <= count; i += hn::Lanes(f))
        hn::StoreU(hn::Reverse(f, hn::LoadU(f, last - i - (hn::Lanes(f) - 1))), f, samples + i);
    for (; i < count; ++i)
        samples[i] = *(last - i);
}

float largestMagnitude(const float* samples, std::size_t count) {
    const Floats f;
    // Two maxima side by side, because each has to wait for the one before it.
    auto peaks = hn::Zero(f);
    auto otherPeaks = hn::Zero(f);
    std::size_t i = 0;
    for (; i + 2 * hn::Lanes(f) <= count; i += 2 * hn::Lanes(f)) {
        // Where one operand is a NaN, the result is the second one.
        peaks = hn::Max(hn::Abs(hn::LoadU(f, samples + i)), peaks);
        otherPeaks = hn::Max(hn::Abs(hn::LoadU(f, samples + i + hn::Lanes(f))), otherPeaks);
    }
    float peak = hn::GetLane(hn::MaxOfLanes(f, hn::Max(peaks, otherPeaks)));
    for (; i < count; ++i)
        peak = std::max(peak, std::fabs(samples[i]));
    return peak;
}

} // namespace
} // namespace audlmd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace audlmd {
namespace {

HWY_EXPORT(addProduct);
HWY_EXPORT(addTwoProducts);
HWY_EXPORT(addProducts);
HWY_EXPORT(multiplyAll);
HWY_EXPORT(copyBackwards);
HWY_EXPORT(largestMagnitude);

} // namespace

void addTo(std::span<float> bus, std::span<const float> input, float gain) {
    HWY_DYNAMIC_DISPATCH(addProduct)(bus.data(), input.data(), bus.size(), gain);
}

void addTo(std::span<float> bus, std::span<const float> a, float gainOfA, std::span<const float> b,
           float gainOfB) {
    HWY_DYNAMIC_DISPATCH(addTwoProducts)(bus.data(), a.data(), gainOfA, b.data(), gainOfB, bus.size());
}

void addTo(std::span<float> bus, std::span<const BusInput> inputs) {
    HWY_DYNAMIC_DISPATCH(addProducts)(bus.data(), inputs.data(), inputs.size(), bus.size());
}

void multiply(std::span<float> samples, float gain) {
    HWY_DYNAMIC_DISPATCH(multiplyAll)(samples.data(), samples.size(), gain);
}

void copyReversed(const float* last, std::span<float> samples) {
    HWY_DYNAMIC_DISPATCH(copyBackwards)(last, samples.data(), samples.size());
}

float peakOf(std::span<const float> samples) {
    return HWY_DYNAMIC_DISPATCH(largestMagnitude)(samples.data(), samples.size());
}

CountAbove countAbove(std::span<const float> samples, float limit) {
    CountAbove count;
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (std::fabs(samples[i]) > limit) {
            count.last = static_cast<std::int64_t>(i);
            if (count.samples++ == 0)
                count.first = count.last;
        }
    return count;
}

} // namespace audlmd
#endif

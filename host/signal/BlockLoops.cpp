#include "host/signal/BlockLoops.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <xmmintrin.h>

namespace audlmd {

void addTo(std::span<float> bus, std::span<const float> input, float gain) {
    // Four at a time by hand: at the compilers' usual effort one of them does not vectorise a loop of any
    // length. Each product and each sum is rounded alone, as in the loop for the rest.
    const std::size_t whole = bus.size() / 4 * 4;
    const __m128 gains = _mm_set1_ps(gain);
    for (std::size_t i = 0; i < whole; i += 4) {
        const __m128 product = _mm_mul_ps(_mm_loadu_ps(&input[i]), gains);
        _mm_storeu_ps(&bus[i], _mm_add_ps(_mm_loadu_ps(&bus[i]), product));
    }
    for (std::size_t i = whole; i < bus.size(); ++i)
        bus[i] += input[i] * gain;
}

void addTo(std::span<float> bus, std::span<const float> a, float gainOfA, std::span<const float> b,
           float gainOfB) {
    const std::size_t whole = bus.size() / 4 * 4;
    const __m128 gainsOfA = _mm_set1_ps(gainOfA);
    const __m128 gainsOfB = _mm_set1_ps(gainOfB);
    for (std::size_t i = 0; i < whole; i += 4) {
        const __m128 sum =
            _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(&a[i]), gainsOfA), _mm_mul_ps(_mm_loadu_ps(&b[i]), gainsOfB));
        _mm_storeu_ps(&bus[i], _mm_add_ps(_mm_loadu_ps(&bus[i]), sum));
    }
    for (std::size_t i = whole; i < bus.size(); ++i)
        bus[i] += a[i] * gainOfA + b[i] * gainOfB;
}

void multiply(std::span<float> samples, float gain) {
    const std::size_t whole = samples.size() / 4 * 4;
    const __m128 gains = _mm_set1_ps(gain);
    for (std::size_t i = 0; i < whole; i += 4)
        _mm_storeu_ps(&samples[i], _mm_mul_ps(_mm_loadu_ps(&samples[i]), gains));
    for (float& sample : samples.subspan(whole))
        sample *= gain;
}

void copyReversed(const float* last, std::span<float> samples) {
    const std::size_t whole = samples.size() / 4 * 4;
    for (std::size_t i = 0; i < whole; i += 4) {
        const __m128 forwards = _mm_loadu_ps(last - i - 3);
        _mm_storeu_ps(&samples[i], _mm_shuffle_ps(forwards, forwards, _MM_SHUFFLE(0, 1, 2, 3)));
    }
    for (std::size_t i = whole; i < samples.size(); ++i)
        samples[i] = *(last - i);
}

float peakOf(std::span<const float> samples) {
    // Two maxima side by side, because each has to wait for the one before it.
    const std::size_t whole = samples.size() / 8 * 8;
    const __m128 sign = _mm_set1_ps(-0.0F);
    __m128 peaks = _mm_setzero_ps();
    __m128 otherPeaks = _mm_setzero_ps();
    for (std::size_t i = 0; i < whole; i += 8) {
        // Where one operand is a NaN, the instruction gives the second one.
        peaks = _mm_max_ps(_mm_andnot_ps(sign, _mm_loadu_ps(&samples[i])), peaks);
        otherPeaks = _mm_max_ps(_mm_andnot_ps(sign, _mm_loadu_ps(&samples[i + 4])), otherPeaks);
    }
    float lanes[4];
    _mm_storeu_ps(lanes, _mm_max_ps(peaks, otherPeaks));
    float peak = *std::max_element(lanes, lanes + 4);
    for (const float sample : samples.subspan(whole))
        peak = std::max(peak, std::fabs(sample));
    return peak;
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

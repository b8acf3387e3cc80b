#include "standalone/mix/BusLoops.hpp"

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

float peakOf(std::span<const float> samples) {
    const std::size_t whole = samples.size() / 4 * 4;
    const __m128 sign = _mm_set1_ps(-0.0F);
    __m128 peaks = _mm_setzero_ps();
    for (std::size_t i = 0; i < whole; i += 4)
        // Where one operand is a NaN, the instruction gives the second one.
        peaks = _mm_max_ps(_mm_andnot_ps(sign, _mm_loadu_ps(&samples[i])), peaks);
    float lanes[4];
    _mm_storeu_ps(lanes, peaks);
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

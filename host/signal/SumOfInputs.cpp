#include "host/signal/BlockLoops.hpp"

#include <emmintrin.h>

namespace audlmd {

/// Each product and each sum is rounded alone, as where the inputs are added one by one; the bus stays in
/// registers meanwhile.
void addTo(std::span<float> bus, std::span<const BusInput> inputs) {
    const std::size_t whole = bus.size() / 16 * 16;
    for (std::size_t i = 0; i < whole; i += 16) {
        float* const out = &bus[i];
        __m128 a = _mm_loadu_ps(out);
        __m128 b = _mm_loadu_ps(out + 4);
        __m128 c = _mm_loadu_ps(out + 8);
        __m128 d = _mm_loadu_ps(out + 12);
        for (const BusInput& input : inputs) {
            const __m128 gain = _mm_set1_ps(input.gain);
            const float* const in = input.samples + i;
            a = _mm_add_ps(a, _mm_mul_ps(_mm_loadu_ps(in), gain));
            b = _mm_add_ps(b, _mm_mul_ps(_mm_loadu_ps(in + 4), gain));
            c = _mm_add_ps(c, _mm_mul_ps(_mm_loadu_ps(in + 8), gain));
            d = _mm_add_ps(d, _mm_mul_ps(_mm_loadu_ps(in + 12), gain));
        }
        _mm_storeu_ps(out, a);
        _mm_storeu_ps(out + 4, b);
        _mm_storeu_ps(out + 8, c);
        _mm_storeu_ps(out + 12, d);
    }
    for (std::size_t i = whole; i < bus.size(); ++i)
        for (const BusInput& input : inputs)
            bus[i] += input.samples[i] * input.gain;
}

} // namespace audlmd

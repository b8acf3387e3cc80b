#pragma once

#include <array>
#include <cstddef>

namespace audlmd {

/// The sections of an equaliser, number by number, as vectors load them. Up to whole vectors, sections that
/// pass samples through keep the last band company.
struct BandsSideBySide {
    static constexpr std::size_t count = 5;
    /// A band works on a sample two steps after the band before it, because the result takes as long as two
    /// steps to come through.
    static constexpr std::size_t lag = 2;

    template <class Number>
    using OfEach = std::array<Number, 8>;

    alignas(32) OfEach<double> b0{1, 1, 1, 1, 1, 1, 1, 1};
    alignas(32) OfEach<double> b1{}, b2{}, a1{}, a2{};
    alignas(32) OfEach<double> firstDelay{}, secondDelay{};
    /// Of the last step, and of the step before.
    alignas(32) OfEach<float> result{1, 1, 1, 1, 1, 1, 1, 1};
    alignas(32) OfEach<float> resultBefore{1, 1, 1, 1, 1, 1, 1, 1};

    /// Takes `steps` samples into the first band, and as many out of the last one. `out` may lie up to `lag`
    /// times four samples before `in`. The operations are those of Biquad::processSample() in their order, so
    /// the bits are too.
    void run(const float* in, float* out, std::size_t steps);
};

} // namespace audlmd

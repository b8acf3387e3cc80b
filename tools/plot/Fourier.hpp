#pragma once

#include <kiss_fftr.h>

#include <complex>
#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <vector>

namespace audlmd::plot {

/// The spectrum of real signals of one even length, in single precision. Make one object and use it for many
/// signals: making it computes tables.
class RealFourierTransform {
public:
    /// Throws std::bad_alloc, also for an odd length.
    explicit RealFourierTransform(std::size_t length)
        : plan_(kiss_fftr_alloc(static_cast<int>(length), 0, nullptr, nullptr)), spectrum_(length / 2 + 1) {
        if (!plan_)
            throw std::bad_alloc();
    }

    /// Bins 0 to length / 2: the sum of signal[n] e^(-2 pi i bin n / length) over n, not scaled. `signal` has
    /// the length. The result is overwritten by the next call.
    std::span<const std::complex<float>> operator()(std::span<const float> signal) {
        // Both types are two floats, the real part first.
        kiss_fftr(plan_.get(), signal.data(), reinterpret_cast<kiss_fft_cpx*>(spectrum_.data()));
        return spectrum_;
    }

private:
    struct Free {
        void operator()(kiss_fftr_cfg plan) const { kiss_fftr_free(plan); }
    };

    std::unique_ptr<kiss_fftr_state, Free> plan_;
    std::vector<std::complex<float>> spectrum_;
};

} // namespace audlmd::plot

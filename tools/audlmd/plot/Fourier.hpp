#pragma once

#include <kiss_fftr.h>

#include <complex>
#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <vector>

namespace audlmd::plot {

/// The spectrum of real signals of one even length, in single precision.
class RealFourierTransform {
public:
    explicit RealFourierTransform(std::size_t length)
        : plan_(kiss_fftr_alloc(static_cast<int>(length), 0, nullptr, nullptr)), spectrum_(length / 2 + 1) {
        if (!plan_)
            throw std::bad_alloc();
    }

    /// Bins 0 to length / 2, not scaled; valid until the next call.
    std::span<const std::complex<float>> operator()(std::span<const float> signal) {
        // The standard lays a complex number out as two values, like the library's struct.
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

#pragma once

#include "host/cache/SampleSource.hpp"
#include "host/signal/BlockLoops.hpp"

#include <cmath>
#include <memory>
#include <utility>

namespace audlmd {

/// A source times a power of two. Use it for headroom: scaled down by 2^-n and up again by 2^n, a sample
/// keeps all its bits. Only samples that become smaller than 1.2e-38 lose some.
class ScaledSource final : public SampleSource {
public:
    /// Multiplies by 2^exponent, from -126 to 127.
    ScaledSource(std::shared_ptr<SampleSource> source, int exponent)
        : source_(std::move(source)), factor_(std::ldexp(1.0F, exponent)) {}

    std::int64_t length() const override { return source_->length(); }
    void read(std::int64_t position, std::span<float> samples) override {
        source_->read(position, samples);
        multiply(samples, factor_);
    }
    const void* exclusiveResource() const override { return source_->exclusiveResource(); }

private:
    std::shared_ptr<SampleSource> source_;
    float factor_;
};

} // namespace audlmd

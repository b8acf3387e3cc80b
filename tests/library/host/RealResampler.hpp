#pragma once

#include <memory>

namespace Test {

/// A resampler as libresample opens it. Those with equal arguments are copies of one, because opening
/// computes a large table.
std::shared_ptr<void> openRealResampler(int highQuality, double minFactor, double maxFactor);

void processRealResampler(void* handle, double factor, float* in, int length, int* used, float* out);

} // namespace Test

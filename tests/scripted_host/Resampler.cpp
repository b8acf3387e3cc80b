// Stands before libresample, and answers with made-up samples. The benchmarks verify modes with libresample
// itself.

#include "tests/scripted_host/ScriptedHost.hpp"

#include <libresample.h>

#include <algorithm>

namespace audlmd::test {

void* ScriptedHost::openResampler(int highQuality, double minFactor, double maxFactor) {
    note("open resampler", bitsOf(minFactor));
    note("with", bitsOf(maxFactor) ^ static_cast<std::uint64_t>(highQuality));
    resamplers.push_back({static_cast<std::uint32_t>(resamplers.size()) + 1, 0.5F});
    return reinterpret_cast<void*>(resamplers.size());
}

void ScriptedHost::resample(void* handle, double factor, float* in, int inLength, int* used, float* out) {
    note("resample", bitsOf(factor));
    note("with", static_cast<std::uint64_t>(in - record->srcState.sourceBlock) << 32 |
                     static_cast<std::uint64_t>(inLength));
    require(out == &record->srcState.outSample);
    ScriptedResampler& resampler = resamplers[reinterpret_cast<std::uintptr_t>(handle) - 1];
    resampler.random = resampler.random * 1664525U + 1013904223U;
    const std::uint32_t dice = resampler.random >> 8;
    // Mostly a few samples, now and then all of them, or none.
    *used = dice % 16 == 0 ? inLength : std::min(inLength, static_cast<int>(dice / 16 % 5));
    if (dice / 4096 % 8 == 0)
        return;
    *out = in[0] * 0.75F + resampler.memory * 0.125F;
    resampler.memory = *out;
}

} // namespace audlmd::test

using audlmd::test::ScriptedHost;

extern "C" void* resample_open(int highQuality, double minFactor, double maxFactor) {
    return ScriptedHost::current->openResampler(highQuality, minFactor, maxFactor);
}

extern "C" int resample_process(void* handle, double factor, float* in, int length, int lastFlag, int* used,
                                float* out, int outLength) {
    ScriptedHost::current->require(lastFlag == 0 && *used == 0 && outLength == 1);
    ScriptedHost::current->resample(handle, factor, in, length, used, out);
    return -1; // The result is nobody's business.
}

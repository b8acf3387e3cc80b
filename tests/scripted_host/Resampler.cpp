// Stands before libresample: what the library calls goes to the script, which may hand it on.

#include "tests/scripted_host/ScriptedHost.hpp"

#include <libresample.h>

#include <algorithm>
#include <dlfcn.h>
#include <map>
#include <tuple>

namespace audlmd::test {
namespace {

/// The function of libresample that the one here stands before.
template <class Function>
Function* behind(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// A copy of one that was opened before, where there is one: opening computes a large table.
std::shared_ptr<void> openReal(int highQuality, double minFactor, double maxFactor) {
    static std::map<std::tuple<int, double, double>, std::shared_ptr<void>> opened;
    std::shared_ptr<void>& original = opened[{highQuality, minFactor, maxFactor}];
    if (!original)
        original = {behind(&resample_open, "resample_open")(highQuality, minFactor, maxFactor),
                    resample_close};
    return {resample_dup(original.get()), resample_close};
}

} // namespace

void* ScriptedHost::openResampler(int highQuality, double minFactor, double maxFactor) {
    note("open resampler", bitsOf(minFactor));
    note("with", bitsOf(maxFactor) ^ static_cast<std::uint64_t>(highQuality));
    ScriptedResampler opened{nullptr, static_cast<std::uint32_t>(resamplers.size()) + 1, 0.5F};
    if (usesRealResampler)
        opened.real = openReal(highQuality, minFactor, maxFactor);
    resamplers.push_back(opened);
    return reinterpret_cast<void*>(resamplers.size());
}

void ScriptedHost::resample(void* handle, double factor, float* in, int inLength, int* used, float* out) {
    note("resample", bitsOf(factor));
    note("with", static_cast<std::uint64_t>(in - sourceBlock) << 32 | static_cast<std::uint64_t>(inLength));
    require(out == outSample);
    ScriptedResampler& resampler = resamplers[reinterpret_cast<std::uintptr_t>(handle) - 1];
    if (resampler.real) {
        static auto* const process = behind(&resample_process, "resample_process");
        process(resampler.real.get(), factor, in, inLength, 0, used, out, 1);
        return;
    }
    resampler.random = resampler.random * 1664525U + 1013904223U;
    const std::uint32_t dice = resampler.random >> 8;
    // Mostly a few samples, now and then all of them, or none.
    *used =
        static_cast<int>(dice % 16 == 0 ? static_cast<std::uint32_t>(inLength)
                                        : dice / 16 % std::min(static_cast<std::uint32_t>(inLength) + 1, 5U));
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

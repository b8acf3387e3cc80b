// Stands before libresample: what the library calls goes to the script, which may hand it on.

#include "tests/library/host/RealResampler.hpp"
#include "tests/library/host/Script.hpp"

#include <dlfcn.h>
#include <libresample.h>

#include <map>
#include <tuple>

namespace Test {

std::shared_ptr<void> openRealResampler(int highQuality, double minFactor, double maxFactor) {
    static const auto open = reinterpret_cast<decltype(&resample_open)>(dlsym(RTLD_NEXT, "resample_open"));
    static std::map<std::tuple<int, double, double>, std::shared_ptr<void>> opened;
    std::shared_ptr<void>& original = opened[{highQuality, minFactor, maxFactor}];
    if (!original)
        original = {open(highQuality, minFactor, maxFactor), resample_close};
    return {resample_dup(original.get()), resample_close};
}

void processRealResampler(void* handle, double factor, float* in, int length, int* used, float* out) {
    static const auto process =
        reinterpret_cast<decltype(&resample_process)>(dlsym(RTLD_NEXT, "resample_process"));
    process(handle, factor, in, length, 0, used, out, 1);
}

} // namespace Test

extern "C" void* resample_open(int highQuality, double minFactor, double maxFactor) {
    return Test::Script::current->openResampler(highQuality, minFactor, maxFactor);
}

extern "C" int resample_process(void* handle, double factor, float* in, int length, int lastFlag, int* used,
                                float* out, int outLength) {
    Test::Script& script = *Test::Script::current;
    const bool expected = lastFlag == 0 && *used == 0 && out == script.outSample && outLength == 1;
    script.resample(handle, factor, in, length, used, out,
                    static_cast<std::uint64_t>(in - script.sourceBlock) << 32 |
                        static_cast<std::uint64_t>(length) << 8 | expected);
    return -1; // The result is nobody's business.
}

#include "host/signal/VectorWidth.hpp"

#include "host/services/Configuration.hpp"

#include <algorithm>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/signal/VectorWidth.cpp"
#include "host/signal/Wide.ipp"

HWY_BEFORE_NAMESPACE();
namespace audlmd::HWY_NAMESPACE {
namespace {

int bitsHere() {
    return HWY_TARGET == HWY_SCALAR ? 0 : 8 * HWY_MAX_BYTES;
}

} // namespace
} // namespace audlmd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace audlmd {
namespace {

HWY_EXPORT(bitsHere);

/// Before the first block, so that all of a run has one width.
[[maybe_unused]] const bool isChosen = [] {
    constexpr int widest = 256;
    useVectors(static_cast<int>(std::clamp(userConfiguration().number("VectorBits", widest), 0.0, 1e6)));
    return true;
}();

} // namespace

int vectorBits() {
    return HWY_DYNAMIC_DISPATCH(bitsHere)();
}

void useVectors(int mostBits) {
    std::int64_t allowed = 0;
    if (mostBits >= 128)
        allowed |= HWY_SSE4;
    if (mostBits >= 256)
        allowed |= HWY_AVX2;
    hwy::GetChosenTarget().Update(hwy::SupportedTargets() & allowed);
}

} // namespace audlmd
#endif

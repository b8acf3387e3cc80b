#pragma once

#include <cstdint>

namespace audlmd::soak {

/// Of all rounds together.
struct StressTotals {
    std::uint64_t rounds = 0;
    std::uint64_t samples = 0;
    std::uint64_t failedReads = 0;
};

/// Four readers at random places of three materials, in both directions, in a cache with room for two
/// segments; meanwhile materials are removed and added again. Every sample is that of the material, or
/// silence where its segment failed or was removed. Throws std::runtime_error where one is not.
void stressCache(unsigned int seed, StressTotals& totals);

/// Random stretches of a random timeline, on several threads, with a small cache, strips that fail, and now
/// and then an end in the middle of a render call. Throws std::runtime_error where nothing has failed and the
/// samples are not those that one thread with enough memory renders.
void stressMixer(unsigned int seed, StressTotals& totals);

} // namespace audlmd::soak

#pragma once

#include "host/signal/VectorWidth.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace audlmd::test {

/// Runs a check with each width of vectors that this processor has, and without vectors.
template <class Check>
void withEveryVectorWidth(Check check) {
    const int widest = vectorBits();
    for (const int bits : {0, 128, 256}) {
        useVectors(bits);
        const testing::ScopedTrace trace(__FILE__, __LINE__, "vectors of " + std::to_string(bits) + " bits");
        if (vectorBits() == bits)
            check();
    }
    useVectors(widest);
}

/// Another one at each run, unless AUDLMD_SEED gives one.
inline std::mt19937 seeded() {
    const char* const given = std::getenv("AUDLMD_SEED");
    const unsigned long seed = given == nullptr ? std::random_device{}() : std::strtoul(given, nullptr, 10);
    std::printf("to run this again: AUDLMD_SEED=%lu\n", seed);
    return std::mt19937(static_cast<std::mt19937::result_type>(seed));
}

} // namespace audlmd::test

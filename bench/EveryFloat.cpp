// Converts all 2^32 floats to each format of at most 24 bits by the block, and compares the bytes with those
// of the format's own encoding of single samples. Takes about two minutes; the tests take a sample.

#include "host/signal/Unclipped.hpp"
#include "ole/Aud/SummingOutputSampleIterator.hpp"

#include <bit>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr std::uint32_t block = 65536;
constexpr std::uint32_t blocks = 65536;

/// Prints the progress on one line, and returns whether every float agrees.
template <class Format>
bool isEqualForEveryFloat(const char* name) {
    const auto start = std::chrono::steady_clock::now();
    std::vector<float> floats(block);
    std::vector<Format> expected(block);
    std::vector<Format> converted(block);
    for (std::uint32_t number = 0; number < blocks; ++number) {
        for (std::uint32_t i = 0; i < block; ++i)
            floats[i] = std::bit_cast<float>(number * block + i);
        Format* single = expected.data();
        for (const float x : floats)
            Aud::Render::deliver(x, single);
        Format* out = converted.data();
        audlmd::convertBlock(floats.data(), block, out);
        if (std::memcmp(expected.data(), converted.data(), block * sizeof(Format)) != 0) {
            std::printf("\r%-8s differs among the floats from 0x%08x on\n", name, number * block);
            return false;
        }
        if (number % 2048 == 2047) {
            std::printf("\r%-8s %3u %%", name, (number + 1) * 100 / blocks);
            std::fflush(stdout);
        }
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::printf("\r%-8s agrees for all 2^32 floats, %.1f s\n", name, time.count());
    return true;
}

} // namespace

int main() {
    using namespace Aud;
    bool areEqual = isEqualForEveryFloat<SampleS8>("S8");
    areEqual &= isEqualForEveryFloat<SampleU8>("U8");
    areEqual &= isEqualForEveryFloat<SampleS16>("S16");
    areEqual &= isEqualForEveryFloat<SampleS24>("S24");
    areEqual &= isEqualForEveryFloat<SampleS24In32>("S24In32");
    return areEqual ? 0 : 1;
}

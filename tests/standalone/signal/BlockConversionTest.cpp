#include "standalone/signal/BlockConversion.hpp"

#include "model/OutputTypes.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace audlmd::test {
namespace {

/// Every exponent and sign with 2,048 mantissas, NaNs of every kind, and the neighbours of each step of 9
/// bits and of each clip limit.
std::vector<float> everyKindOfFloat() {
    std::vector<float> floats{0.9921875F, 0.999969482421875F, 0.99999988079071044921875F};
    for (int step = -260; step <= 260; ++step)
        floats.push_back(static_cast<float>(step) / 256.0F);
    for (std::size_t i = 0, steps = floats.size(); i < steps; ++i)
        for (const float direction : {-2.0F, 2.0F})
            floats.push_back(std::nextafter(floats[i], direction));
    for (std::uint64_t pattern = 0; pattern < std::uint64_t{1} << 32; pattern += 4093)
        floats.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(pattern)));
    return floats;
}

/// Not inlined, so that the sample is in a register and the container in memory, as in a render function. Of
/// two NaNs the sum is then the sample's.
template <class Out>
[[gnu::noinline]] void deliverOne(float x, Out& out) {
    Aud::Render::deliver(x, out);
}

template <class Format>
Format formatOf(Format*);
template <class Format>
Format formatOf(model::Summing<Format>);

/// Delivers into containers of random bytes, among them NaNs, with one container around on either side.
template <class Out>
void expectTheBytesOfSingleSamples(const std::vector<float>& floats) {
    using Format = decltype(formatOf(std::declval<Out>()));
    std::mt19937 random(5);
    std::vector<Format> expected(floats.size() + 2);
    for (Format& container : expected)
        for (unsigned char& byte : container.bytes)
            byte = static_cast<unsigned char>(random() % 4 == 0 ? 0xFF : random());
    std::vector<Format> converted = expected;
    Out single(&expected[1]);
    for (const float x : floats)
        deliverOne(x, single);
    Out block(&converted[1]);
    convertBlock(floats.data(), floats.size(), block);
    for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_EQ(std::memcmp(&expected[i], &converted[i], sizeof(Format)), 0)
            << "container " << i << " of " << expected.size() << " in " << __PRETTY_FUNCTION__;
    // The position has moved, so that the next sample goes to the last container.
    deliverOne(0.25F, single);
    deliverOne(0.25F, block);
    EXPECT_EQ(std::memcmp(&expected.back(), &converted.back(), sizeof(Format)), 0);
}

void expectTheBytesOfSingleSamplesInAll(const std::vector<float>& floats) {
    model::forEachOutputType([&]<class Out>(std::size_t) { expectTheBytesOfSingleSamples<Out>(floats); });
}

TEST(BlockConversion, DeliversTheBytesOfSingleSamples) {
    expectTheBytesOfSingleSamplesInAll(everyKindOfFloat());
    for (std::size_t count = 0; count < 38; ++count)
        expectTheBytesOfSingleSamplesInAll(std::vector<float>(count, 0.4F));
}

} // namespace
} // namespace audlmd::test

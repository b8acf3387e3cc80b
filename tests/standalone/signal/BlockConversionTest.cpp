#include "standalone/signal/BlockConversion.hpp"

#include "loop_modes/RegistrationOrder.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace audlmd::test {
namespace {

using Aud::Render::Summing;

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

template <class P>
P* startOf(P* position) {
    return position;
}
template <class P>
P startOf(const Summing<P>& out) {
    return out.position();
}

/// Not inlined, so that the sample is in a register and the container in memory, as in a render function. Of
/// two NaNs the sum is then the sample's.
template <class Out>
[[gnu::noinline]] void deliverOne(float x, Out& out) {
    Aud::Render::deliver(x, out);
}

template <class Out>
class BlockConversion : public testing::Test {
protected:
    using Format = std::remove_pointer_t<decltype(startOf(std::declval<Out>()))>;

    /// Containers of random bytes, among them NaNs.
    static std::vector<Format> containers(std::size_t count) {
        std::mt19937 random(5);
        std::vector<Format> all(count);
        for (Format& container : all)
            for (unsigned char& byte : container.bytes)
                byte = static_cast<unsigned char>(random() % 4 == 0 ? 0xFF : random());
        return all;
    }
    static bool areEqual(const std::vector<Format>& a, const std::vector<Format>& b, std::size_t place) {
        return std::memcmp(a[place].bytes, b[place].bytes, sizeof(Format)) == 0;
    }
};

template <class Tuple>
struct Listed;
template <class... Out>
struct Listed<std::tuple<Out...>> {
    using Types = testing::Types<Out...>;
};
struct OutputTypeNames {
    template <class Out>
    static std::string GetName(int number) {
        constexpr const char* names[] = {"F32", "S16", "S24", "S8", "U8", "S24In32", "S32"};
        return (number < 7 ? "" : "Sum") + std::string(names[number % 7]);
    }
};
TYPED_TEST_SUITE(BlockConversion, Listed<Aud::Render::OutputTypes>::Types, OutputTypeNames);

TYPED_TEST(BlockConversion, DeliversTheBytesOfSingleSamples) {
    const std::vector<float> floats = everyKindOfFloat();
    auto expected = this->containers(floats.size());
    auto converted = expected;
    TypeParam oneByOne(expected.data());
    for (const float x : floats)
        deliverOne(x, oneByOne);
    TypeParam block(converted.data());
    convertBlock(floats.data(), floats.size(), block);
    for (std::size_t i = 0; i < floats.size(); ++i)
        ASSERT_TRUE(this->areEqual(converted, expected, i))
            << floats[i] << " " << std::hex << std::bit_cast<std::uint32_t>(floats[i]);
    EXPECT_EQ(startOf(block), converted.data() + floats.size());
}

TYPED_TEST(BlockConversion, TouchesNothingBeyondTheBlock) {
    const std::vector<float> floats(40, 0.4F);
    for (std::size_t count = 0; count < 38; ++count) {
        const auto before = this->containers(40);
        auto expected = before;
        auto converted = before;
        TypeParam oneByOne(expected.data() + 1);
        for (std::size_t i = 0; i < count; ++i)
            deliverOne(floats[i], oneByOne);
        TypeParam block(converted.data() + 1);
        convertBlock(floats.data(), count, block);
        for (std::size_t i = 0; i < before.size(); ++i)
            ASSERT_TRUE(this->areEqual(converted, expected, i)) << count << ", sample " << i;
    }
}

} // namespace
} // namespace audlmd::test

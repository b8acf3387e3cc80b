#include "ole/Aud/SampleEncoding.hpp"

#include "model/Model.hpp"
#include "model/OutputTypes.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

namespace audlmd::test {
namespace {

/// Every 4,099th float, and the neighbours of every step of 9 bits and of every clip limit.
std::vector<float> everyKindOfFloat() {
    std::vector<float> floats{0.99999988079071044921875F, 0.9921875F, 0.999969482421875F};
    for (int step = -260; step <= 260; ++step)
        floats.push_back(static_cast<float>(step) / 256.0F);
    for (std::size_t i = 0, steps = floats.size(); i < steps; ++i)
        for (float direction : {-2.0F, 2.0F})
            floats.push_back(std::nextafter(floats[i], direction));
    for (std::uint64_t pattern = 0; pattern < std::uint64_t{1} << 32; pattern += 4099)
        floats.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(pattern)));
    return floats;
}

template <class Format>
Format formatOf(Format*);
template <class Format>
Format formatOf(model::Summing<Format>);

template <class Number>
class SampleEncodingTest : public testing::Test {};

struct Names {
    template <class Number>
    static std::string GetName(int) {
        return model::outputTypeNames[Number::value];
    }
};
template <std::size_t... Number>
testing::Types<std::integral_constant<std::size_t, Number>...> numbered(std::index_sequence<Number...>);
using Numbers = decltype(numbered(std::make_index_sequence<model::outputTypeCount>()));
TYPED_TEST_SUITE(SampleEncodingTest, Numbers, Names);

/// Into containers of random bytes, which sums add to.
TYPED_TEST(SampleEncodingTest, DeliversTheBytesOfTheModel) {
    using Out = std::tuple_element_t<TypeParam::value, model::OutputTypes>;
    using Format = decltype(formatOf(std::declval<Out>()));
    const std::vector<float> floats = everyKindOfFloat();
    std::mt19937 random(5);
    std::vector<Format> found(floats.size());
    for (Format& container : found)
        for (unsigned char& byte : container.bytes)
            byte = static_cast<unsigned char>(random());
    if constexpr (std::is_same_v<Format, model::F32>)
        for (Format& container : found)
            container.bytes[3] &= 0xBF; // A sum of two NaNs may be either of them.
    std::vector<Format> expected = found;
    Out out(found.data());
    for (std::size_t i = 0; i < floats.size(); ++i) {
        Aud::Render::deliver(floats[i], out);
        model::deliver(TypeParam::value, floats[i], expected[i].bytes);
        ASSERT_EQ(std::memcmp(found[i].bytes, expected[i].bytes, sizeof(Format)), 0) << floats[i];
    }
}

} // namespace
} // namespace audlmd::test

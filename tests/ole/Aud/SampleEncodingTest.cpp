#include "ole/Aud/SampleEncoding.hpp"

#include "model/Model.hpp"
#include "tests/ole/Aud/EveryKindOfFloat.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>

namespace audlmd::test {
namespace {

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
    const std::vector<float> floats = everyKindOfFloat();
    auto found = randomContainers<Out>(floats.size());
    if constexpr (TypeParam::value % 7 == 0)
        for (auto& container : found)
            container.bytes[3] &= 0xBF; // A sum of two NaNs may be either of them.
    auto expected = found;
    Out out(found.data());
    for (std::size_t i = 0; i < floats.size(); ++i) {
        Aud::Render::deliver(floats[i], out);
        model::deliver(TypeParam::value, floats[i], expected[i].bytes);
        ASSERT_EQ(std::memcmp(found[i].bytes, expected[i].bytes, sizeof expected[i].bytes), 0) << floats[i];
    }
}

} // namespace
} // namespace audlmd::test

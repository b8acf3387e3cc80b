#include "tests/library/host/OutputTypes.hpp"
#include "tests/library/model/StoredSample.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

namespace Test {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float oneBelow = 0.99999988079071044921875F;

using Stored = std::vector<std::pair<float, std::vector<unsigned>>>;
/// What a container holds, what is added, what it holds then.
using Summed = std::vector<std::tuple<std::vector<unsigned>, float, std::vector<unsigned>>>;

template <class Format>
struct Expected;

std::vector<unsigned> bytesOf(float x) {
    const auto bytes = std::bit_cast<std::array<std::uint8_t, 4>>(x);
    return {bytes.begin(), bytes.end()};
}

std::vector<unsigned> littleEndian(std::int64_t value, std::size_t count) {
    std::vector<unsigned> bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<unsigned>(value >> (8 * i)) & 0xFF);
    return bytes;
}

template <>
struct Expected<F32> {
    static constexpr auto model = ModelFormat::f32;
    static Stored stored() {
        return {{1.0F, bytesOf(oneBelow)}, {oneBelow, bytesOf(oneBelow)}, {-1.0F, bytesOf(-1.0F)},
                {-1.5F, bytesOf(-1.0F)},   {0.5F, bytesOf(0.5F)},         {-0.0F, bytesOf(-0.0F)},
                {nan, bytesOf(nan)},       {-infinity, bytesOf(-1.0F)},   {infinity, bytesOf(oneBelow)}};
    }
    static Summed summed() {
        return {{bytesOf(0.9F), 0.9F, bytesOf(oneBelow)},
                {bytesOf(-0.75F), -0.5F, bytesOf(-1.0F)},
                {bytesOf(0.25F), 0.5F, bytesOf(0.75F)}};
    }
};

template <>
struct Expected<S8> {
    static constexpr auto model = ModelFormat::s8;
    static Stored stored() {
        return {{0.9921875F, {127}}, {0.995F, {127}}, {-1.0F, {0x80}}, {-0.0078F, {0}}, {0.0F, {0}},
                {nan, {0}},          {-2.0F, {0x80}}, {1.0F, {127}},   {0.5F, {64}},    {-infinity, {0x80}}};
    }
    static Summed summed() { return {{{0x80}, -0.5F, {0x80}}, {{100}, 0.5F, {127}}, {{0xFF}, 0.0F, {0xFF}}}; }
};

template <>
struct Expected<U8> {
    static constexpr auto model = ModelFormat::u8;
    static Stored stored() {
        return {{-1.0F, {0}}, {0.0F, {127}}, {1.0F, {255}},   {1.5F, {255}},
                {-1.2F, {0}}, {nan, {127}},  {-1e-9F, {127}}, {infinity, {255}}};
    }
    /// Silence lowers all but 0 by one step.
    static Summed summed() {
        return {{{128}, 0.0F, {127}},
                {{127}, 0.0F, {126}},
                {{255}, 0.0F, {254}},
                {{0}, 0.0F, {0}},
                {{255}, 0.5F, {255}}};
    }
};

template <>
struct Expected<S16> {
    static constexpr auto model = ModelFormat::s16;
    static Stored stored() {
        const auto is = [](std::int64_t value) { return littleEndian(value, 2); };
        return {{0.999969482421875F, is(32767)},
                {0.99997F, is(32767)},
                {-1.0F, is(-32768)},
                {-0.00002F, is(0)},
                {0.5F, is(16384)},
                {-0.5F, is(-16384)},
                {nan, is(0)},
                {-7.0F, is(-32768)}};
    }
    static Summed summed() {
        return {{littleEndian(20000, 2), 0.5F, littleEndian(32767, 2)},
                {littleEndian(-20000, 2), 0.25F, littleEndian(-11808, 2)}};
    }
};

template <>
struct Expected<S24> {
    static constexpr auto model = ModelFormat::s24;
    static Stored stored() {
        return {{1.0F, {0xFF, 0xFF, 0x7F}}, {oneBelow, {0xFF, 0xFF, 0x7F}},
                {-1.0F, {0, 0, 0x80}},      {-0x1p-23F, {0xFF, 0xFF, 0xFF}},
                {0x1p-24F, {0, 0, 0}},      {0.0F, {0, 0, 0}},
                {nan, {0, 0, 0}},           {-1.1F, {0, 0, 0x80}}};
    }
    static Summed summed() {
        return {{{0, 0, 0x80}, 1.0F, {0, 0, 0}}, {{0xFF, 0xFF, 0x7F}, 0.1F, {0xFF, 0xFF, 0x7F}}};
    }
};

template <>
struct Expected<S24In32> {
    static constexpr auto model = ModelFormat::s24in32;
    static Stored stored() {
        return {
            {1.0F, {0xFF, 0xFF, 0x7F, 0}}, {-1.0F, {0, 0, 0x80, 0xFF}}, {-0x1p-23F, {0xFF, 0xFF, 0xFF, 0xFF}},
            {0.0F, {0, 0, 0, 0}},          {nan, {0, 0, 0, 0}},         {-1.1F, {0, 0, 0x80, 0xFF}}};
    }
    /// The fourth byte is ignored, and put right.
    static Summed summed() {
        return {{{0, 0, 0x80, 0}, 0.0F, {0, 0, 0x80, 0xFF}}, {{1, 0, 0, 0xFF}, 0.0F, {1, 0, 0, 0}}};
    }
};

template <>
struct Expected<S32> {
    static constexpr auto model = ModelFormat::s32;
    static std::vector<unsigned> is(std::int64_t value) { return littleEndian(value, 4); }
    static Stored stored() {
        return {{1.0F, is(2147483647)},
                {1.0000001F, is(2147483647)},
                {-1.0F, is(-2147483648)},
                {0.0F, is(0)},
                {0.5F, is(1073741823)},
                {-0.5F, is(-1073741824)},
                {0x1p-31F, is(0)},
                {0x1p-30F, is(1)},
                {-0x1p-31F, is(-1)},
                {-0x1p-30F, is(-2)},
                {nan, is(0)},
                {-infinity, is(-2147483648)}};
    }
    static Summed summed() {
        return {{is(1), 0.0F, is(0)},
                {is(-1), 0.0F, is(0)},
                {is(1000), 0.0F, is(999)},
                {is(-1000), 0.0F, is(-999)},
                {is(123456789), 0.0F, is(123456791)},
                {is(2147483647), 0.0F, is(2147483647)},
                {is(-2147483648), 0.0F, is(-2147483648)}};
    }
};

template <class Format>
class SampleConversion : public testing::Test {
protected:
    using Conversion = Aud::SampleConversion<Format>;
    static constexpr std::size_t size = sizeof(Format);

    static std::vector<unsigned> bytesOf(const Format& container) {
        return {std::begin(container.bytes), std::end(container.bytes)};
    }
    static Format holding(const std::vector<unsigned>& bytes) {
        Format container;
        for (std::size_t i = 0; i < size; ++i)
            container.bytes[i] = static_cast<unsigned char>(bytes[i]);
        return container;
    }
    static std::vector<unsigned> stored(float x) {
        Format container;
        Conversion::store(x, container);
        return bytesOf(container);
    }
    static std::vector<unsigned> storedByModel(float x) {
        std::uint8_t bytes[size];
        modelStore(Expected<Format>::model, Expected<Format>::model == ModelFormat::u8 ? x + 1.0F : x, bytes);
        return {std::begin(bytes), std::end(bytes)};
    }
};

using Formats = testing::Types<F32, S16, S24, S8, U8, S24In32, S32>;
class FormatNames {
public:
    template <class Format>
    static std::string GetName(int number) {
        return outputTypeNames[number];
    }
};
TYPED_TEST_SUITE(SampleConversion, Formats, FormatNames);

TYPED_TEST(SampleConversion, FillsAContainerWithoutGaps) {
    EXPECT_EQ(sizeof(TypeParam[3]), 3 * containerBytes[static_cast<std::size_t>(Expected<TypeParam>::model)]);
}

TYPED_TEST(SampleConversion, ClipsScalesAndTruncates) {
    for (const auto& [x, bytes] : Expected<TypeParam>::stored())
        EXPECT_EQ(this->stored(x), bytes) << "storing " << x;
}

TYPED_TEST(SampleConversion, AddsToWhatIsThere) {
    for (const auto& [before, x, after] : Expected<TypeParam>::summed()) {
        TypeParam containers[3] = {this->holding(before), this->holding(before), this->holding(before)};
        Aud::Render::SummingOutputSampleIterator<TypeParam*> out(&containers[1]);
        Aud::Render::deliver(x, out);
        EXPECT_EQ(this->bytesOf(containers[1]), after) << "adding " << x;
        EXPECT_EQ(this->bytesOf(containers[0]), before);
        EXPECT_EQ(this->bytesOf(containers[2]), before);
        EXPECT_EQ(out.position(), &containers[2]);
    }
}

/// Every 4,099th float, and the neighbours of every step of 9 bits and of every clip limit.
TYPED_TEST(SampleConversion, StoresWhatTheModelStores) {
    std::vector<float> samples{1.0F, -1.0F, oneBelow, 0.9921875F, 0.999969482421875F, 0.0F};
    for (int step = -260; step <= 260; ++step)
        samples.push_back(static_cast<float>(step) / 256.0F);
    for (std::size_t i = 0, steps = samples.size(); i < steps; ++i)
        for (float direction : {-2.0F, 2.0F})
            samples.push_back(std::nextafter(samples[i], direction));
    for (std::uint64_t bits = 0; bits < std::uint64_t{1} << 32; bits += 4099)
        samples.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    std::size_t differing = 0;
    for (float x : samples)
        if (this->stored(x) != this->storedByModel(x) && ++differing <= 5)
            ADD_FAILURE() << "storing " << x;
    EXPECT_EQ(differing, 0u);
}

/// Every container of one or two bytes; of the larger ones every 4,099th.
TYPED_TEST(SampleConversion, ReadsBackWhatItStores) {
    constexpr bool isExact = !std::is_same_v<TypeParam, U8> && !std::is_same_v<TypeParam, S32>;
    const std::uint64_t all = std::uint64_t{1} << (8 * this->size);
    for (std::uint64_t value = 0; value<all; value += all> 65536 ? 4099 : 1) {
        const TypeParam container = this->holding(littleEndian(static_cast<std::int64_t>(value), this->size));
        const float x = Aud::SampleConversion<TypeParam>::load(container);
        ASSERT_EQ(std::bit_cast<std::uint32_t>(x),
                  std::bit_cast<std::uint32_t>(modelLoad(Expected<TypeParam>::model, container.bytes)))
            << "loading " << value;
        if (isExact && x >= -1.0F && x <= oneBelow && TypeParam::bits == 8 * this->size) {
            ASSERT_EQ(this->stored(x), this->bytesOf(container)) << "storing " << x;
        }
    }
}

} // namespace
} // namespace Test

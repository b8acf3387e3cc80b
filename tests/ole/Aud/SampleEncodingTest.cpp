#include "ole/Aud/SampleEncoding.hpp"

#include "model/Model.hpp"
#include "model/OutputTypes.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

namespace audlmd::test {
namespace {

using model::F32, model::S16, model::S24, model::S8, model::U8, model::S24In32, model::S32;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float oneBelow = 0.99999988079071044921875F;

/// Containers as little-endian integers.
struct Store {
    float x;
    std::int64_t value;
};
struct Sum {
    std::int64_t before;
    float x;
    std::int64_t after;
};

struct Expected {
    model::Format model;
    std::vector<Store> stores;
    std::vector<Sum> sums;
};

constexpr std::int64_t bits(float x) {
    return std::bit_cast<std::uint32_t>(x);
}

template <class Format>
const Expected expected{};

// clang-format off
template <>
const Expected expected<F32>{model::Format::f32,
    {{1.0F, bits(oneBelow)}, {oneBelow, bits(oneBelow)}, {infinity, bits(oneBelow)}, {-1.0F, bits(-1.0F)},
     {-1.5F, bits(-1.0F)}, {0.5F, bits(0.5F)}, {-0.0F, bits(-0.0F)}, {nan, bits(nan)}},
    {{bits(0.9F), 0.9F, bits(oneBelow)}, {bits(-0.75F), -0.5F, bits(-1.0F)}, {bits(0.25F), 0.5F, bits(0.75F)}}};

template <>
const Expected expected<S8>{model::Format::s8,
    {{0.9921875F, 127}, {0.995F, 127}, {1.0F, 127}, {-1.0F, -128}, {-2.0F, -128}, {-infinity, -128},
     {-0.0078F, 0}, {0.0F, 0}, {0.5F, 64}, {nan, 0}},
    {{-128, -0.5F, -128}, {100, 0.5F, 127}, {-1, 0.0F, -1}}};

// Silence lowers all but 0 by one step. The last values of each list round otherwise in any other order: the offset of
// 1.0 comes before the scale and after the sum, each in single precision.
template <>
const Expected expected<U8>{model::Format::u8,
    {{-1.0F, 0}, {-1.2F, 0}, {0.0F, 127}, {-1e-9F, 127}, {nan, 127}, {1.0F, 255}, {1.5F, 255}, {infinity, 255},
     {-0.992156863F, 0}, {0.0039215558F, 127}, {-0.0117647322F, 126}, {0.482352912F, 189}},
    {{128, 0.0F, 127}, {127, 0.0F, 126}, {255, 0.0F, 254}, {0, 0.0F, 0}, {255, 0.5F, 255},
     {99, -0.122457109F, 82}, {167, 0.00511639379F, 167}}};

template <>
const Expected expected<S16>{model::Format::s16,
    {{0.999969482421875F, 32767}, {0.99997F, 32767}, {-1.0F, -32768}, {-7.0F, -32768}, {-0.00002F, 0},
     {0.0F, 0}, {0.5F, 16384}, {-0.5F, -16384}, {nan, 0}},
    {{20000, 0.5F, 32767}, {-20000, 0.25F, -11808}}};

template <>
const Expected expected<S24>{model::Format::s24,
    {{1.0F, 8388607}, {oneBelow, 8388607}, {-1.0F, -8388608}, {-1.1F, -8388608}, {-0x1p-23F, -1},
     {0x1p-24F, 0}, {0.0F, 0}, {nan, 0}},
    {{-8388608, 1.0F, 0}, {8388607, 0.1F, 8388607}}};

// Loading ignores the fourth byte of a container; storing extends the sign into it.
template <>
const Expected expected<S24In32>{model::Format::s24in32,
    {{1.0F, 8388607}, {-1.0F, -8388608}, {-1.1F, -8388608}, {-0x1p-23F, -1}, {0.0F, 0}, {nan, 0}},
    {{0x00800000, 0.0F, -8388608}, {-0x00FFFFFF, 0.0F, 1}}};

template <>
const Expected expected<S32>{model::Format::s32,
    {{1.0F, 2147483647}, {1.0000001F, 2147483647}, {-1.0F, -2147483648}, {-infinity, -2147483648}, {0.0F, 0},
     {0.5F, 1073741823}, {-0.5F, -1073741824}, {0x1p-31F, 0}, {0x1p-30F, 1}, {-0x1p-31F, -1}, {-0x1p-30F, -2},
     {nan, 0}},
    {{1, 0.0F, 0}, {-1, 0.0F, 0}, {1000, 0.0F, 999}, {-1000, 0.0F, -999}, {123456789, 0.0F, 123456791},
     {2147483647, 0.0F, 2147483647}, {-2147483648, 0.0F, -2147483648}}};
// clang-format on

template <class Format>
class SampleEncoding : public testing::Test {
protected:
    static constexpr std::size_t size = sizeof(Format);

    static Format containerOf(std::int64_t value) {
        Format container{};
        for (std::size_t i = 0; i < size; ++i)
            container.bytes[i] = static_cast<unsigned char>(value >> (8 * i));
        return container;
    }
    static Format stored(float x) {
        Format container{};
        Aud::SampleEncoding<Format>::store(x, container);
        return container;
    }
    static Format storedByModel(float x) {
        Format container{};
        const model::Format model = expected<Format>.model;
        model::store(model, model == model::Format::u8 ? x + 1.0F : x, container.bytes);
        return container;
    }
    static bool areEqual(const Format& a, const Format& b) {
        return std::memcmp(a.bytes, b.bytes, size) == 0;
    }
};

struct FormatNames {
    template <class Format>
    static std::string GetName(int number) {
        return model::outputTypeNames[number];
    }
};
using Formats = testing::Types<F32, S16, S24, S8, U8, S24In32, S32>;
TYPED_TEST_SUITE(SampleEncoding, Formats, FormatNames);

TYPED_TEST(SampleEncoding, ClipsScalesAndTruncates) {
    EXPECT_EQ(sizeof(TypeParam[3]),
              3 * model::containerBytes[static_cast<std::size_t>(expected<TypeParam>.model)]);
    for (const Store& store : expected<TypeParam>.stores)
        EXPECT_TRUE(this->areEqual(this->stored(store.x), this->containerOf(store.value)))
            << "storing " << store.x;
}

TYPED_TEST(SampleEncoding, AddsToWhatIsThere) {
    for (const Sum& sum : expected<TypeParam>.sums) {
        const TypeParam before = this->containerOf(sum.before);
        TypeParam containers[3] = {before, before, before};
        Aud::Render::SummingOutputSampleIterator<TypeParam*> out(&containers[1]);
        Aud::Render::deliver(sum.x, out);
        EXPECT_TRUE(this->areEqual(containers[1], this->containerOf(sum.after)))
            << sum.before << " + " << sum.x;
        EXPECT_TRUE(this->areEqual(containers[0], before) && this->areEqual(containers[2], before));
        EXPECT_EQ(out.position(), &containers[2]);
    }
}

/// Every 4,099th float, and the neighbours of every step of 9 bits and of every clip limit.
TYPED_TEST(SampleEncoding, StoresWhatTheModelStores) {
    std::vector<float> samples{oneBelow, 0.9921875F, 0.999969482421875F};
    for (int step = -260; step <= 260; ++step)
        samples.push_back(static_cast<float>(step) / 256.0F);
    for (std::size_t i = 0, steps = samples.size(); i < steps; ++i)
        for (float direction : {-2.0F, 2.0F})
            samples.push_back(std::nextafter(samples[i], direction));
    for (std::uint64_t pattern = 0; pattern < std::uint64_t{1} << 32; pattern += 4099)
        samples.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(pattern)));
    for (float x : samples)
        ASSERT_TRUE(this->areEqual(this->stored(x), this->storedByModel(x))) << "storing " << x;
}

/// Every container of one or two bytes; of the larger ones every 4,099th.
TYPED_TEST(SampleEncoding, ReadsBackWhatItStores) {
    constexpr bool isExact =
        std::is_same_v<TypeParam, S8> || std::is_same_v<TypeParam, S16> || std::is_same_v<TypeParam, S24>;
    const std::int64_t all = std::int64_t{1} << (8 * this->size);
    for (std::int64_t value = 0; value<all; value += all> 65536 ? 4099 : 1) {
        const TypeParam container = this->containerOf(value);
        const float x = Aud::SampleEncoding<TypeParam>::load(container);
        ASSERT_EQ(bits(x), bits(model::load(expected<TypeParam>.model, container.bytes)))
            << "loading " << value;
        ASSERT_TRUE(!isExact || this->areEqual(this->stored(x), container)) << "storing " << x;
    }
}

} // namespace
} // namespace audlmd::test

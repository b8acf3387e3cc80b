#include "ole/Aud/FilteringSRCIterator.hpp"

#include "tests/ole/Aud/StageTest.hpp"

#include <tuple>

namespace audlmd::test {

using Converter = Aud::Render::FilteringSRCIterator<Tens>;

using FilteringSRCIteratorTest = StageTest;

// The bounds of the factor are compared with the model by the sweep.
TEST_F(FilteringSRCIteratorTest, OpensAndSkipsTheStartOnlyWhereTheByteIsZero) {
    Aud::Render::FilteringSRCState& state = record.srcState;
    const Aud::SubSamplePos start(0, 5);
    EXPECT_EQ(std::tuple(state.readIndex, state.nextSourcePos, state.positionRecorded, state.opened),
              std::tuple(0U, 0, 0, 0));
    Converter(Tens(), &state, start, 1.0F);
    EXPECT_EQ(host.count("open resampler"), 1U);
    EXPECT_EQ(host.count("resample"), 1U);
    EXPECT_EQ(state.opened, 1);
    EXPECT_EQ(state.nextSourcePos, 64);
    for (std::uint8_t opened : std::initializer_list<std::uint8_t>{1, 2, 128, 255}) {
        state.opened = opened;
        state.positionRecorded = 0;
        Converter(Tens{7}, &state, start, 1.0F);
        EXPECT_EQ(host.count("open resampler"), 1U) << unsigned{opened};
        EXPECT_EQ(host.count("resample"), 1U) << unsigned{opened};
        EXPECT_EQ(state.nextSourcePos, 7);
        EXPECT_EQ(state.positionRecorded, 1);
    }
}

TEST(FilteringSRCIterator, IsOutermostBecauseNoLayerCanCopyIt) {
    EXPECT_FALSE(Aud::Render::WrappableLayer<Converter>);
}

} // namespace audlmd::test

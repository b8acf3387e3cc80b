#include "ole/Aud/FilteringSRCIterator.hpp"

#include "tests/ole/Aud/StageTest.hpp"

namespace audlmd::test {

using State = Aud::Render::FilteringSRCState;
using Converter = Aud::Render::FilteringSRCIterator<Tens>;

class FilteringSRCIterator : public StageTest {
protected:
    ~FilteringSRCIterator() override { cfgAudioPlaybackSpeedLimit = 6.0; }

    State& state = record.srcState;
};

TEST_F(FilteringSRCIterator, OpensAndSkipsTheStartOnlyWhereTheByteIsZero) {
    const Aud::SubSamplePos start(0, 5);
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

TEST_F(FilteringSRCIterator, BoundsTheFactorByTheSpeedLimitAndBy1024) {
    const struct {
        double limit;
        float speed;
        double factor;
    } cases[] = {{6.0, 10.0F, 1.0 / 6.0},         {2.0, 10.0F, 0.5},   {2.0, 1.25F, 0.8},
                 {8.0, 6.4F, 1.0 / double{6.4F}}, {8.0, -1.0F, 0.125}, {2.0, 0.0F, 1024}};
    for (const auto& [limit, speed, factor] : cases) {
        cfgAudioPlaybackSpeedLimit = limit;
        state.opened = 0;
        host.log.clear();
        Converter(Tens(), &state, {0, 0}, speed);
        EXPECT_EQ(state.factor, factor) << "limit " << limit << ", speed " << speed;
        EXPECT_EQ(host.log.front(), (Call{"open resampler", bitsOf(1.0 / limit)}));
    }
}

} // namespace audlmd::test

// What the sample loop must not do.

#include "model/Model.hpp"
#include "model/OutputTypes.hpp"
#include "tests/interposers/CallWatch.hpp"
#include "tests/scripted_host/ScriptedHost.hpp"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace audlmd::test {
namespace {

class SomeCache final : public Aud::SampleCache {};

/// A source of ready segments, and everything that any mode reads of a request.
class ReadySource {
public:
    explicit ReadySource(unsigned int code) : samples_(16384, 0.25F), forward_(code >= 1024) {
        host_.logging = false;
        host_.materialSamples = static_cast<std::int64_t>(samples_.size());
        for (std::int64_t first = 0; first < host_.materialSamples; first += 256)
            host_.segments.push_back({first, 256, {1}});
        host_.material = samples_.data();
        host_.levelSegments = {{100, 0.5F, 0.001F, 0}};
        host_.cache = &cache_;
        host_.gearing = &gearing_;
        host_.record = &record_;
        record_.dynamicLevel = {.samplesToNextNode = 50, .uValueStep = 0.001F, .stationary = 0};
        static constexpr std::uint32_t tags[12] = {0, 0, 0, 0, 0, 0, 4, 5, 6, 4, 5, 6};
        record_.envelope.type = tags[model::Digits(code).middle];
        if (record_.envelope.type == 6)
            record_.envelope.twoRamps = {1e-4F, 1e-4F, 30, 2000, 2, 3};
        else
            record_.envelope.oneRamp = {1e-4F, 2000, 2, {}};
        ScriptedHost::current = &host_;
    }

    void render(std::size_t outputType, unsigned int code, std::vector<std::uint8_t>& buffer,
                unsigned int count) {
        start_ = forward_ ? 0 : host_.materialSamples - 1;
        Aud::Render::IteratorCreationParams params{&record_, &start_, &flag_,  &argument_, &start_, &start_,
                                                   &offset_, &step_,  &speed_, &gearing_,  &cache_};
        std::uint8_t* position = buffer.data();
        model::renderThroughTable(outputType, code, params, position, count);
    }

private:
    std::vector<float> samples_;
    bool forward_;
    ScriptedHost host_;
    SomeCache cache_;
    Orv::OutputGearing gearing_;
    Aud::Render::PerSourceRecord record_;
    std::int64_t start_ = 0;
    bool flag_ = true;
    std::uint32_t argument_ = 2;
    Aud::SubSamplePos offset_{0, 5};
    Aud::SubSamplePos step_{1, 5};
    float speed_ = 1.0F;
};

class QuietLoop : public testing::TestWithParam<std::size_t> {};

TEST_P(QuietLoop, NeitherAllocatesNorLocksNorCallsTheSystem) {
    std::vector<std::uint8_t> buffer(4096 * 4);
    std::size_t differing = 0;
    for (unsigned int code : model::registrationOrder()) {
        ReadySource source(code);
        // The first call opens the resampler; after that, what a call does must not depend on its length.
        source.render(GetParam(), code, buffer, 0);
        Calls ofFew;
        Calls ofMany;
        for (const auto& [calls, samples] : {std::pair{&ofFew, 64U}, {&ofMany, 4096U}}) {
            const CallWatch watch(*calls);
            source.render(GetParam(), code, buffer, samples);
        }
        if (ofFew != ofMany || ofMany.system != 0)
            ++differing;
        EXPECT_LE(differing, 3U) << "code " << code;
    }
    EXPECT_EQ(differing, 0U) << "modes that allocate, lock or call the system";
}

INSTANTIATE_TEST_SUITE_P(Into, QuietLoop, testing::Range(std::size_t{0}, model::outputTypeCount),
                         [](const auto& output) { return model::outputTypeNames[output.param]; });

} // namespace
} // namespace audlmd::test

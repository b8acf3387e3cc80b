#include "bench/Request.hpp"
#include "model/Model.hpp"
#include "model/OutputTypes.hpp"

#include <libresample.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace audlmd::bench {
namespace {

/// Answers the model as the host of the benchmarks answers the library. Records nothing.
class ModelHost final : public model::Host {
public:
    ModelHost(const Cache& cache, Aud::Filter::MultiBandBiquad<5U>& equaliser)
        : cache_(cache), equaliser_(equaliser) {}

    void stripCookie() override {}
    std::int64_t materialLength() const override { return cache_.length(); }
    model::Place makeSource(const model::SourceRequest& request) override {
        return placeOf(request.position);
    }
    void destroySource(bool) override {}
    model::Place hitFirst() override { return placeOf(0); }
    model::Place hitLast() override { return placeOf(cache_.length() - 1); }
    model::Place moveForward(int from) override { return placeOf(startOf(from + 1)); }
    model::Place moveReverse(int from) override { return placeOf(startOf(from) - 1); }
    void countUnderrun() override {}

    void adoptSegment() override {}
    void makeSegment() override {}
    void copySegment(int) override {}
    void assignSegment(int, int) override {}
    void destroySegment(int) override {}
    int status(int segment) override { return segment < 0 ? Aud::eSegmentEmpty : Aud::eSegmentReady; }
    const float* samples(int segment) override { return cache_.material().data() + startOf(segment); }
    std::int32_t length(int segment) override { return cache_.segmentAt(startOf(segment)).length(); }
    void requestEvent(int) override {}
    void wait(int, std::uint32_t) override {}
    void releaseEvent() override {}

    float filter(unsigned int band, float x) override { return equaliser_.band(band).processSample(x); }
    float lastResult(unsigned int band) override {
        return equaliser_.band(band).getLastProcessSampleResult();
    }
    void bindLevel() override {}
    /// Verification ends before the level reaches its node.
    model::LevelSegment nextLevel(bool) override { return {}; }

    void* openResampler(int highQuality, double minFactor, double maxFactor) override {
        return resample_open(highQuality, minFactor, maxFactor);
    }
    void resample(void* handle, double factor, float* in, int length, int* used, float* out) override {
        resample_process(handle, factor, in, length, 0, used, out, 1);
    }
    void recordException() override {}

private:
    static std::int64_t startOf(int segment) { return std::int64_t{segment} * Cache::segmentLength; }
    model::Place placeOf(std::int64_t position) const {
        if (position < 0 || position >= cache_.length())
            return {};
        return {static_cast<int>(position / Cache::segmentLength),
                static_cast<std::int32_t>(position % Cache::segmentLength)};
    }

    const Cache& cache_;
    Aud::Filter::MultiBandBiquad<5U>& equaliser_;
};

} // namespace

std::optional<std::string> differenceFromModel(unsigned int code, std::size_t outputType, Cache& cache,
                                               double speed) {
    constexpr unsigned int samplesPerCall = 100;
    constexpr std::size_t largestContainer = 4;
    std::array<std::uint8_t, 2 * samplesPerCall * largestContainer> rendered{};
    std::array<std::uint8_t, rendered.size()> expected{};
    // The summing output types add to these bytes.
    for (std::size_t i = 0; i < rendered.size(); ++i)
        rendered[i] = expected[i] = static_cast<std::uint8_t>(i * 37 % 64);

    Request request(code, cache, samplesPerCall, speed);
    Request modelRequest(code, cache, samplesPerCall, speed);
    ModelHost host(cache, modelRequest.record().equaliser);
    std::uint8_t* position = rendered.data();
    std::uint8_t* modelPosition = expected.data();
    for (int call = 0; call < 2; ++call) {
        model::renderThroughTable(outputType, code, request.params(), position, samplesPerCall);
        model::render(code, outputType, modelRequest.params(), host, modelPosition, samplesPerCall);
    }
    if (position - rendered.data() != modelPosition - expected.data())
        return "the output position";
    const auto* const difference = std::mismatch(rendered.begin(), rendered.end(), expected.begin()).first;
    if (difference != rendered.end())
        return "byte " + std::to_string(difference - rendered.begin());
    return std::nullopt;
}

} // namespace audlmd::bench

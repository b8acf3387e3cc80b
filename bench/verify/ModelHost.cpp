// Defines the operations of the script that the model asks. The tests define them otherwise.

#include "bench/verify/ModelHost.hpp"

#include <libresample.h>

#include <cstddef>
#include <cstdint>

namespace {

Aud::Filter::MultiBandBiquad<5U>* currentEqualiser = nullptr;

} // namespace

namespace Bench {

ModelHost::ModelHost(const Cache& cache, Aud::Filter::MultiBandBiquad<5U>& equaliser) : cache_(cache) {
    currentEqualiser = &equaliser;
}

ModelHost::~ModelHost() {
    currentEqualiser = nullptr;
}

Test::Script ModelHost::script() const {
    Test::Script script;
    script.materialLength = cache_.length();
    script.material = cache_.material().data();
    for (std::int64_t first = 0; first < cache_.length(); first += Cache::segmentLength)
        script.segments.push_back({first, cache_.segmentAt(first).length(), {Aud::eSegmentReady}});
    return script;
}

} // namespace Bench

namespace Test {

void Script::call(Op, std::uint64_t) {}
void Script::note(Op, std::uint64_t) {}
void Script::makeSegment() {}
void Script::copySegment(int) {}
void Script::destroySegment(int) {}
void Script::wait(int, std::uint32_t) {}
void Script::underrun() {}

Place Script::makeIterator(bool, std::int64_t position, std::uint64_t) {
    return {static_cast<int>(position / Bench::Cache::segmentLength),
            static_cast<std::int32_t>(position % Bench::Cache::segmentLength)};
}

Place Script::callThenPlace(Op, std::uint64_t, int segment, bool last) {
    return {segment, last ? segments[static_cast<std::size_t>(segment)].length - 1 : 0};
}

int Script::status(int segment) {
    return segment < 0 ? emptyStatus : Aud::eSegmentReady;
}

const float* Script::samples(int segment) {
    return material + segments[static_cast<std::size_t>(segment)].first;
}

std::int32_t Script::length(int segment) {
    return segments[static_cast<std::size_t>(segment)].length;
}

float Script::biquad(unsigned int band, float x) {
    return currentEqualiser->band(band).processSample(x);
}

float Script::biquadResult(unsigned int band) {
    return currentEqualiser->band(band).getLastProcessSampleResult();
}

LevelSegment Script::nextLevel(bool) {
    return {}; // verification ends before the level reaches its node
}

void* Script::openResampler(int highQuality, double minFactor, double maxFactor) {
    return resample_open(highQuality, minFactor, maxFactor);
}

void Script::resample(void* handle, double factor, float* in, int length, int* used, float* out,
                      std::uint64_t) {
    resample_process(handle, factor, in, length, 0, used, out, 1);
}

} // namespace Test

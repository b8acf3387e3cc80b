#include "tests/library/host/Script.hpp"

#include "tests/library/host/RealResampler.hpp"

#include <algorithm>

namespace Test {

std::string describe(const Call& call) {
    static constexpr const char* names[] = {
        "strip cookie",     "make forward", "make reverse",   "destroy forward",
        "destroy reverse",  "make segment", "copy segment",   "assign segment",
        "destroy segment",  "status",       "samples",        "length",
        "request event",    "wait",         "release event",  "destroy event",
        "hit first",        "hit last",     "move forward",   "move reverse",
        "underrun",         "biquad",       "biquad result",  "bind level",
        "node forwards",    "node reverse", "open resampler", "resample",
        "record exception", "  with",       "CORRUPTED"};
    return std::string(names[static_cast<std::size_t>(call.op)]) + " " +
           std::to_string(static_cast<std::int64_t>(call.argument));
}

void Script::call(Op op, std::uint64_t argument) {
    note(op, argument);
    if (calls++ >= throwAt) {
        throwAt = never;
        throw HostFailure{calls - 1};
    }
}

void Script::note(Op op, std::uint64_t argument) {
    if (logging)
        log.push_back({op, argument});
}

void Script::startCall(std::size_t throwingOperation) {
    log.clear();
    calls = 0;
    throwAt = throwingOperation;
}

std::vector<std::uint64_t> Script::state() const {
    std::vector<std::uint64_t> numbers{calls, underruns, static_cast<std::uint64_t>(holders),
                                       nextLevelSegment, resamplers.size()};
    for (const BandState& band : bands)
        numbers.insert(numbers.end(), {bitsOf(band.memory), bitsOf(band.result)});
    for (const ScriptedSegment& segment : segments)
        numbers.push_back(segment.queries);
    for (const ScriptedResampler& resampler : resamplers)
        numbers.insert(numbers.end(), {resampler.random, bitsOf(resampler.memory)});
    return numbers;
}

Place Script::placeAt(int segment, bool last) const {
    if (segment < 0 || static_cast<std::size_t>(segment) >= segments.size())
        return {};
    return {segment, last ? segments[static_cast<std::size_t>(segment)].length - 1 : 0};
}

Place Script::makeIterator(bool forward, std::int64_t position, std::uint64_t arguments) {
    call(forward ? Op::makeForward : Op::makeReverse, static_cast<std::uint64_t>(position));
    note(Op::arguments, arguments);
    if (position < 0 || position >= materialLength)
        return outside;
    const auto after = std::find_if(segments.begin(), segments.end(), [position](const auto& segment) {
        return segment.first + segment.length > position;
    });
    return {static_cast<int>(after - segments.begin()), static_cast<std::int32_t>(position - after->first)};
}

Place Script::hitFirst() {
    call(Op::hitFirst, 0);
    return placeAt(0, false);
}

Place Script::hitLast() {
    call(Op::hitLast, 0);
    return placeAt(static_cast<int>(segments.size()) - 1, true);
}

Place Script::moveForward(int segment) {
    call(Op::moveForward, idOf(segment));
    return placeAt(segment + 1, false);
}

Place Script::moveReverse(int segment) {
    call(Op::moveReverse, idOf(segment));
    return placeAt(segment - 1, true);
}

void Script::underrun() {
    call(Op::underrun, 0);
    ++underruns;
}

void Script::makeSegment() {
    if (!hostWorks_)
        call(Op::makeSegment, 0);
    ++holders;
}

void Script::copySegment(int segment) {
    if (!hostWorks_)
        call(Op::copySegment, idOf(segment));
    ++holders;
}

void Script::assignSegment(int from, int to) {
    if (!hostWorks_)
        call(Op::assignSegment, idOf(from) << 32 | idOf(to));
}

void Script::destroySegment(int segment) {
    if (!hostWorks_)
        note(Op::destroySegment, idOf(segment));
    --holders;
}

int Script::status(int segment) {
    call(Op::status, idOf(segment));
    if (segment < 0)
        return emptyStatus;
    ScriptedSegment& it = segments[static_cast<std::size_t>(segment)];
    return it.statuses[std::min(it.queries++, it.statuses.size() - 1)];
}

const float* Script::samples(int segment) {
    call(Op::samples, idOf(segment));
    return material + segments[static_cast<std::size_t>(segment)].first;
}

std::int32_t Script::length(int segment) {
    call(Op::length, idOf(segment));
    return segment < 0 ? 0 : segments[static_cast<std::size_t>(segment)].length;
}

void Script::wait(int segment, std::uint32_t timeOut) {
    call(Op::wait, timeOut);
    ScriptedSegment& it = segments[static_cast<std::size_t>(segment)];
    it.statuses = {it.statusAfterWait};
}

float Script::biquad(unsigned int band, float x) {
    call(Op::biquad, static_cast<std::uint64_t>(band) << 32 | bitsOf(x));
    BandState& state = bands[band];
    state.result = x * state.gain + state.memory;
    state.memory = x * 0.25F - state.result * 0.5F;
    return state.result;
}

float Script::biquadResult(unsigned int band) {
    call(Op::biquadResult, band);
    return bands[band].result;
}

LevelSegment Script::nextLevel(bool forwards) {
    call(forwards ? Op::nodeForwards : Op::nodeReverse, 0);
    return levelSegments[nextLevelSegment++ % levelSegments.size()];
}

void* Script::openResampler(int highQuality, double minFactor, double maxFactor) {
    note(Op::openResampler, bitsOf(minFactor));
    note(Op::arguments, bitsOf(maxFactor) ^ static_cast<std::uint64_t>(highQuality));
    ScriptedResampler opened{nullptr, static_cast<std::uint32_t>(resamplers.size()) + 1, 0.5F};
    if (usesRealResampler)
        opened.real = openRealResampler(highQuality, minFactor, maxFactor);
    resamplers.push_back(opened);
    return reinterpret_cast<void*>(resamplers.size());
}

void Script::resample(void* handle, double factor, float* in, int length, int* used, float* out,
                      std::uint64_t arguments) {
    note(Op::resample, bitsOf(factor));
    note(Op::arguments, arguments);
    ScriptedResampler& resampler = resamplers[reinterpret_cast<std::uintptr_t>(handle) - 1];
    if (resampler.real) {
        processRealResampler(resampler.real.get(), factor, in, length, used, out);
        return;
    }
    resampler.random = resampler.random * 1664525u + 1013904223u;
    const std::uint32_t dice = resampler.random >> 8;
    // Mostly a few samples, now and then all of them, or none.
    *used =
        static_cast<int>(dice % 16 == 0 ? static_cast<std::uint32_t>(length)
                                        : dice / 16 % std::min(static_cast<std::uint32_t>(length) + 1, 5u));
    if (dice / 4096 % 8 == 0)
        return;
    *out = in[0] * 0.75F + resampler.memory * 0.125F;
    resampler.memory = *out;
}

} // namespace Test

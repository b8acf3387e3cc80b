#include "model/Script.hpp"

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

Place Script::callThenPlace(Op op, std::uint64_t argument, int segment, bool last) {
    call(op, argument);
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

} // namespace Test

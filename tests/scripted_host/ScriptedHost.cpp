#include "tests/scripted_host/ScriptedHost.hpp"

#include <algorithm>

namespace audlmd::test {

void ScriptedHost::call(std::string_view operation, std::uint64_t argument) {
    note(operation, argument);
    if (calls == interfereAt)
        interfere();
    if (calls++ >= throwAt) {
        throwAt = never;
        throw HostFailure{calls - 1};
    }
}

void ScriptedHost::note(std::string_view operation, std::uint64_t argument) {
    if (!logging)
        return;
    log.push_back({operation, argument});
    if (outputStart != nullptr) {
        log.back().written = outputPosition() - outputStart;
        log.back().recordState = recordState();
    }
}

std::uint64_t ScriptedHost::recordState() const {
    const auto& src = record->srcState;
    const auto& level = record->dynamicLevel;
    std::uint64_t state = 0;
    for (const std::uint64_t number :
         {reinterpret_cast<std::uint64_t>(src.handle), bitsOf(src.factor),
          std::uint64_t{bitsOf(src.outSample)}, std::uint64_t{src.readIndex},
          static_cast<std::uint64_t>(src.nextSourcePos), std::uint64_t{src.positionRecorded},
          std::uint64_t{src.opened}, std::uint64_t{bitsOf(src.sourceBlock[0])},
          std::uint64_t{bitsOf(src.sourceBlock[63])}, std::uint64_t{level.samplesToNextNode},
          std::uint64_t{bitsOf(level.uValue)}, std::uint64_t{bitsOf(level.uValueStep)},
          std::uint64_t{level.stationary}})
        state = (state ^ number) * 0x100000001B3U; // as in the hash of Fowler, Noll and Vo, by the number
    return state;
}

void ScriptedHost::require(bool right) {
    if (!right)
        note("CORRUPTED", 0);
}

std::size_t ScriptedHost::count(std::string_view operation) const {
    return static_cast<std::size_t>(std::count_if(
        log.begin(), log.end(), [operation](const Call& made) { return made.operation == operation; }));
}

void ScriptedHost::startCall(std::size_t throwingOperation, std::size_t interferingOperation) {
    log.clear();
    calls = 0;
    throwAt = throwingOperation;
    interfereAt = interferingOperation;
}

std::vector<std::uint64_t> ScriptedHost::state() const {
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

model::Place ScriptedHost::callThenPlace(std::string_view operation, std::uint64_t argument, int segment,
                                         bool last) {
    call(operation, argument);
    if (segment < 0 || static_cast<std::size_t>(segment) >= segments.size())
        return {};
    return {segment, last ? segments[static_cast<std::size_t>(segment)].length - 1 : 0};
}

model::Place ScriptedHost::makeSource(const model::SourceRequest& request) {
    call(request.forward ? "make forward" : "make reverse", static_cast<std::uint64_t>(request.position));
    note("with",
         std::uint64_t{request.extra} << 32 | unsigned{request.flag} << 1 | unsigned{request.notFlag});
    const std::int64_t position = request.position;
    if (position < 0 || position >= materialSamples)
        return outside;
    if (inside)
        return *inside;
    const auto after = std::find_if(segments.begin(), segments.end(), [position](const auto& segment) {
        return segment.first + segment.length > position;
    });
    return {static_cast<int>(after - segments.begin()), static_cast<std::int32_t>(position - after->first)};
}

void ScriptedHost::countUnderrun() {
    call("underrun", 0);
    ++underruns;
}

void ScriptedHost::makeSegment() {
    call("make segment", 0);
    ++holders;
}

void ScriptedHost::copySegment(int segment) {
    call("copy segment", idOf(segment));
    ++holders;
}

void ScriptedHost::destroySegment(int segment) {
    note("destroy segment", idOf(segment));
    --holders;
}

int ScriptedHost::status(int segment) {
    call("status", idOf(segment));
    if (segment < 0)
        return emptyStatus;
    ScriptedSegment& it = segments[static_cast<std::size_t>(segment)];
    return it.statuses[std::min(it.queries++, it.statuses.size() - 1)];
}

const float* ScriptedHost::samples(int segment) {
    call("samples", idOf(segment));
    return material + segments[static_cast<std::size_t>(segment)].first;
}

std::int32_t ScriptedHost::length(int segment) {
    call("length", idOf(segment));
    return segment < 0 ? 0 : segments[static_cast<std::size_t>(segment)].length;
}

void ScriptedHost::wait(int segment, std::uint32_t timeOut) {
    call("wait", timeOut);
    ScriptedSegment& it = segments[static_cast<std::size_t>(segment)];
    it.statuses = {it.statusAfterWait};
}

void ScriptedHost::releaseEvent() {
    note("release event", keepsEvents ? 1 : 0);
    if (!keepsEvents)
        note("destroy event", 0);
}

float ScriptedHost::filter(unsigned int band, float x) {
    call("filter", static_cast<std::uint64_t>(band) << 32 | bitsOf(x));
    BandState& state = bands[band];
    state.result = x * state.gain + state.memory;
    state.memory = x * 0.25F - state.result * 0.5F;
    return state.result;
}

float ScriptedHost::lastResult(unsigned int band) {
    call("last result", band);
    return bands[band].result;
}

model::LevelSegment ScriptedHost::nextLevel(bool forwards) {
    call(forwards ? "node forwards" : "node reverse", 0);
    return levelSegments[nextLevelSegment++ % levelSegments.size()];
}

} // namespace audlmd::test

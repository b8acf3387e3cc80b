#pragma once

#include "host/Identity.hpp"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace Test {

/// What the library asks of its host, one name per operation.
enum class Op : std::uint8_t {
    stripCookie,
    makeForward,
    makeReverse,
    destroyForward,
    destroyReverse,
    makeSegment,
    copySegment,
    assignSegment,
    destroySegment,
    status,
    samples,
    length,
    requestEvent,
    wait,
    releaseEvent,
    destroyEvent,
    hitFirst,
    hitLast,
    moveForward,
    moveReverse,
    underrun,
    biquad,
    biquadResult,
    bindLevel,
    nodeForwards,
    nodeReverse,
    openResampler,
    resample,
    recordException,
    /// More about the operation before it.
    arguments,
    /// A member that the library must copy as it is was not.
    corrupted,
};

/// One operation in the order in which the library made them.
struct Call {
    Op op;
    std::uint64_t argument;

    friend bool operator==(const Call&, const Call&) = default;
};

std::string describe(const Call& call);

/// What a scripted operation throws.
struct HostFailure {
    std::size_t call;
};

/// All NaNs are one: their signs and payloads are nobody's contract.
inline std::uint32_t bitsOf(float x) {
    return x != x ? 0x7FC00000U : std::bit_cast<std::uint32_t>(x);
}
inline std::uint64_t bitsOf(double x) {
    return x != x ? 0x7FF8000000000000U : std::bit_cast<std::uint64_t>(x);
}

/// Where an iterator stands: a segment by its number (-1: the empty handle) and an index in it.
struct Place {
    int segment = -1;
    std::int32_t index = 0;
};

/// One segment. Each query of its status takes the next of the statuses, the last one for good.
struct ScriptedSegment {
    std::int64_t first = 0;
    std::int32_t length = 0;
    std::vector<std::uint8_t> statuses;
    std::uint8_t statusAfterWait = 1;
    std::size_t queries = 0;
};

struct LevelSegment {
    std::uint32_t samples = 1;
    float uValue = 0.0F;
    float uValueStep = 0.0F;
    std::uint8_t stationary = 0;
};

struct BandState {
    float gain = 1.0F;
    float memory = 0.0F;
    float result = 0.0F;
};

/// An opened resampler, libresample's or a made-up one.
struct ScriptedResampler {
    std::shared_ptr<void> real;
    std::uint32_t random = 0;
    float memory = 0.0F;
};

/// The host's behaviour as a plain value: what every operation answers, and the log of all of them. The
/// scripted host asks the current script; the model asks a copy of it. What the host does with its own
/// segments between beginHostWork and endHostWork is not logged and never throws.
struct Script {
    static constexpr std::size_t never = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t maxSegments = 64;
    /// What the host's own members of the iterators hold.
    static constexpr std::uint8_t hostFlags = 0xA5;
    static constexpr std::uint32_t hostReach = 0x12345678;
    static constexpr Cookie cookie{{{7, 1, 8}}, 0xBEEF, 0x5A};
    /// In the arguments of makeIterator: cookie, cache and gearing are those of the request.
    static constexpr std::uint64_t rightObjects = 0x700;

    static inline Script* current = nullptr;

    // The scenario.
    std::int64_t materialLength = 0;
    std::vector<ScriptedSegment> segments;
    const float* material = nullptr;
    int emptyStatus = 0;
    /// Of iterators that are made outside the material.
    Place outside;
    std::vector<LevelSegment> levelSegments;
    std::array<BandState, 5> bands;
    bool keepsEvents = false;
    bool usesRealResampler = false;
    bool logging = true;
    /// The first operation that may throw, counted from here, does.
    std::size_t throwAt = never;

    // The objects of the request, by which the scripted host knows that it was handed the right ones.
    const void* cache = nullptr;
    const void* gearing = nullptr;
    const void* strip = nullptr;
    const void* levelState = nullptr;
    const void* firstBand = nullptr;
    const float* sourceBlock = nullptr;
    const float* outSample = nullptr;

    // What happened.
    std::vector<Call> log;
    std::size_t calls = 0;
    std::uint64_t underruns = 0;
    /// Live segment handles.
    std::int64_t holders = 0;
    std::size_t nextLevelSegment = 0;
    std::vector<ScriptedResampler> resamplers;

    void startCall(std::size_t throwingOperation);
    /// All that a render call may change, as numbers to compare.
    std::vector<std::uint64_t> state() const;

    void call(Op op, std::uint64_t argument);
    /// An operation that does not throw, or more about the one before.
    void note(Op op, std::uint64_t argument);
    void beginHostWork() { hostWorks_ = true; }
    void endHostWork() { hostWorks_ = false; }

    Place makeIterator(bool forward, std::int64_t position, std::uint64_t arguments);
    Place hitFirst() { return callThenPlace(Op::hitFirst, 0, 0, false); }
    Place hitLast() { return callThenPlace(Op::hitLast, 0, static_cast<int>(segments.size()) - 1, true); }
    Place moveForward(int from) { return callThenPlace(Op::moveForward, idOf(from), from + 1, false); }
    Place moveReverse(int from) { return callThenPlace(Op::moveReverse, idOf(from), from - 1, true); }
    void underrun();

    void makeSegment();
    void copySegment(int segment);
    void assignSegment(int from, int to) { call(Op::assignSegment, idOf(from) << 32 | idOf(to)); }
    void destroySegment(int segment);
    int status(int segment);
    const float* samples(int segment);
    std::int32_t length(int segment);
    void requestEvent(int segment) { call(Op::requestEvent, idOf(segment)); }
    void wait(int segment, std::uint32_t timeOut);

    float biquad(unsigned int band, float x);
    float biquadResult(unsigned int band);
    LevelSegment nextLevel(bool forwards);

    void* openResampler(int highQuality, double minFactor, double maxFactor);
    void resample(void* handle, double factor, float* in, int length, int* used, float* out,
                  std::uint64_t arguments);

private:
    static std::uint64_t idOf(int segment) { return static_cast<std::uint32_t>(segment); }
    Place callThenPlace(Op op, std::uint64_t argument, int segment, bool last);

    bool hostWorks_ = false;
};

/// How many curve tables there are: law-like ones and random ones.
inline constexpr unsigned int curveTableCount = 4;
/// Puts one of them behind the names that the library imports.
void useCurveTables(unsigned int number);

/// Blocks of the host's heap that are in use.
std::int64_t heapBlocksInUse();

} // namespace Test

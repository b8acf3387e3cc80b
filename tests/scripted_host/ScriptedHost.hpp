#pragma once

#include "loop_modes/IteratorCreationParams.hpp"
#include "model/Host.hpp"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace audlmd::test {

/// One operation in the order in which the library made them. The operation "with" says more about the one
/// before. The operation "CORRUPTED" says that the library did not hand on exactly what the host had handed
/// out.
struct Call {
    std::string_view operation;
    std::uint64_t argument;
    /// What the host sees of the call when it looks around in the operation: bytes written, and a number that
    /// stands for the state which the library keeps in the record.
    std::int64_t written = 0;
    std::uint64_t recordState = 0;

    friend bool operator==(const Call&, const Call&) = default;
};

/// Thrown by a scripted operation, by its number in the call.
struct HostFailure {
    std::size_t call;
};

/// Bits to compare. All NaNs are made equal, because no contract covers their signs and payloads.
inline std::uint32_t bitsOf(float x) {
    return x != x ? 0x7FC00000U : std::bit_cast<std::uint32_t>(x);
}
inline std::uint64_t bitsOf(double x) {
    return x != x ? 0x7FF8000000000000U : std::bit_cast<std::uint64_t>(x);
}

/// One segment. Each query of its status takes the next of the statuses, the last one for good.
struct ScriptedSegment {
    std::int64_t first = 0;
    std::int32_t length = 0;
    std::vector<std::uint8_t> statuses{1};
    std::uint8_t statusAfterWait = 1;
    std::size_t queries = 0;
};

struct BandState {
    float gain = 1.0F;
    float memory = 0.0F;
    float result = 0.0F;
};

/// An opened resampler.
struct ScriptedResampler {
    std::uint32_t random;
    float memory;
};

/// A host as a plain value: what every operation answers, and the log of all of them. The operations that the
/// library imports ask the current one; the model asks a copy.
struct ScriptedHost final : model::Host {
    static constexpr std::size_t never = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t maxSegments = 64;
    static constexpr Cookie cookie{{{7, 1, 8}}, 0xBEEF, 0x5A};

    static inline ScriptedHost* current = nullptr;

    // The scenario.
    std::int64_t materialSamples = 0;
    std::vector<ScriptedSegment> segments;
    const float* material = nullptr;
    int emptyStatus = 0;
    /// The place of iterators that are made outside the material.
    model::Place outside;
    /// The place of iterators that are made inside, where that is not the one they ask for.
    std::optional<model::Place> inside;
    std::vector<model::LevelSegment> levelSegments;
    std::array<BandState, 5> bands;
    bool keepsEvents = false;
    bool logging = true;
    /// Throws in the first operation that may throw and has at least this number in the call.
    std::size_t throwAt = never;
    /// During the operation with this number the host also calls `interfere`, which changes its record.
    std::size_t interfereAt = never;
    std::function<void()> interfere;

    // The objects of the request, by which the host knows that it was handed the right ones.
    Aud::Render::PerSourceRecord* record = nullptr;
    const Aud::SampleCache* cache = nullptr;
    const Orv::OutputGearing* gearing = nullptr;
    /// Where the output begins, and where the call has written to. Null: the host does not look.
    const std::uint8_t* outputStart = nullptr;
    std::function<const std::uint8_t*()> outputPosition;

    // What happened.
    std::vector<Call> log;
    std::size_t calls = 0;
    std::uint64_t underruns = 0;
    /// Live segment handles.
    std::int64_t holders = 0;
    std::size_t nextLevelSegment = 0;
    std::vector<ScriptedResampler> resamplers;

    void startCall(std::size_t throwingOperation, std::size_t interferingOperation);
    /// All that a render call may change, as numbers to compare.
    std::vector<std::uint64_t> state() const;
    /// How often the log holds an operation.
    std::size_t count(std::string_view operation) const;

    /// Logs an operation that may throw, and interferes and throws where the scenario says so.
    void call(std::string_view operation, std::uint64_t argument);
    /// Logs an operation that never throws, or "with".
    void note(std::string_view operation, std::uint64_t argument);
    /// Logs "CORRUPTED" unless `right`.
    void require(bool right);
    /// Of the state in the record that a render call changes: the dynamic level's and the converter's.
    std::uint64_t recordState() const;

    void stripCookie() override { call("strip cookie", 0); }
    std::int64_t materialLength() const override { return materialSamples; }
    model::Place makeSource(const model::SourceRequest& request) override;
    void destroySource(bool forward) override { note(forward ? "destroy forward" : "destroy reverse", 0); }
    model::Place hitFirst() override { return callThenPlace("hit first", 0, 0, false); }
    model::Place hitLast() override {
        return callThenPlace("hit last", 0, static_cast<int>(segments.size()) - 1, true);
    }
    model::Place moveForward(int from) override {
        return callThenPlace("move forward", idOf(from), from + 1, false);
    }
    model::Place moveReverse(int from) override {
        return callThenPlace("move reverse", idOf(from), from - 1, true);
    }
    void countUnderrun() override;

    void adoptSegment() override { ++holders; }
    void makeSegment() override;
    void copySegment(int segment) override;
    void assignSegment(int from, int to) override { call("assign segment", idOf(from) << 32 | idOf(to)); }
    void destroySegment(int segment) override;
    int status(int segment) override;
    const float* samples(int segment) override;
    std::int32_t length(int segment) override;
    void requestEvent(int segment) override { call("request event", idOf(segment)); }
    void wait(int segment, std::uint32_t timeOut) override;
    void releaseEvent() override;

    float filter(unsigned int band, float x) override;
    float lastResult(unsigned int band) override;
    void bindLevel() override { call("bind level", 0); }
    model::LevelSegment nextLevel(bool forwards) override;

    void* openResampler(int highQuality, double minFactor, double maxFactor) override;
    void resample(void* handle, double factor, float* in, int inLength, int* used, float* out) override;

    void recordException() override { note("record exception", 0); }

private:
    static std::uint64_t idOf(int segment) { return static_cast<std::uint32_t>(segment); }
    model::Place callThenPlace(std::string_view operation, std::uint64_t argument, int segment, bool last);
};

/// How many curve tables there are: readable ones with even numbers, random ones with odd ones.
inline constexpr unsigned int curveTableCount = 4;
/// Puts one of them behind the names that the library imports. In number 0, each node's magnitude is its
/// index; in number 2, both curves are the cube of the u-value.
void useCurveTables(unsigned int number);

/// Blocks of the host's heap that are in use.
std::int64_t heapBlocksInUse();

/// What the host sees while it loads the library, and what it answers.
struct LoadLog {
    /// Called for every picture format that is announced.
    std::function<void(std::uint32_t number)> onFormat;
    std::int64_t announcedFormats = 0;
    std::vector<std::pair<std::string, double>> settingsRead;
    std::optional<double> speedLimitSetting;

    static LoadLog& get();
};

} // namespace audlmd::test

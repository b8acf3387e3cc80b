#include "model/Model.hpp"
#include "model/OutputTypes.hpp"
#include "ole/Aud/SpeedLimit.hpp"
#include "ole/Orv/OrvModeMeta"
#include "tests/loop_modes/sweep/Sweep.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <optional>
#include <sstream>
#include <string>
#include <unistd.h>
#include <utility>

namespace audlmd::test {
namespace {

using Aud::Render::IteratorCreationParams;
using Aud::Render::PerSourceRecord;

class OtherCache final : public Aud::SampleCache {};

/// One side of the comparison, library or model: its own copy of everything that a call may change.
struct Side {
    explicit Side(const RandomCase& from)
        : host(from.host), record(from.record), buffer(from.buffer),
          position(&buffer[2 * model::containerBytes[from.outputType % 7]]) {
        host.cache = &cache;
        host.gearing = &gearing;
        host.record = &record;
        host.outputStart = position;
        host.interfere = [this] { changeWhatIsTaken(); };
    }
    Side(const Side&) = delete;

    /// Pointers that the mode does not read stay null.
    IteratorCreationParams paramsOf(const Request& wanted, unsigned int code) {
        request = wanted;
        host.startCall(request.throwAt, request.interfereAt);
        std::memcpy(&record.envelope, request.envelope, sizeof request.envelope);
        record.outerLevelUValue = request.outerLevelUValue;
        const bool forward = code / 1024 == 1;
        const unsigned int conversion = code / 32 % 4;
        IteratorCreationParams params;
        params.source = &record;
        params.requestFlag = &request.flag;
        params.gearing = &gearing;
        params.cache = &cache;
        if (forward)
            params.forwardArgument = &request.forwardArgument;
        if (conversion != 2)
            params.startPosition = &request.startPosition;
        else if (forward)
            params.forwardFilteringStartPosition = &request.forwardFilteringStartPosition;
        else
            params.reverseFilteringStartPosition = &request.reverseFilteringStartPosition;
        if (conversion != 0)
            params.subSampleStart = &request.subSampleStart;
        if (conversion == 1)
            params.subSampleStep = &request.subSampleStep;
        if (conversion == 2)
            params.speed = &request.speed;
        return params;
    }

    /// Changes every value that a render call takes before its first host operation.
    void changeWhatIsTaken() {
        std::memset(&record.envelope, 0x3F, sizeof record.envelope);
        record.outerLevelUValue = 0.1F;
        request.flag = !request.flag;
        request.forwardArgument = 0;
        request.startPosition = 1;
        request.forwardFilteringStartPosition = 1;
        request.reverseFilteringStartPosition = 1;
        request.subSampleStart = {0, 7};
        request.subSampleStep = {2, 9};
        request.speed = 3.0F;
    }

    std::vector<std::uint64_t> state() const {
        std::vector<std::uint64_t> numbers = host.state();
        const auto& src = record.srcState;
        const auto& level = record.dynamicLevel;
        numbers.insert(numbers.end(),
                       {reinterpret_cast<std::uintptr_t>(src.handle), bitsOf(src.factor),
                        bitsOf(src.outSample), src.readIndex, static_cast<std::uint64_t>(src.nextSourcePos),
                        src.positionRecorded, src.opened, level.samplesToNextNode, bitsOf(level.uValue),
                        bitsOf(level.uValueStep), level.stationary,
                        static_cast<std::uint64_t>(position - buffer.data())});
        for (float sample : src.sourceBlock)
            numbers.push_back(bitsOf(sample));
        return numbers;
    }

    OtherCache cache;
    Orv::OutputGearing gearing;
    ScriptedHost host;
    Request request;
    PerSourceRecord record;
    std::vector<std::uint8_t> buffer;
    std::uint8_t* position;
    std::string failure;
};

/// The exception that left the call, in words; empty if there was none.
template <class Render>
std::string failureOf(Render render) {
    std::ostringstream words;
    try {
        render();
    } catch (const HostFailure& failure) {
        words << "host operation " << failure.call;
    } catch (const Orv::Exception::RuntimeError& error) {
        words << error.typeName() << ": " << error.message() << ' ' << error.file() << ':' << error.line();
    } catch (const model::RuntimeError& error) {
        words << "RuntimeError: " << error.message << " ole/Aud/Aud__RenderIterators:" << error.line;
    }
    return words.str();
}

/// NaNs in a float buffer are made alike.
void unifyNaNs(std::vector<std::uint8_t>& buffer) {
    for (std::size_t i = 0; i < buffer.size(); i += sizeof(float)) {
        float sample = 0.0F;
        std::memcpy(&sample, &buffer[i], sizeof sample);
        const std::uint32_t bits = bitsOf(sample);
        std::memcpy(&buffer[i], &bits, sizeof bits);
    }
}

template <class T>
std::size_t firstDifference(const std::vector<T>& a, const std::vector<T>& b) {
    return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
}

std::string describe(const std::vector<Call>& log, std::size_t from, std::size_t to) {
    std::string lines;
    for (std::size_t i = from; i < std::min(to, log.size()); ++i)
        lines += "\n    " + std::to_string(i) + ": " + std::string(log[i].operation) + ' ' +
                 std::to_string(static_cast<std::int64_t>(log[i].argument)) + ", " +
                 std::to_string(log[i].written) + " bytes written, record " +
                 std::to_string(log[i].recordState);
    return lines;
}

std::optional<std::string> compare(Side& library, Side& expected, std::size_t outputType) {
    if (library.failure != expected.failure)
        return "failure \"" + library.failure + "\", not \"" + expected.failure + '"';
    if (library.host.log != expected.host.log) {
        const std::size_t at = firstDifference(library.host.log, expected.host.log);
        const std::size_t from = at < 6 ? 0 : at - 6;
        return "order of host operations\n  library:" + describe(library.host.log, from, at + 3) +
               "\n  model:" + describe(expected.host.log, at, at + 3);
    }
    if (outputType % 7 == 0) {
        unifyNaNs(library.buffer);
        unifyNaNs(expected.buffer);
    }
    if (library.buffer != expected.buffer)
        return "byte " + std::to_string(firstDifference(library.buffer, expected.buffer)) + " of the output";
    const auto libraryState = library.state();
    const auto expectedState = expected.state();
    if (libraryState != expectedState) {
        const std::size_t at = firstDifference(libraryState, expectedState);
        return "number " + std::to_string(at) + " of the host state: " + std::to_string(libraryState[at]) +
               ", not " + std::to_string(expectedState[at]);
    }
    if (library.host.holders != 0)
        return "segments are still held";
    if (heapBlocksInUse() != 0)
        return "blocks of the host's heap are still in use";
    return std::nullopt;
}

/// Sets the limit that the library read when it was loaded, and puts it back.
struct SpeedLimit {
    explicit SpeedLimit(double limit) { cfgAudioPlaybackSpeedLimit = limit; }
    SpeedLimit(const SpeedLimit&) = delete;
    ~SpeedLimit() { cfgAudioPlaybackSpeedLimit = before; }
    double before = cfgAudioPlaybackSpeedLimit;
};

// A crash has to name its case too.
std::string currentCase;

extern "C" void nameTheCase(int signal) {
    static_cast<void>(!write(STDERR_FILENO, currentCase.data(), currentCase.size()));
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void prepareRuns() {
    for (int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGABRT})
        std::signal(signal, &nameTheCase);
    // Logs come and go too often to be mapped afresh.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

/// How to run one case again.
std::string nameOf(const RandomCase& randomCase) {
    std::ostringstream name;
    name << "AUDLMD_CASE=" << randomCase.seed << ':' << randomCase.code << ':' << randomCase.outputType
         << " (code " << randomCase.code << ", " << model::outputTypeNames[randomCase.outputType] << ')';
    return name.str();
}

struct CaseResult {
    /// How the library differs from the model, and where; empty if it does not.
    std::optional<std::string> difference;
    /// Host operations of each render call.
    std::vector<std::size_t> operations;
};

CaseResult runCase(const RandomCase& randomCase) {
    const SpeedLimit limit(randomCase.speedLimit);
    useCurveTables(randomCase.curveTables);
    currentCase = "\nin case " + nameOf(randomCase) + '\n';
    Side library(randomCase);
    Side expected(randomCase);
    CaseResult result;
    for (std::size_t call = 0; call < randomCase.requests.size() && !result.difference; ++call) {
        const Request& request = randomCase.requests[call];
        ScriptedHost::current = &library.host;
        IteratorCreationParams params = library.paramsOf(request, randomCase.code);
        const IteratorCreationParams before = params;
        IteratorCreationParams expectedParams = expected.paramsOf(request, randomCase.code);
        library.failure = failureOf([&] {
            model::OutputWatch watch;
            library.host.outputPosition = [&watch] { return watch.positionOf(watch.out); };
            model::renderThroughTable(randomCase.outputType, randomCase.code, params, library.position,
                                      request.count, &watch);
        });
        expected.failure = failureOf([&] {
            expected.host.outputPosition = [&expected] { return expected.position; };
            model::render(randomCase.code, randomCase.outputType, expectedParams, expected.host,
                          expected.position, request.count);
        });
        const bool written = std::memcmp(&params, &before, sizeof params) != 0 ||
                             std::memcmp(&library.record.envelope, &expected.record.envelope,
                                         sizeof library.record.envelope) != 0;
        result.operations.push_back(expected.host.calls);
        result.difference = written ? "the library wrote into the request"
                                    : compare(library, expected, randomCase.outputType);
        if (result.difference)
            *result.difference += "\n  in call " + std::to_string(call) + " of " + nameOf(randomCase);
    }
    return result;
}

} // namespace

std::optional<std::string> differenceOf(const RandomCase& randomCase) {
    return runCase(randomCase).difference;
}

void expectNoDifference(const std::vector<unsigned int>& codes, std::size_t outputType, unsigned int seeds) {
    prepareRuns();
    const char* const only = std::getenv("AUDLMD_CASE");
    std::size_t differing = 0;
    const auto expectNone = [&](std::uint64_t seed, unsigned int code) {
        const CaseResult result = runCase(RandomCase(seed, code, outputType));
        differing += result.difference.has_value();
        if (result.difference)
            ADD_FAILURE() << *result.difference;
    };
    if (only != nullptr) {
        std::uint64_t seed = 0;
        unsigned int code = 0;
        std::size_t output = 0;
        char colon = ':';
        std::istringstream(only) >> seed >> colon >> code >> colon >> output;
        if (output == outputType)
            expectNone(seed, code);
        return;
    }
    const char* const first = std::getenv("AUDLMD_SEED");
    const std::uint64_t from = first == nullptr ? 1 : std::stoull(first);
    for (std::uint64_t seed = from; seed < from + seeds; ++seed)
        for (unsigned int code : codes)
            if (differing < 3) // They say enough.
                expectNone(seed, code);
}

void expectNoDifferenceWhateverFails(const std::vector<unsigned int>& codes) {
    prepareRuns();
    for (std::size_t i = 0; i < codes.size(); ++i) {
        RandomCase randomCase(7, codes[i], i % model::outputTypeCount);
        randomCase.requests.resize(std::min<std::size_t>(randomCase.requests.size(), 2));
        for (Request& request : randomCase.requests) {
            request.throwAt = request.interfereAt = ScriptedHost::never;
            request.count %= 6;
        }
        const CaseResult whole = runCase(randomCase);
        ASSERT_FALSE(whole.difference) << *whole.difference;
        for (std::size_t call = 0; call < randomCase.requests.size(); ++call) {
            for (std::size_t operation = 0; operation < whole.operations[call]; ++operation) {
                randomCase.requests[call].throwAt = operation;
                const CaseResult result = runCase(randomCase);
                ASSERT_FALSE(result.difference)
                    << *result.difference << ", with operation " << operation << " failing";
            }
            randomCase.requests[call].throwAt = ScriptedHost::never;
        }
    }
}

} // namespace audlmd::test

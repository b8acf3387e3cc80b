#pragma once

#include <cstdint>

namespace audlmd {
class BlockEqualiser;
}

/// What the stand-alone host keeps inside the classes and records of the contract. The renderer never reads
/// it.
///
/// Another host puts its own members here, of any size, and rebuilds the library, because the sizes are
/// compiled into it. docs/hosts.md says what else in contract/ is a host's own.
namespace HostStorage {

/// Of one section of the equaliser: coefficients and delays of a transposed direct form II.
/// \snippet minimal_host.cpp equaliser
class Biquad {
public:
    /// H(z) = (b0 + b1 z^-1 + b2 z^-2) / (1 + a1 z^-1 + a2 z^-2). The defaults pass samples through.
    struct Coefficients {
        double b0 = 1.0;
        double b1 = 0.0;
        double b2 = 0.0;
        double a1 = 0.0;
        double a2 = 0.0;
    };

    void setCoefficients(const Coefficients& coefficients);

    /// Forgets all samples and keeps the coefficients.
    void reset();

    /// Undoes the most recent processSample, for a host that reads a sample twice. A second call in a row
    /// changes nothing.
    void stepBack() {
        delays_ = delaysBefore_;
        lastResult_ = lastResultBefore_;
    }

protected:
    friend class audlmd::BlockEqualiser;

    /// Two numbers that are used side by side. They are aligned, because a pair that crosses a cache line
    /// makes the filter wait for its own store and take twice the time.
    struct alignas(16) Pair {
        double first = 0.0;
        double second = 0.0;
    };

    Pair b1b2_;
    Pair a1a2_;
    Pair delays_;
    /// The delays before the most recent processSample.
    Pair delaysBefore_;
    double b0_ = 1.0;
    float lastResult_ = 0.0F;
    float lastResultBefore_ = 0.0F;
};

/// A point that an automation passes through: a position in samples of the automated stream, and the u-value
/// there.
struct LevelNode {
    std::int64_t position = 0;
    float uValue = 0.0F;
};

/// Of a dynamic level: the list of nodes and the place in it.
struct LevelWalk {
    /// In order of position. Not owned.
    const LevelNode* nodes = nullptr;
    std::uint32_t nodeCount = 0;
    /// Index of a node near nextPosition, where the search starts.
    std::uint32_t nearNode = 0;
    /// The position at which the current run of samples ends.
    std::int64_t nextPosition = 0;
};

} // namespace HostStorage

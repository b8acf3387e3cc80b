#pragma once

#include <cstdint>

namespace audlmd {

/// A straight line from one whole number to another, followed in pieces with whole slopes.
///
/// The renderer adds a slope once per sample in single precision, which is exact on a grid of whole numbers
/// but would drift with the line's own slope. In every interval the slope is first the whole number below the
/// line's, then the one above, so that the interval ends on the line and the distance to it stays below a
/// quarter of the interval.
struct GridRamp {
    /// What the ramp leads to is reached `length` samples after its start. Not 0.
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::uint64_t length = 1;

    /// Intervals begin where start + offset is a multiple of `interval`, and slopes change where it is one of
    /// `alignment`; both are powers of two. Where that moves a change, the interval ends up to half an
    /// alignment away from the line, and the next one begins on it.
    std::uint64_t interval = 64;
    std::uint64_t alignment = 1;
    std::uint64_t start = 0;

    /// A straight piece, from offset `begin` up to `end`.
    struct Piece {
        std::uint64_t begin;
        std::uint64_t end;
        std::int64_t value;
        std::int64_t slope;

        std::int64_t valueAt(std::uint64_t offset) const {
            return value + slope * static_cast<std::int64_t>(offset - begin);
        }
    };

    /// The piece that holds an offset below `length`.
    Piece pieceAt(std::uint64_t offset) const;

private:
    std::int64_t valueOnLine(std::uint64_t offset) const;
};

} // namespace audlmd

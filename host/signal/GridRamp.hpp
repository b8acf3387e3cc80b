#pragma once

#include <cstdint>

namespace audlmd {

/// A straight line from one whole number to another, followed in pieces with whole slopes. Fades and
/// automations are made of such ramps, with a step of their grid as the unit.
///
/// The renderer adds a slope once per sample in single precision. On a grid of whole numbers that is exact;
/// the slope of the line itself would be rounded, and the sum drift. Each interval has two pieces: the first
/// has the whole slope below that of the line, the second the whole slope above. So each interval ends on the
/// line, and the ramp stays closer to the line than a quarter of the interval.
struct GridRamp {
    std::int64_t first = 0;
    /// Reached `length` samples after the start.
    std::int64_t last = 0;
    /// In samples. Not 0.
    std::uint64_t length = 1;

    /// Intervals begin where start + offset is a multiple of `interval`, a power of two.
    std::uint64_t interval = 64;
    /// Slopes change where start + offset is a multiple of `alignment`, a power of two. Where alignment moves
    /// a change, the interval ends beside the line, by up to half an alignment; the next interval begins on
    /// the line.
    std::uint64_t alignment = 1;
    /// Use a start other than 0 where intervals must fall on a grid that the caller shares between ramps.
    std::uint64_t start = 0;

    /// A piece, from offset `begin` up to `end`.
    struct Piece {
        std::uint64_t begin;
        std::uint64_t end;
        /// At `begin`.
        std::int64_t value;
        /// Per sample.
        std::int64_t slope;

        /// The value at an offset from `begin` to `end`.
        std::int64_t valueAt(std::uint64_t offset) const {
            return value + slope * static_cast<std::int64_t>(offset - begin);
        }
    };

    /// The piece that holds an offset. The offset must be less than `length`. Takes constant time. Pieces of
    /// one ramp meet without a gap: the `end` of one is the `begin` of the next.
    Piece pieceAt(std::uint64_t offset) const;

private:
    /// The whole number nearest to the line.
    std::int64_t valueOnLine(std::uint64_t offset) const;
};

} // namespace audlmd

#pragma once

#include "host/mix/MixReport.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace audlmd {

/// Of each kind of problem: a timeline may have thousands of strips with problems.
inline constexpr std::size_t mostSpansOfAStrip = 64;

/// Spans of output in a list that does not grow without end: where there are too many, neighbours are joined,
/// with the gap between them.
class SpanList {
public:
    explicit SpanList(std::size_t most) : most_(most) {}

    void add(OutputSpan span);
    /// In the order of the output.
    const std::vector<OutputSpan>& spans() const { return spans_; }

private:
    /// Joins spans that are no further apart than gap_.
    void join();

    std::size_t most_;
    std::int64_t gap_ = 0;
    std::vector<OutputSpan> spans_;
};

} // namespace audlmd

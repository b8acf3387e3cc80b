#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/SpanList.hpp"

#include <cstddef>
#include <cstdint>
#include <span>

namespace audlmd {

/// Counts what is beyond full scale in one channel.
class OverloadMeter {
public:
    /// Keeps up to `mostSpans` spans, see SpanList.
    explicit OverloadMeter(std::size_t mostSpans) : spans_(mostSpans) {}

    /// Looks at samples that are heard `gain` times as loud, from sample `at` on. `gain` is not
    /// negative.
    void measure(std::span<const float> samples, float gain, TimelineSample at);

    Overload overload() const;

private:
    Overload overload_;
    SpanList<TimelineClock> spans_;
};

} // namespace audlmd

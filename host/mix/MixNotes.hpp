#pragma once

#include "host/mix/MixReport.hpp"

#include <cstddef>
#include <map>
#include <string>

namespace audlmd {

/// What a mixer remembers of strips that it has closed. Strips are numbers, in the order of the timeline.
/// Takes memory for strips with problems only.
class MixNotes {
public:
    /// Adds what an open strip reports, after so many seconds of rendering. A strip may be added several
    /// times.
    void add(std::size_t strip, const StripReport& report, double seconds);
    /// Adds that a strip was silent because it was not open. `failure` says why, or is empty if the strip was
    /// late.
    void addSilence(std::size_t strip, OutputSpan span, const std::string& failure);

    const std::map<std::size_t, StripReport>& strips() const { return strips_; }

    struct Slowest {
        std::size_t strip = 0;
        double seconds = 0.0;
    };
    Slowest slowest() const { return slowest_; }

private:
    std::map<std::size_t, StripReport> strips_;
    Slowest slowest_;
};

} // namespace audlmd

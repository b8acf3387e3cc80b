#pragma once

#include "host/mix/MixReport.hpp"

#include <map>
#include <string>
#include <vector>

namespace audlmd {

/// Sums up what happened to the strips of a timeline. Takes memory for strips with problems only.
class StripReports {
public:
    /// Adds what an open strip reports, after so many seconds of rendering. A strip may be added several
    /// times.
    void add(const StripKey& key, const StripReport& report, double seconds);
    /// Adds what a mixer reports of its strips.
    void add(const MixReport& report);
    /// Adds that a strip was silent because it was not open. `failure` says why, or is empty if the strip was
    /// late.
    void addSilence(const StripKey& key, TimelineSpan span, const std::string& failure);

    /// Those with problems, in the order of the timeline.
    std::vector<StripReport> strips() const;
    const SlowestStrip& slowest() const { return slowest_; }

private:
    StripReport& sumOf(const StripKey& key);

    std::map<StripKey, StripReport> strips_;
    SlowestStrip slowest_;
};

} // namespace audlmd

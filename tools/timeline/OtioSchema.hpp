#pragma once

#include "tools/timeline/OtioItem.hpp"

#include <optional>
#include <string>

namespace audlmd::timeline {

/// The name of a value's OTIO_SCHEMA, without its version. Empty where the value has none. Throws
/// TimelineError for a version of a known schema that this reader does not know.
std::string schemaOf(const Json& value, const Where& where);

/// A time of OpenTimelineIO, a number of frames and a rate.
struct OtioTime {
    Rational seconds;
    /// In frames per second, see exactRate().
    Rational rate;
};

/// Throws TimelineError for a time that is missing, negative or longer than longestSeconds; the text starts
/// with `what`.
OtioTime timeIn(const Json& parent, const std::string& key, const Where& where, const std::string& what);

/// A range, and the rate of its duration.
struct OtioRange {
    Range range;
    Rational rate;
};

/// Nothing where the member is missing or null. Throws TimelineError as timeIn() does.
std::optional<OtioRange> rangeIn(const Json& parent, const std::string& key, const Where& where);

} // namespace audlmd::timeline

#pragma once

#include "tools/timeline/OtioItem.hpp"

#include <optional>
#include <string>

namespace audlmd::timeline {

/// The name of a value's OTIO_SCHEMA, without its version. Empty where the value has none. Throws
/// TimelineError for a version of a known schema that this reader does not know. An unknown schema is no
/// error here: whoever asks decides between a note and an error.
std::string schemaOf(const Json& value, const Where& where);

/// A time of OpenTimelineIO, a number of frames and a rate.
struct OtioTime {
    Rational seconds;
    /// In frames per second, see exactRate().
    Rational rate;
};

/// Throws TimelineError for a time that is missing, negative or longer than longestSeconds; the text starts
/// with `what`. Reads a RationalTime: the value is frames, which may have a fraction.
OtioTime timeIn(const Json& parent, const std::string& key, const Where& where, const std::string& what);

/// A range, and the rate of its duration.
struct OtioRange {
    Range range;
    Rational rate;
};

/// Nothing where the member is missing or null. Throws TimelineError as timeIn() does. Start and duration may
/// have different rates; the one of the duration counts as the item's frame rate.
std::optional<OtioRange> rangeIn(const Json& parent, const std::string& key, const Where& where);

} // namespace audlmd::timeline

#pragma once

#include "host/timeline/OtioItem.hpp"

#include <optional>
#include <string>

namespace audlmd::timeline {

/// The name of a value's OTIO_SCHEMA, without its version. Empty where the value has none. Throws
/// TimelineError for a version of a known schema that this reader does not know. An unknown schema is no
/// error here: whoever asks decides between a note and an error.
std::string schemaOf(const Json& value, const Reading& reading);

/// A time of OpenTimelineIO, a number of frames and a rate.
struct OtioTime {
    Rational seconds;
    /// In frames per second, see exactRate().
    Rational rate;
    /// As the file has them.
    double count = 0.0;
    double writtenRate = 1.0;
};

/// The time from `b` to `a`, in seconds.
///
/// Exporters that rescale a time from one spelling of a rate to another, such as from 23.976 to
/// 23.976024627685547, keep its seconds and get a count with a fraction. Such times are subtracted as
/// written: taken for frames of the exact rate, they are off by 178 samples of 48 kHz at one hour.
Rational differenceOf(const OtioTime& a, const OtioTime& b);

/// Whether a time may lie before 0.
enum class Sign { notNegative, any };

/// Throws TimelineError for a time that is missing, of a sign that is not allowed or longer than
/// longestSeconds; the text starts with `what`. Reads a RationalTime: the value is frames, which may have a
/// fraction.
OtioTime timeIn(const Json& parent, const std::string& key, const Reading& reading, const std::string& what,
                Sign sign = Sign::notNegative);

/// A range, the rate of its duration, and its start as it is written.
struct OtioRange {
    Range range;
    Rational rate;
    OtioTime start;
};

/// Nothing where the member is missing or null. Throws TimelineError as timeIn() does. The start may be
/// negative. Start and duration may have different rates; the one of the duration counts as the item's frame
/// rate.
std::optional<OtioRange> rangeIn(const Json& parent, const std::string& key, const Reading& reading);

/// Reads a clip's active media reference: the path, and why the clip is silent if the reference names no
/// sound. A clip without a reference to a file has its own name, or that of its reference, for a path.
/// Returns the medium's range, from the timeline, else from ReadOptions::media; nothing where neither knows.
/// `shown` is the clip's source_range. Sets item.media, and adds a silence and notes. item.sound.relabel is
/// known before.
std::optional<OtioRange> readMedia(const Json& clip, const std::optional<OtioRange>& shown,
                                   const Reading& reading, OtioItem& item);

} // namespace audlmd::timeline

#pragma once

#include "tools/audlmd/files/Markers.hpp"
#include "tools/audlmd/options/Time.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace audlmd::command {

/// What a range is a part of: a sound file, or a timeline.
struct RangeOf {
    /// For messages: "'in.wav'".
    std::string name;
    /// In samples.
    std::int64_t length = 0;
    /// In samples per second.
    int sampleRate = 48000;
    /// At `sampleRate`, whose names are moments, too.
    std::vector<Marker> markers = {};
};

/// A range in samples, never empty.
struct ResolvedRange {
    std::int64_t from = 0;
    /// Exclusive.
    std::int64_t to = 0;
    /// Not empty where the range is shorter than was asked.
    std::string note;
};

/// The options that say which part is rendered: from, and to or duration.
struct RangeOptions {
    std::optional<TimeValue> from;
    std::optional<TimeValue> to;
    std::optional<TimeValue> duration;

    /// Declares the options in a group of the help. `whole` names what the range is a part of. This object
    /// must outlive the app.
    void declare(CLI::App& app, const std::string& group, const std::string& whole);

    /// Throws CommandError for options that cannot stand together.
    void requireCompatible() const;

    /// Counts in samples, each time rounded to the nearest. A duration beyond the end ends there, with a
    /// note. Throws CommandError for moments outside the whole, and for a range without samples, which is
    /// refused here because two different times may round to the same sample.
    ResolvedRange in(const RangeOf& whole) const;
};

/// The sample of a moment, which may count from the end, or be the first marker of a name. The end itself is
/// a moment. Throws CommandError for a moment outside, and for a name that no marker has: the message has the
/// names that are most alike.
std::int64_t momentIn(const TimeValue& moment, const RangeOf& whole);

} // namespace audlmd::command

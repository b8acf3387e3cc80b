#pragma once

#include "host/words/Times.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace audlmd::command {

/// A moment or a length of time as written on the command line, and the option that it was written for.
class TimeValue {
public:
    /// Reads what words::timeIn() reads. Throws CommandError, naming `option`, for anything else.
    static TimeValue parse(std::string_view text, std::string_view option);

    /// The same of a moment; with a minus sign it counts from the end of what it is in. Anything else is the
    /// name of a marker.
    static TimeValue parseMoment(std::string_view text, std::string_view option);

    /// In samples of one channel, rounded to the nearest; the time itself, wherever it counts from.
    /// `sampleRate` is in samples per second. Throws CommandError from 2^62 samples on.
    std::int64_t samples(int sampleRate) const;

    /// A number of samples in the unit in which this time was written, for a message.
    std::string inThisUnit(std::int64_t samples, int sampleRate) const;

    /// Whether this is the name of a marker, which has no samples of its own.
    bool isName() const { return isName_; }
    bool countsFromEnd() const { return countsFromEnd_; }
    /// As written, with the sign.
    const std::string& text() const { return text_; }
    const std::string& option() const { return option_; }

private:
    std::string text_;
    std::string option_;
    words::WrittenTime time_;
    bool countsFromEnd_ = false;
    bool isName_ = false;
};

} // namespace audlmd::command

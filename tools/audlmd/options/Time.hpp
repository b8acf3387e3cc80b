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

    /// In samples of one channel, rounded to the nearest. `sampleRate` is in samples per second. Throws
    /// CommandError from 2^62 samples on.
    std::int64_t samples(int sampleRate) const;

    const std::string& text() const { return text_; }
    const std::string& option() const { return option_; }

private:
    std::string text_;
    std::string option_;
    words::WrittenTime time_;
};

} // namespace audlmd::command

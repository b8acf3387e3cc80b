#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace audlmd::command {

/// A moment or a length of time as written on the command line, before the sample rate is known. Seconds stay
/// seconds until samples() knows the rate, so a time is rounded once.
class TimeValue {
public:
    /// Reads seconds (`12.5`, `3s`), milliseconds (`250ms`), samples (`480000smp`) or a timecode of minutes
    /// or hours (`1:02.5`, `1:00:02.5`). Throws CommandError, naming `option`, for anything else, a sign
    /// included. Seconds may have a fraction; minutes and hours are whole.
    static TimeValue parse(std::string_view text, std::string_view option);

    /// In samples of one channel, rounded to the nearest. `sampleRate` is in samples per second. Throws
    /// CommandError from 2^62 samples on.
    std::int64_t samples(int sampleRate) const;

    /// The time as it was written, and the option that it was written for.
    const std::string& text() const { return text_; }
    const std::string& option() const { return option_; }

private:
    std::string text_;
    std::string option_;
    double seconds_ = 0.0;
    std::int64_t samples_ = 0;
    /// Whether samples_ counts; otherwise seconds_ does.
    bool inSamples_ = false;
};

} // namespace audlmd::command

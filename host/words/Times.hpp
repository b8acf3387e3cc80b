#pragma once

#include "host/mix/Relabel.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace audlmd::words {

/// A moment or a length of time as a user writes it, before the sample rate is known. Seconds stay seconds
/// until then, so that a time is rounded once.
struct WrittenTime {
    double seconds = 0.0;
    /// Where the time is written in samples; takes the place of `seconds`.
    std::optional<std::int64_t> samples;
};

/// What timeIn() reads, for messages.
inline constexpr const char* timeSyntax =
    "seconds (12.5 or 3s), milliseconds (250ms), samples (480000smp), a clock (1:02.5, 1:00:02.5) or "
    "timecode with its frame rate (1:00:00:12@25, 1:00:00;12@29.97)";

/// Reads the notations of timeSyntax. Seconds may have a fraction; minutes and hours are whole. Rates of
/// frames are whole, or whole times 1000/1001, written as 23.976 and the like, or as a quotient such as
/// 30000/1001. A semicolon before the frames drops numbers as SMPTE ST 12-1 says. Nothing for anything else,
/// a sign included.
std::optional<WrittenTime> timeIn(std::string_view text);

/// Seconds as our own JSON writes them: `1.5s`, with a minus sign or an exponent where there is one, and
/// never with a plus sign. Nothing for anything else, and for what is not finite.
std::optional<double> secondsIn(std::string_view text);

/// A time for people: h:mm:ss.mmm, of the nearest millisecond, with a minus sign before 0.
std::string clock(std::int64_t samples, int sampleRate);

/// Whether timecode has such a rate, in frames per second: a whole number, or such a number times 1000/1001,
/// up to 1000.
bool isFrameRate(double rate);

/// h:mm:ss:ff of the last frame that has begun, which timeIn() reads with an @ and the rate behind it.
/// `samples` is not negative; `frameRate` as isFrameRate() wants it.
std::string timecode(std::int64_t samples, int sampleRate, double frameRate);

/// What relabelIn() reads, for messages.
inline constexpr const char* relabelSyntax =
    "the rate that it has, a colon and the rate that it is taken at, both whole numbers, fractions or frame "
    "rates, such as 24000/1001:24, 23.976:25 or 48048:48000";

/// Reads relabelSyntax. Nothing for anything else, and for ratios that have a number above 1,000,000 in their
/// lowest terms.
std::optional<Relabel> relabelIn(std::string_view text);
/// In lowest terms: "1000:1001".
std::string relabelText(const Relabel& relabel);

} // namespace audlmd::words
